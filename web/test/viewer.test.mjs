// The viewer in a browser, as people use it. BUILD and MODULE as for engine.test.mjs; pictures go to BUILD/screenshots.
import assert from 'node:assert/strict';
import {mkdir, readFile} from 'node:fs/promises';
import {createServer} from 'node:http';
import {createRequire} from 'node:module';
import {join} from 'node:path';
import {after, before, test} from 'node:test';
import {fileURLToPath} from 'node:url';
import {launch, ViewerTab} from './browser.mjs';
import {blankPage, endless, hostile} from './tiff.mjs';

const build = process.env.BUILD, viewer = join(build, 'viewer.html'), pictures = join(build, 'screenshots');
const {BlobSource, CodedPage, Module, readDirectories, readLayout} = await import(`${build}/engine.mjs`);
const compiled = await WebAssembly.compile(await readFile(process.env.MODULE));
const sample = (name) => fileURLToPath(new URL(`../../samples/${name}`, import.meta.url));

let browser, tab;
before(async () => {
    await mkdir(pictures, {recursive: true});
    browser = await launch();
    tab = await ViewerTab.open(browser, viewer, {width: 700, height: 520});
});
after(() => browser?.close());
const picture = (of, name) => of.page.screenshot({path: join(pictures, `${name}.png`)});
const settled = (ms = 700) => new Promise((done) => setTimeout(done, ms));

/** What the module draws of a page in Node. */
async function expected(file, index, {left, top, width, height}) {
    const source = new BlobSource(new Blob([await readFile(file)]));
    const page = new CodedPage(await Module.start(compiled), source, await readLayout((await readDirectories(source))[index], source));
    const {pictures: [drawn]} = await page.render([{left, top, width, height, outWidth: width, outHeight: height}], 'fail', () => {});
    return Buffer.from(drawn.filter((_, k) => k % 4 === 0));
}

test('shows every sample with the pixels of the library', async () => {
    for (const name of ['text.tif', 'text_strips_lsb.tif', 'drawing_tiled.tif', 'halftone.tif', 'negative.tif', 'blackiszero.tif', 'pages.tif']) {
        await tab.choose(sample(name));
        for (let index = 0; ; ++index) {
            const {width, height, grey} = await tab.pixelsAt(101, 67);
            assert.ok(grey.equals(await expected(sample(name), index, {left: 101, top: 67, width, height})), `${name}, page ${index + 1}`);
            if (await tab.page.$eval('[data-action="next"]', (button) => button.disabled)) break;
            await tab.page.evaluate(() => { delete document.body.dataset.firstView; });
            await tab.page.keyboard.press('PageDown');
            await tab.until((page) => document.body.dataset.page === page, String(index + 2));
            await tab.shown();
        }
    }
    assert.equal(await tab.text('#count'), 'of 4');
});

test('pans, zooms, turns, mirrors and inverts by mouse and keyboard', async () => {
    await tab.choose(sample('drawing_tiled.tif'));
    const state = () => tab.page.evaluate(() => {
        const {viewport} = tilepress.stage.viewer;
        const {x, y} = viewport.getCenter();
        return {scale: tilepress.stage.scale, x, y, turn: viewport.getRotation(), flip: viewport.getFlip()};
    });
    const start = await state();
    await tab.page.mouse.move(350, 250);
    await tab.page.mouse.wheel({deltaY: -300});
    await settled();
    const near = await state();
    assert.ok(near.scale > start.scale);
    await tab.page.mouse.down();
    await tab.page.mouse.move(250, 200, {steps: 5});
    await tab.page.mouse.up();
    await settled();
    assert.ok((await state()).x > near.x && (await state()).y > near.y, 'the page follows the mouse');
    await tab.page.keyboard.press('1');
    await tab.until(() => document.querySelector('#zoom').textContent === '100 %');
    const {x} = await state();
    await tab.page.keyboard.press('ArrowRight');
    await settled();
    assert.ok((await state()).x > x);
    for (const key of ['r', 'm', 'i']) await tab.page.keyboard.press(key);
    await settled();
    const {turn, flip} = await state();
    assert.deepEqual([(turn % 360 + 360) % 360, flip], [90, true]);
    assert.equal(await tab.page.$eval('#page', (element) => element.className.includes('inverted')), true);
    assert.equal(await tab.page.$eval('[data-action="mirror"]', (button) => button.ariaPressed), 'true');
    await picture(tab, 'turned');
    for (const key of ['R', 'm', 'i', '0']) await tab.page.keyboard.press(key);
    await settled();
    assert.ok(Math.abs((await state()).scale - start.scale) < 1e-6);
});

