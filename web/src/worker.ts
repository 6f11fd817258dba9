// One file: its source, the module, and its pages that are open. Pictures that wait are drawn together, so that rows under
// several of them are decoded once.

import {CodedPage} from './coded-page';
import {PageError} from './errors';
import {Module} from './module';
import type {Calls, FromWorker, Picture, ToWorker} from './protocol';
import {BlobSource, HttpSource, type Source} from './source';
import {readDirectories, readLayout, type Directory} from './tiff';
import type {Cost, View} from './types';

const kBeat = 250;                // ms
const kWarmUp = 300;
const kPixelsTogether = 2 ** 20;  // of pictures that are drawn in one walk

const port = self as unknown as {
    postMessage(message: FromWorker, transfer?: Transferable[]): void;
    onmessage: (event: MessageEvent<ToWorker[]>) => void;
};
type Asked<N extends keyof Calls> = {id: number} & Calls[N]['ask'];

let module: Module | undefined, source: Source, directories: Directory[];
const pages = new Map<number, CodedPage>();
const waiting: Asked<'render'>[] = [];
let calls = 0;

const cost = (ms: number): Cost => ({ms, memory: module!.memoryBytes, read: source.read});

function pageOf(index: number): CodedPage {
    const page = pages.get(index);
    if (!page) throw new PageError('ended', 'The page has been closed.');
    return page;
}

const reporter = (id: number) => (progress: Extract<FromWorker, {progress: unknown}>['progress']) => port.postMessage({id, progress});

const handlers = {
    async start({module: compiled, source: from}: Asked<'start'>) {
        source = typeof from === 'string' ? await HttpSource.open(from) : new BlobSource(from);
        module ??= await Module.start(compiled);
        directories = await readDirectories(source);
        return directories.map(({info}) => info);
    },
    /** Runs the module before there is a file, until there is one. */
    async warm({module: compiled}: Asked<'warm'>) {
        module = await Module.start(compiled);
        const end = performance.now() + kWarmUp, nothingYet = calls;
        void module.warmUp(() => calls <= nothingYet && performance.now() < end);
    },
    async open({page: index}: Asked<'open'>) {
        const start = performance.now();
        const directory = directories[index];
        if (!directory) throw new PageError('argument', `The file has no page ${index + 1}.`);
        if (!pages.has(index)) {
            const page = new CodedPage(module!, source, await readLayout(directory, source));
            pages.set(index, page);
        }
        return cost(performance.now() - start);
    },
    async verify({id, page}: Asked<'verify'>) { return pageOf(page).verify(reporter(id)); },
    async close({page}: Asked<'close'>) {
        pages.get(page)?.close();
        pages.delete(page);
    },
};

/** Serves one call after another: pages are changed by reading, and a walk must find them as they were. */
let last: Promise<unknown> = Promise.resolve();
function serve(id: number, work: () => Promise<void>): void {
    ++calls;
    last = last.then(work).catch((error: unknown) => fail(id, error)).finally(() => { --calls; });
}

function fail(id: number, error: unknown): void {
    if (error instanceof PageError) return port.postMessage({id, error: error.toPlain()});
    const {message} = error as Error;
    const internal = new PageError(error instanceof RangeError ? 'memory' : 'internal', `The page cannot be shown: ${message}`);
    // A module that has trapped is in an unknown state.
    if (error instanceof WebAssembly.RuntimeError) port.postMessage({fatal: internal.toPlain()});
    else port.postMessage({id, error: internal.toPlain()});
}

/** Those of the waiting pictures that go with the first one. */
function together(): Asked<'render'>[] {
    const first = waiting[0];
    if (!first) return [];
    let pixels = 0;
    const area = ({outWidth, outHeight}: View) => outWidth * outHeight;
    const batch = waiting.filter(({page, onDamage, view}) => page === first.page && onDamage === first.onDamage &&
        ((pixels += area(view)) <= kPixelsTogether || view === first.view));
    for (const asked of batch) waiting.splice(waiting.indexOf(asked), 1);
    return batch;
}

async function draw(batch: Asked<'render'>[]): Promise<void> {
    const {id: first, page, onDamage} = batch[0]!;
    const {pictures, damage, ms} = await pageOf(page).render(batch.map(({view}) => view), onDamage, reporter(first));
    for (const [k, {id, view, bitmap}] of batch.entries()) {
        const image = new ImageData(pictures[k]! as ImageDataArray, view.outWidth, view.outHeight);
        const pixels = bitmap ? await createImageBitmap(image) : image;
        if (bitmap) module!.reuse(pictures[k]!);
        const answer: Picture = {pixels, damage, cost: cost(ms / batch.length)};
        port.postMessage({id, answer}, [pixels instanceof ImageData ? pixels.data.buffer : pixels]);
    }
}

async function drawWaiting(): Promise<void> {
    const batch = together();
    if (batch.length > 1) {
        try {
            return await draw(batch);
        } catch (error) {
            if (error instanceof WebAssembly.RuntimeError) throw error;
        }
    }
    // One bad request must not fail the others of its batch.
    for (const asked of batch) await draw([asked]).catch((error: unknown) => fail(asked.id, error));
}

/** Once a page has been seen, and nobody waits, its further views are made cheap. */
async function prepareSeen(index: number): Promise<void> {
    if (waiting.length) return;
    // A page that cannot be laid out anew is drawn as it is.
    await pages.get(index)?.prepare(() => {}).catch((error: unknown) => { if (error instanceof WebAssembly.RuntimeError) throw error; });
}

function receive(data: ToWorker): void {
    if (data.call === 'cancel') {
        const k = waiting.findIndex(({id}) => id === data.id);
        if (k >= 0) fail(waiting.splice(k, 1)[0]!.id, new PageError('cancelled', 'The picture is no longer wanted.'));
    } else if (data.call === 'render') {
        waiting.push(data);
        serve(data.id, drawWaiting);
        serve(data.id, () => prepareSeen(data.page));
    } else {
        const handler = handlers[data.call] as (asked: typeof data) => Promise<unknown>;
        serve(data.id, async () => port.postMessage({id: data.id, answer: await handler(data)}));
    }
}

port.onmessage = ({data}) => data.forEach(receive);

setInterval(() => { if (calls) port.postMessage({beat: true}); }, kBeat);
