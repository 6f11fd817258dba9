// What the worker does, in Node: pages of every layout, files that lie, and how much of a file is read.
//
// BUILD: the folder that build.mjs filled. MODULE: the WebAssembly module. TOOL: the native tool, to compare with.
import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {readFile} from 'node:fs/promises';
import {createServer} from 'node:http';
import {test} from 'node:test';
import {blankPage, blankTile, endless, hostile, tiff} from './tiff.mjs';

const {BlobSource, CodedPage, HttpSource, Module, readDirectories, readLayout} = await import(`${process.env.BUILD}/engine.mjs`);
const compiled = await WebAssembly.compile(await readFile(process.env.MODULE));
const samples = new URL('../../samples/', import.meta.url);
const silent = () => {};

async function openedFrom(source, index = 0) {
    const module = await Module.start(compiled);
    const directories = await readDirectories(source);
    const page = new CodedPage(module, source, await readLayout(directories[index], source));
    await page.prepare(silent);
    return {page, module, pages: directories.length};
}
const openedBytes = (bytes, index) => openedFrom(new BlobSource(new Blob([bytes])), index);
const opened = async (name, index) => openedBytes(await readFile(new URL(name, samples)), index);

/** A byte a pixel, of the whole page or of a view. */
async function pixels(page, view = {}) {
    const whole = {outWidth: page.layout.width, outHeight: page.layout.height};
    const {pictures: [picture]} = await page.render([{...whole, ...view}], 'fail', silent);
    return Buffer.from(picture.filter((_, k) => k % 4 === 0));
}

test('pages of every layout have the pixels that the native tool draws', {skip: !process.env.TOOL}, async () => {
    for (const [name, index] of [['text.tif', 0], ['text_strips_lsb.tif', 0], ['drawing_tiled.tif', 0], ['halftone.tif', 0],
                                 ['negative.tif', 0], ['blackiszero.tif', 0], ['pages.tif', 1], ['pages.tif', 2], ['pages.tif', 3]]) {
        const {page} = await opened(name, index);
        const native = execFileSync(process.env.TOOL, ['render', new URL(name, samples).pathname, '--page', String(index + 1),
                                                       '--format', 'pgm', '--quiet', '-o', '-'], {maxBuffer: 2 ** 28});
        const picture = native.subarray(native.length - page.layout.width * page.layout.height);
        assert.ok(picture.equals(await pixels(page)), `${name}, page ${index + 1}`);
    }
});

test('the same page in other tiles, strips and orders gives the same pictures', async () => {
    for (const [a, b] of [[['pages.tif', 0], ['blackiszero.tif', 0]], [['pages.tif', 1], ['drawing_tiled.tif', 0]],
                          [['pages.tif', 2], ['negative.tif', 0]], [['text.tif', 0], ['text_strips_lsb.tif', 0]]]) {
        const [one, other] = [await opened(...a), await opened(...b)];
        for (const mode of ['grey', 'coverage', 'ink', 'nearest']) {
            const view = {left: 33, top: 57, width: 700, height: 500, outWidth: 150, outHeight: 110, mode, invert: mode === 'ink'};
            assert.ok((await pixels(one.page, view)).equals(await pixels(other.page, view)), `${a} and ${b}, ${mode}`);
        }
    }
});

test('files that lie are refused in time, each with its reason', async () => {
    for (const [what, [bytes, code]] of Object.entries(hostile)) {
        const start = performance.now();
        await assert.rejects(async () => openedBytes(bytes), (error) => (assert.equal(error.code, code, `${what}: ${error}`), true), what);
        assert.ok(performance.now() - start < 2000, what);
    }
    for (const next of [8, 2 ** 30])
        assert.equal((await openedBytes(blankPage({}, {next}))).pages, 1, `a directory said to be followed by one at ${next}`);
    assert.ok(await openedBytes(endless()), 'drawing it is stopped by the time limit, not opening it');
});

