// The module exports the page functions, its memory and its start, asks its host for nothing it could harm with, and is
// small: exports.mjs MODULE.wasm PLAIN_NAMES.txt
import assert from 'node:assert/strict';
import {readFile} from 'node:fs/promises';
import {gzipSync} from 'node:zlib';

const [file, names] = process.argv.slice(2);
const bytes = await readFile(file);
const module = new WebAssembly.Module(bytes);
const functions = (await readFile(names, 'utf8')).split('\n').filter((name) => name.startsWith('tp_'));
assert(functions.length > 0);
assert.deepEqual(WebAssembly.Module.exports(module).map(({name}) => name).sort(),
                 [...functions, '_initialize', 'memory'].sort());
const packed = gzipSync(bytes, {level: 9}).length;
console.log(`${bytes.length} bytes, ${packed} with gzip; imports: ` +
            WebAssembly.Module.imports(module).map(({name}) => name).join(', '));
assert(packed < 100e3);