test('shows the rest of a damaged page, and where it is damaged', async () => {
    const bytes = await readFile(sample('text_strips_lsb.tif'));
    bytes.fill(0, 9000, 9200);
    await tab.drop(bytes, 'damaged.tif');
    await tab.shown();
    assert.match(await tab.text('#status'), /^damaged\.tif: 1,653 x 2,339 pixels, 200 dpi\. [12] damaged tiles?\.$/);
    assert.ok(await tab.page.$('.damaged'));
    await tab.page.keyboard.press('p');
    assert.match(await tab.text('#damage'), /^Tile \d+ cannot be decoded from its row \d+ on/);
    await tab.page.click('[data-action="check"]');
    await tab.until(() => /damaged tiles? found/.test(document.querySelector('#status').textContent));
    await settled();
    await picture(tab, 'damaged');
    await tab.page.click('#damage button');
    await settled();
    await tab.page.keyboard.press('p');
});

test('tells what is wrong with hostile files within two seconds, and goes on', async () => {
    const slowest = {};
    for (const [what, [bytes]] of Object.entries(hostile)) {
        const start = performance.now();
        await tab.drop(bytes, `${what}.tif`);
        await tab.refused();
        slowest[what] = performance.now() - start;
        assert.match(await tab.text('#error p'), new RegExp(`^${what}\\.tif: .{20}`), what);
        await tab.page.click('[data-action="dismiss"]');
    }
    assert.ok(Math.max(...Object.values(slowest)) < 2000, JSON.stringify(slowest));
    const start = performance.now();
    await tab.drop(endless(), 'endless.tif');
    await tab.until(() => !document.querySelector('#slow').hidden);
    assert.ok(performance.now() - start < 2000 + 250, 'work without an end is told, too');
    await tab.page.click('[data-action="stop"]');
    await tab.refused();
    await tab.dropFile(sample('negative.tif'));
    await tab.shown();
    assert.match(await tab.text('#status'), /^negative\.tif: 828 x 583 pixels/);
});

test('fifty pages one after the other leave nothing behind', async () => {
    const session = await tab.page.createCDPSession();
    const used = async () => {
        await session.send('HeapProfiler.collectGarbage');
        const {metrics} = await session.send('Performance.getMetrics');
        const value = (name) => metrics.find((metric) => metric.name === name).value;
        return {heap: value('JSHeapUsedSize'), nodes: value('Nodes'), workers: tab.page.workers().length};
    };
    await session.send('Performance.enable');
    await tab.choose(sample('pages.tif'));
    const go = async (page) => {
        await tab.page.evaluate(() => { delete document.body.dataset.firstView; });
        await tab.page.$eval('#number', (input, page) => { input.value = page; input.dispatchEvent(new Event('change')); }, String(page));
        await tab.until((page) => document.body.dataset.page === page, String(page));
        await tab.shown();
    };
    for (let k = 0; k < 8; ++k) await go(1 + (k + 1) % 4);
    const before = await used();
    for (let k = 0; k < 50; ++k) await go(1 + (k + 1) % 4);
    for (let k = 0; k < 10; ++k) await tab.choose(sample('negative.tif'));
    const later = await used();
    assert.equal(later.workers, 1);
    assert.ok(later.heap < before.heap + 2e6 && later.nodes < before.nodes + 100, JSON.stringify({before, later}));
});

