// Debian's Chromium, headless, with the viewer in it.
import {readFile} from 'node:fs/promises';
import {basename} from 'node:path';
import {pathToFileURL} from 'node:url';
import puppeteer from 'puppeteer-core';

/** A browser with a user folder of its own. */
export const launch = () => puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    headless: true,
    args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
           '--disable-component-update', '--disable-sync', '--enable-precise-memory-info'],
});

/** The viewer in a tab of its own, from a file. */
export class ViewerTab {
    static async open(browser, viewer, {hash = '', width = 900, height = 700, ...features} = {}) {
        const tab = new ViewerTab();
        tab.page = await (await browser.createBrowserContext()).newPage();
        tab.violations = [];
        tab.faults = [];
        tab.page.on('console', (message) => { if (/content security policy/i.test(message.text())) tab.violations.push(message.text()); });
        tab.page.on('pageerror', (error) => tab.faults.push(error.message));
        await tab.page.setViewport({width, height, ...features.viewport});
        if (features.media) await tab.page.emulateMediaFeatures(features.media);
        await tab.page.goto(pathToFileURL(viewer) + hash);
        return tab;
    }
    close() { return this.page.browserContext().close(); }

    text(selector) { return this.page.$eval(selector, (element) => element.textContent.trim()); }
    until(condition, ...values) { return this.page.waitForFunction(condition, {timeout: 20000, polling: 20}, ...values); }
    /** Until all of the view is drawn. */
    shown() { return this.until(() => document.body.dataset.firstView && tilepress.stage.viewer.world.getItemAt(0)?.getFullyLoaded()); }

    async choose(file) {
        await this.page.evaluate(() => { delete document.body.dataset.firstView; });
        await (await this.page.$('#file')).uploadFile(file);
        await this.shown();
    }
    /** As when a file is dropped on the page. */
    async drop(bytes, name) {
        await this.page.evaluate((base64, name) => {
            delete document.body.dataset.firstView;
            const transfer = new DataTransfer();
            transfer.items.add(new File([Uint8Array.from(atob(base64), (c) => c.charCodeAt(0))], name));
            document.body.dispatchEvent(new DragEvent('drop', {dataTransfer: transfer, bubbles: true, cancelable: true}));
        }, Buffer.from(bytes).toString('base64'), name);
    }
    async dropFile(path) { return this.drop(await readFile(path), basename(path)); }
    refused() { return this.until(() => !document.querySelector('#error').hidden); }

    /** The pixels on the screen with the page's (left, top) at the corner, one for one: {width, height, grey}. */
    async pixelsAt(left, top) {
        await this.page.evaluate((left, top) => {
            const {viewport, container} = tilepress.stage.viewer;
            viewport.fitBounds(viewport.imageToViewportRectangle(left, top, container.clientWidth, container.clientHeight), true);
        }, left, top);
        await this.page.evaluate(() => new Promise((drawn) => requestAnimationFrame(() => requestAnimationFrame(drawn))));
        await this.shown();
        await this.page.evaluate(() => new Promise((drawn) => requestAnimationFrame(() => requestAnimationFrame(drawn))));
        const {width, height, base64} = await this.page.evaluate(() => {
            const canvas = document.querySelector('#page .openseadragon-canvas canvas');
            const {data} = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
            let text = '';
            for (let k = 0; k < data.length; k += 4) text += String.fromCharCode(data[k]);
            return {width: canvas.width, height: canvas.height, base64: btoa(text)};
        });
        return {width, height, grey: Buffer.from(base64, 'base64')};
    }
}
