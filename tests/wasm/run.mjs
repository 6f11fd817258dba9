// Runs a test program that was built as WebAssembly: run.mjs PROGRAM.wasm [ARGUMENT...]
import {readFile} from 'node:fs/promises';
import {WASI} from 'node:wasi';

const wasi = new WASI({version: 'preview1', args: process.argv.slice(2), env: process.env, preopens: {'/': '/'}, returnOnExit: true});
const module = await WebAssembly.compile(await readFile(process.argv[2]));
const instance = await WebAssembly.instantiate(module, {wasi_snapshot_preview1: wasi.wasiImport});
process.exitCode = wasi.start(instance);