test('no request leaves the page, unless the user gives an address: then to its server alone', async () => {
    const file = await readFile(sample('drawing_tiled.tif'));
    const asked = [];
    const serve = () => new Promise((listening) => {
        const server = createServer((request, response) => {
            asked.push(request.url);
            const [, from, to] = (/bytes=(\d+)-(\d+)/.exec(request.headers.range) ?? [0, 0, file.length]).map(Number);
            const part = file.subarray(from, to + 1);
            response.writeHead(206, {'Access-Control-Allow-Origin': '*', 'Access-Control-Expose-Headers': 'Content-Range',
                                     'Content-Range': `bytes ${from}-${from + part.length - 1}/${file.length}`}).end(part);
        }).listen(0, '127.0.0.1', () => listening(server));
    });
    const [server, other] = [await serve(), await serve()];
    const at = (of) => `http://127.0.0.1:${of.address().port}`;
    const attempts = (of, url) => of.page.evaluate(async (url) => {
        const image = (src) => new Promise((end) => Object.assign(new Image(), {src, onload: () => end('loaded'), onerror: () => end('blocked')}));
        const worker = () => new Promise((end) => {
            const work = `fetch(${JSON.stringify(url)}).then(() => postMessage('loaded'), () => postMessage('blocked'))`;
            new Worker(URL.createObjectURL(new Blob([work]))).onmessage = ({data}) => end(data);
        });
        const fetched = await fetch(url).then(() => 'loaded', () => 'blocked');
        return [fetched, await worker(), await image(`${url}/image`), String(navigator.sendBeacon?.(`${url}/beacon`))];
    }, url);
    try {
        assert.deepEqual(tab.violations, [], 'none was needed so far');
        assert.deepEqual((await attempts(tab, at(server))).slice(0, 3), ['blocked', 'blocked', 'blocked']);
        assert.deepEqual(asked, []);
        const remote = await ViewerTab.open(browser, viewer, {hash: `#url=${encodeURIComponent(`${at(server)}/drawing.tif`)}`});
        await remote.shown();
        assert.match(await remote.text('#status'), /^drawing\.tif: 1,240 x 875/);
        assert.deepEqual(remote.violations, []);
        assert.deepEqual([...new Set(asked)], ['/drawing.tif']);
        assert.deepEqual((await attempts(remote, at(other))).slice(0, 3), ['blocked', 'blocked', 'blocked']);
        assert.deepEqual([...new Set(asked)], ['/drawing.tif']);
        await remote.close();
    } finally {
        server.close();
        other.close();
    }
});

test('can be used without seeing it or a mouse, in the dark and on a telephone', async () => {
    const axe = await readFile(createRequire(import.meta.url).resolve('axe-core'), 'utf8');
    const dark = [{name: 'prefers-color-scheme', value: 'dark'}];
    const phone = {width: 390, height: 780, viewport: {deviceScaleFactor: 3, hasTouch: true, isMobile: true}};
    for (const [name, features] of [['light', {width: 1280, height: 860}], ['dark', {width: 1280, height: 860, media: dark}], ['phone', phone]]) {
        const view = await ViewerTab.open(browser, viewer, features);
        await picture(view, `${name}-empty`);
        const check = async (what) => {
            await view.page.evaluate(axe);
            const {violations} = await view.page.evaluate(() => axe.run());
            assert.deepEqual(violations.map(({id, nodes}) => [id, nodes[0].html]), [], `${name}, ${what}`);
        };
        await check('empty');
        await view.choose(sample('text.tif'));
        assert.equal(await view.page.evaluate(() => document.querySelector('#page canvas').width / document.querySelector('#page canvas').clientWidth),
                     features.viewport?.deviceScaleFactor ?? 1, 'a pixel of the canvas for each of the screen');
        await picture(view, `${name}-page`);
        await view.page.keyboard.press('1');
        await view.page.keyboard.press('p');
        await settled();
        await view.shown();
        await check('page');
        await picture(view, `${name}-about`);
        await view.page.keyboard.press('?');
        await settled(200);
        await picture(view, `${name}-keys`);
        await view.close();
    }
});

test('nothing went wrong unseen', () => assert.deepEqual(tab.faults, []));