test('damage is named by tile and row, and the rest is drawn', async () => {
    const bytes = new Uint8Array(await readFile(new URL('text_strips_lsb.tif', samples)));
    const {page: whole} = await openedBytes(bytes);
    const {offsets, sizes} = whole.layout;
    bytes.fill(0, offsets[7] + (sizes[7] >> 1), offsets[7] + sizes[7]);
    const {page} = await openedBytes(bytes);
    const view = {outWidth: 165, outHeight: 233};
    const {damage, pictures} = await page.render([view], 'white', silent);
    assert.deepEqual(damage.map(({tile, left, width, top, row, height}) => [tile, left, width, top - row, height + row]),
                     [[7, 0, page.layout.width, 700, 100]]);
    assert.notDeepEqual(pictures[0], (await whole.render([view], 'white', silent)).pictures[0]);
    await assert.rejects(page.render([view], 'fail', silent), {code: 'damaged', tile: 7, row: damage[0].row});
    assert.deepEqual(await page.verify(silent), damage);
    assert.deepEqual(await pixels(page, {top: 800, width: 1653, height: 500, outWidth: 330, outHeight: 100}),
                     await pixels(whole, {top: 800, width: 1653, height: 500, outWidth: 330, outHeight: 100}));
    const strip = blankTile(64);
    const cut = await openedBytes(tiff({
        ImageWidth: 64, ImageLength: 128, Compression: 4, Photometric: 0, RowsPerStrip: 64,
        StripOffsets: (start) => [start, start + 5000], StripByteCounts: [strip.length, strip.length],
    }, strip));
    const {damage: [{tile, row, top}]} = await cut.page.render([{outWidth: 8, outHeight: 16}], 'white', silent);
    assert.deepEqual([tile, row, top], [1, 0, 64], 'a file that was cut off');
});

test('of a file behind a URL only the tiles looked at are fetched', async () => {
    const side = 512, across = 8, data = blankTile(side), step = 40000, count = across * across;
    const file = tiff({
        ImageWidth: side * across, ImageLength: side * across, Compression: 4, Photometric: 0, TileWidth: side, TileLength: side,
        TileOffsets: (start) => Array.from({length: count}, (_, k) => start + k * step), TileByteCounts: new Array(count).fill(data.length),
    }, Buffer.concat(Array.from({length: count}, () => Buffer.concat([data, Buffer.alloc(step - data.length)]))), {gap: 2 ** 16});
    const sent = [];
    const server = createServer((request, response) => {
        const [, from, to] = /bytes=(\d+)-(\d+)/.exec(request.headers.range).map(Number);
        const part = file.subarray(from, to + 1);
        sent.push(part.length);
        response.writeHead(206, {'Content-Range': `bytes ${from}-${from + part.length - 1}/${file.length}`}).end(part);
    }).listen(0, '127.0.0.1');
    await new Promise((listening) => server.once('listening', listening));
    try {
        const source = await HttpSource.open(`http://127.0.0.1:${server.address().port}/page.tif`);
        const {page} = await openedFrom(source);
        sent.length = 0;
        await page.render([{left: 600, top: 600, width: 1200, height: 300, outWidth: 300, outHeight: 75}], 'fail', silent);
        assert.deepEqual(sent, [data.length, data.length, data.length], 'three tiles are under the view');
        await page.render([{left: 700, top: 700, width: 200, height: 100, outWidth: 200, outHeight: 100}], 'fail', silent);
        assert.equal(sent.length, 3, 'they are kept');
    } finally {
        server.close();
    }
});

test('pages come and go without growth', async () => {
    const {module, page} = await opened('drawing_tiled.tif');
    const view = {outWidth: 600, outHeight: 400};
    await page.render([view], 'fail', silent);
    page.close();
    const before = module.memoryBytes;
    const source = new BlobSource(new Blob([await readFile(new URL('drawing_tiled.tif', samples))]));
    const [directory] = await readDirectories(source);
    for (let k = 0; k < 50; ++k) {
        const again = new CodedPage(module, source, await readLayout(directory, source));
        await again.render([view], 'fail', silent);
        again.close();
    }
    assert.equal(module.memoryBytes, before);
});
