// What the build puts into the bundles as text.
declare module 'embedded:worker' {
    const source: string;
    export default source;
}
/** The WebAssembly module, packed with gzip, in base64. */
declare module 'embedded:module' {
    const packed: string;
    export default packed;
}
