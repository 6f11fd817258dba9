// Bundles the package and the viewer: build.mjs MODULE.wasm FOLDER
//
// FOLDER gets package/ for npm, viewer.html, and engine.mjs, what the worker does, for tests without a browser.
import {execFileSync} from 'node:child_process';
import {createHash} from 'node:crypto';
import {cp, mkdir, readFile, rm, writeFile} from 'node:fs/promises';
import {createRequire} from 'node:module';
import {join, resolve} from 'node:path';
import {fileURLToPath} from 'node:url';
import {gzipSync} from 'node:zlib';
import {build} from 'esbuild';

const [moduleFile, out] = process.argv.slice(2).map((path) => resolve(path));
process.chdir(fileURLToPath(new URL('.', import.meta.url)));
const packed = gzipSync(await readFile(moduleFile), {level: 9}).toString('base64');

const bundle = async (entry, options) => {
    const {outputFiles} = await build({entryPoints: [entry], bundle: true, minify: true, write: false, target: 'es2022',
                                       legalComments: 'none', ...options});
    return outputFiles[0].text;
};
const worker = await bundle('src/worker.ts', {format: 'iife'});
const embedded = {
    name: 'embedded',
    setup(build) {
        build.onResolve({filter: /^embedded:/}, ({path}) => ({path, namespace: 'embedded'}));
        build.onLoad({filter: /./, namespace: 'embedded'},
                     ({path}) => ({contents: path === 'embedded:module' ? packed : worker, loader: 'text'}));
    },
};

/** What is bundled stays under its own licence, whose text goes with it. */
const licence = async (name, file) => `Contains ${name}:\n\n${await readFile(`node_modules/${name}/${file}`, 'utf8')}\n`;
const ours = `Tilepress\n\n${await readFile('../LICENSE', 'utf8')}\n`;
const directories = await licence('@cogeotiff/core', 'LICENSE');
const notices = ours + directories + await licence('openseadragon', 'LICENSE.txt');

await rm(out, {recursive: true, force: true});
await mkdir(join(out, 'package/dist'), {recursive: true});

// --- the package ---------------------------------------------------------------------

await writeFile(join(out, 'package/dist/index.js'), await bundle('src/index.ts', {format: 'esm', plugins: [embedded]}));
await writeFile(join(out, 'engine.mjs'), await bundle('src/engine.ts', {format: 'esm', minify: false}));
const {devDependencies, ...description} = JSON.parse(await readFile('package.json', 'utf8'));
await writeFile(join(out, 'package/package.json'), JSON.stringify(description, null, 2) + '\n');
await cp('README.md', join(out, 'package/README.md'));
await writeFile(join(out, 'package/LICENSE'), ours + directories);
const require = createRequire(import.meta.url);
execFileSync(process.execPath, [require.resolve('typescript/bin/tsc'), '-p', '.', '--noEmit', 'false', '--declaration',
    '--emitDeclarationOnly', '--stripInternal', '--rootDir', '.', '--outDir', join(out, 'types')], {stdio: 'inherit'});
for (const name of ['index', 'errors', 'file', 'types', 'tile-source'])
    await cp(join(out, `types/src/${name}.d.ts`), join(out, `package/dist/${name}.d.ts`));
await rm(join(out, 'types'), {recursive: true});

// --- the viewer ----------------------------------------------------------------------

// Nothing but what is in the file runs: the policy names its script and its style by their hashes.
const hash = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;
const script = (await bundle('viewer/viewer.ts', {format: 'iife', plugins: [embedded]})).replaceAll('</script', '<\\/script');
const guard = (await bundle('viewer/guard.ts', {format: 'iife'})).trimEnd();
const style = (await bundle('viewer/viewer.css', {})).trimEnd();
const page = (await readFile('viewer/viewer.html', 'utf8')).replace('NOTICES', () => notices.replaceAll('--', '- -'))
    .replace('SCRIPT_HASHES', () => [guard, script].map(hash).join(' ')).replace('STYLE_HASHES', () => hash(style))
    .replace('/*GUARD*/', () => guard).replace('/*SCRIPT*/', () => script).replace('/*STYLE*/', () => style);
await writeFile(join(out, 'viewer.html'), page);
