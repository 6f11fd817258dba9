// The viewer beside the native tool, another package that reads Group 4 in browsers, and a pyramid of tiles.
//
//   bench.mjs [PAGE.tif...]      an A0 drawing composed of the sample pages when none is named
//
// Needs build/web, build/wasm and the native tool, which ./run bench --web makes; uses vips where it is installed. Times are the best of RUNS; in the browser each is a tab of its own in the same browser.
import {execFileSync, spawnSync} from 'node:child_process';
import {mkdtemp, mkdir, readFile, readdir, rm, stat, writeFile} from 'node:fs/promises';
import {tmpdir} from 'node:os';
import {basename, join} from 'node:path';
import {fileURLToPath} from 'node:url';
import {build} from 'esbuild';
import {launch, ViewerTab} from '../test/browser.mjs';

const root = fileURLToPath(new URL('../../', import.meta.url));
const tool = process.env.TOOL ?? join(root, 'build/native-release/bin/tilepress');
const kUp = 1000;  // ms: nobody chooses a file faster
const runs = Number(process.env.RUNS ?? 5);
const scratch = await mkdtemp(join(tmpdir(), 'tilepress-bench-'));
// What else a machine does only ever adds.
const best = (values) => Math.min(...values);
const median = (values) => values.sort((a, b) => a - b)[values.length >> 1];
const samples = async (take) => {
    const values = [];
    for (let k = 0; k < runs; ++k) values.push(await take());
    return best(values);
};
const ms = (value) => value === undefined ? '' : value < 10 ? value.toFixed(2) : Math.round(value).toLocaleString('en');
const mb = (bytes) => (bytes / 1e6).toFixed(1);

/** 18,724 x 13,244 pixels: the drawing, the text and others over and over, as packed rows. */
async function composed() {
    const width = 18724, height = 13244, across = Math.ceil(width / 8);
    const rows = Buffer.alloc(across * height);
    const pages = ['drawing_tiled', 'text', 'halftone', 'drawing_tiled', 'blackiszero'].map((name) => {
        const pbm = execFileSync(tool, ['render', join(root, 'samples', `${name}.tif`), '--format', 'pbm', '--quiet', '-o', '-'], {maxBuffer: 2 ** 26});
        const [, w, h] = /^P4\s+(\d+)\s+(\d+)\s/.exec(pbm.subarray(0, 32).toString('latin1')).map(Number);
        return {width: w >> 3, height: h, per: Math.ceil(w / 8), bits: pbm.subarray(pbm.length - Math.ceil(w / 8) * h)};
    });
    for (let left = 0, column = 0; left < across; ++column) {
        const widest = Math.max(...pages.map((page) => page.width));
        for (let top = 0, k = column; top < height; ++k) {
            const page = pages[k % pages.length], count = Math.min(page.width, across - left);
            for (let y = 0; y < page.height && top + y < height; ++y) page.bits.copy(rows, (top + y) * across + left, y * page.per, y * page.per + count);
            top += page.height;
        }
        left += widest;
    }
    const [pbm, tiff] = ['a0.pbm', 'a0_tiles.tif'].map((name) => join(scratch, name));
    await writeFile(pbm, Buffer.concat([Buffer.from(`P4\n${width} ${height}\n`), rows]));
    execFileSync(tool, ['encode', pbm, '-o', tiff, '--tile', '512', '--quiet']);
    return tiff;
}

/** What one process has held at most. Every tab has a renderer of its own. */
async function peakOfNewestRenderer(browser) {
    const parent = browser.process().pid;
    const all = (await readdir('/proc')).filter((name) => /^\d+$/.test(name) && Number(name) > parent).map(Number);
    let newest = 0, peak = 0;
    for (const pid of all) {
        const [line, status] = await Promise.all(['cmdline', 'status'].map((name) => readFile(`/proc/${pid}/${name}`, 'utf8').catch(() => '')));
        if (!line.includes('--type=renderer') || pid < newest) continue;
        [newest, peak] = [pid, 1024 * Number(/VmHWM:\s+(\d+)/.exec(status)?.[1] ?? 0)];
    }
    return peak;
}

const pause = (ms) => new Promise((done) => setTimeout(done, ms));

/** A file is chosen when the viewer has been up for so long, in ms. */
async function inViewer(browser, file, up) {
    const tab = await ViewerTab.open(browser, join(root, 'build/web/viewer.html'), {width: 1280, height: 860});
    await pause(up);
    await tab.choose(file);
    const first = Number(await tab.page.evaluate(() => document.body.dataset.firstView));
    const result = {first, peak: await peakOfNewestRenderer(browser)};
    result.module = await tab.page.evaluate(() => tilepress.page().cost.memory);
    return {tab, ...result};
}

/** Moves over the page at full size for three seconds; the share of frames that came in time, and what a tile took. */
async function panning(tab) {
    return tab.page.evaluate(async () => {
        const {stage} = tilepress, {viewport} = stage.viewer, page = tilepress.page();
        const took = [];
        page.onCost = ({ms}) => took.push(ms);
        stage.scale = 1;
        await new Promise((done) => setTimeout(done, 1500));
        const gaps = [];
        let last = performance.now();
        for (const end = last + 3000; last < end;) {
            viewport.panBy(viewport.deltaPointsFromPixels(viewport.getCenter().times(0).plus({x: 10, y: 4})), true);
            const now = await new Promise(requestAnimationFrame);
            gaps.push(now - last);
            last = now;
        }
        const frame = 1000 / 60;
        const lost = gaps.reduce((sum, gap) => sum + Math.max(0, Math.round(gap / frame) - 1), 0);
        took.sort((a, b) => a - b);
        return {kept: gaps.length / (gaps.length + lost), tile: took[took.length >> 1], tiles: took.length, module: page.cost.memory};
    });
}

let peerSource;
async function inPeer(browser, file, width, height) {
    peerSource ??= (await build({stdin: {contents: "import UTIF from 'utif2'; globalThis.UTIF = UTIF;", resolveDir: fileURLToPath(new URL('.', import.meta.url))},
                                 bundle: true, minify: true, write: false, format: 'iife'})).outputFiles[0].text;
    const page = await (await browser.createBrowserContext()).newPage();
    await page.setContent('<input type="file"><canvas width="1200" height="800"></canvas>');
    await page.evaluate(peerSource);
    await pause(kUp);
    await (await page.$('input')).uploadFile(file);
    const took = await page.evaluate(async (width, height) => {
        const start = performance.now();
        const bytes = await document.querySelector('input').files[0].arrayBuffer();
        const [image] = UTIF.decode(bytes);
        UTIF.decodeImage(bytes, image);
        const pixels = new ImageData(new Uint8ClampedArray(UTIF.toRGBA8(image).buffer), image.width, image.height);
        const bitmap = await createImageBitmap(pixels);
        document.querySelector('canvas').getContext('2d').drawImage(bitmap, 0, 0, width, height);
        await new Promise(requestAnimationFrame);
        return performance.now() - start;
    }, width, height).catch((error) => `failed: ${error.message.slice(0, 60)}`);
    const peak = await peakOfNewestRenderer(browser);
    await page.browserContext().close();
    return {took, peak};
}

/** The whole page as large as a screen by the native tool. */
function native(file) {
    const {stderr, status} = spawnSync(tool, ['render', file, '--fit', '1170x828', '-o', join(scratch, 'native.pgm'), '--quiet', '--stats'], {encoding: 'utf8'});
    if (status !== 0) throw new Error(`${tool} is needed: ${stderr}`);
    return 1000 * Number(/, ([\d.]+) s,/.exec(stderr)[1]);
}

/** The same picture by the module in Node, and its preparation. */
async function module(file) {
    const {BlobSource, CodedPage, Module, readDirectories, readLayout} = await import(join(root, 'build/web/engine.mjs'));
    const started = await Module.start(await WebAssembly.compile(await readFile(join(root, 'build/wasm/bin/tilepress.wasm'))));
    const source = new BlobSource(new Blob([await readFile(file)]));
    const page = new CodedPage(started, source, await readLayout((await readDirectories(source))[0], source));
    const start = performance.now();
    await page.prepare(() => {});
    const prepared = performance.now() - start;
    const {width, height} = page.layout, fit = Math.max(width / 1170, height / 828);
    const view = {outWidth: Math.floor(width / fit), outHeight: Math.floor(height / fit)};
    const draw = async (what) => (await page.render([what], 'white', () => {})).ms;
    for (let k = 0; k < 3; ++k) await draw(view);
    const whole = await samples(() => draw(view));
    const side = Math.min(512, width, height), tiles = [];
    for (let k = 0; k < 60; ++k)
        tiles.push(await draw({left: Math.floor((width - side) * ((k * 0.618) % 1)), top: Math.floor((height - side) * (k / 59)), width: side, height: side, outWidth: side, outHeight: side}));
    return {prepared, whole, tile: median(tiles), slowest: Math.max(...tiles), memory: started.memoryBytes};
}

async function pyramid(file) {
    const out = join(scratch, 'pyramid');
    await mkdir(out);
    const start = performance.now();
    if (spawnSync('vips', ['dzsave', file, join(out, 'page'), '--suffix', '.png', '--tile-size', '512']).status !== 0) return undefined;
    const took = performance.now() - start;
    let [files, bytes] = [0, 0];
    for (const entry of await readdir(out, {recursive: true, withFileTypes: true}))
        if (entry.isFile()) [files, bytes] = [files + 1, bytes + (await stat(join(entry.path ?? entry.parentPath, entry.name))).size];
    await rm(out, {recursive: true});
    return {took, files, bytes};
}

async function report(browser, file) {
    const inNode = await module(file), natively = await samples(async () => native(file));
    console.log(`\n## ${basename(file)}, ${(await stat(file)).size.toLocaleString('en')} bytes\n`);
    console.log(`whole page, as large as a screen: native ${ms(natively)} ms, module ${ms(inNode.whole)} ms`);
    console.log(`prepared in ${ms(inNode.prepared)} ms; a tile of 512 at full size ${ms(inNode.tile)} ms, slowest ${ms(inNode.slowest)} ms; module ${mb(inNode.memory)} MB`);
    const atOnce = await samples(async () => {
        const {tab, first} = await inViewer(browser, file, 0);
        await tab.close();
        return first;
    });
    const views = [];
    for (let k = 0; k < runs; ++k) {
        const view = await inViewer(browser, file, kUp);
        views.push(view);
        if (k < runs - 1) await view.tab.close();
    }
    const {tab} = views.at(-1), pan = await panning(tab), after = await peakOfNewestRenderer(browser);
    await tab.close();
    console.log(`viewer: first view ${ms(best(views.map(({first}) => first)))} ms (chosen at once ${ms(atOnce)} ms), renderer at most ${mb(median(views.map(({peak}) => peak)))} MB, module ${mb(views.at(-1).module)} MB`);
    console.log(`panning at full size: ${(100 * pan.kept).toFixed(1)} % of the frames, ${pan.tiles} tiles of ${ms(pan.tile)} ms, renderer at most ${mb(after)} MB, module ${mb(pan.module)} MB`);
    const peers = [];
    for (let k = 0; k < Math.min(runs, 2); ++k) peers.push(await inPeer(browser, file, 1170, 828));
    const [peer] = peers.sort((a, b) => a.took - b.took);
    console.log(`utif2: ${typeof peer.took === 'number' ? `${ms(peer.took)} ms` : peer.took}, renderer at most ${mb(peer.peak)} MB`);
    const tiles = await pyramid(file);
    if (tiles) console.log(`vips dzsave: ${ms(tiles.took)} ms, ${tiles.files.toLocaleString('en')} files, ${mb(tiles.bytes)} MB`);
}

const browser = await launch();
try {
    let files = process.argv.slice(2);
    if (!files.length) {
        const tiles = await composed(), strip = join(scratch, 'a0_strip.tif');
        execFileSync(tool, ['repack', tiles, '-o', strip, '--single-strip', '--quiet']);
        files = [tiles, strip, join(root, 'samples/text.tif')];
    }
    console.log(`Chromium ${await browser.version()}, Node ${process.version}, best of ${runs}`);
    for (const file of files) await report(browser, file);
} finally {
    await browser.close();
    await rm(scratch, {recursive: true});
}
