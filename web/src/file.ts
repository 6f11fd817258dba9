// Files and pages as callers hold them.

import {PageError} from './errors';
import type {Picture} from './protocol';
import {compiledModule, WorkerClient} from './worker-client';
import type {Cost, Damage, OnDamage, OpenOptions, PageInfo, Progress, View} from './types';

/** Bytes of a file, or where they are. Servers must answer requests for ranges, or the whole file is fetched. */
export type FileLike = Blob | ArrayBuffer | Uint8Array | URL | string;

export interface RenderOptions {
    /** 'white' unless given. */
    onDamage?: OnDamage;
    /** Gives up a picture that has not been begun. */
    signal?: AbortSignal;
}

/** Opens a TIFF file in a worker of its own. End it with `close`. */
export async function openFile(file: FileLike, options: OpenOptions = {}): Promise<TiffFile> {
    const module = await compiledModule();
    const client = new WorkerClient(options);
    const abort = () => client.end(new PageError('cancelled', 'Opening was given up.'));
    options.signal?.addEventListener('abort', abort);
    if (options.signal?.aborted) abort();
    try {
        const pages = await client.call('start', {module, source: asSource(file)});
        return new TiffFile(client, pages, options.onProgress);
    } catch (error) {
        client.end(new PageError('ended', 'The file could not be opened.'));
        throw error;
    } finally {
        options.signal?.removeEventListener('abort', abort);
    }
}

/** Opens one page of a file, the first unless `page` says another; closing the page closes the file. */
export async function openPage(file: FileLike, options: OpenOptions & {page?: number} = {}): Promise<Page> {
    const opened = await openFile(file, options);
    try {
        return await opened.openPage(options.page ?? 0, true);
    } catch (error) {
        opened.close();
        throw error;
    }
}

function asSource(file: FileLike): Blob | string {
    if (file instanceof Blob) return file;
    if (file instanceof ArrayBuffer || file instanceof Uint8Array) return new Blob([file as BlobPart]);
    return new URL(file, globalThis.location?.href).href;
}

export class TiffFile {
    /** @internal */
    constructor(private readonly client: WorkerClient, readonly pages: readonly PageInfo[],
                private readonly onProgress?: (progress: Progress) => void) {}

    /** Several pages may be open at once. The page ends with the file, or by its `close`. */
    async openPage(index: number, withFile = false): Promise<Page> {
        const cost = await this.client.call('open', {page: index}, undefined, this.onProgress);
        return new Page(this.client, this.pages[index]!, cost, () => {
            if (withFile) this.close();
            else void this.client.call('close', {page: index}).catch(() => {});
        }, this.onProgress);
    }

    /** Ends the worker and gives its memory back; calls that wait are rejected. */
    close(): void { this.client.end(new PageError('ended', 'The file has been closed.')); }
}

export class Page {
    /** Damaged tiles met so far, by number. */
    readonly damage = new Map<number, Damage>();
    /** Called when damage has been met for the first time. */
    onDamage?: (damage: Damage) => void;
    /** What opening took, then what the last picture took. */
    cost: Cost;
    /** Called with what each picture took. */
    onCost?: (cost: Cost) => void;

    /** @internal */
    constructor(private readonly client: WorkerClient, readonly info: PageInfo, opening: Cost, readonly close: () => void,
                private readonly onProgress?: (progress: Progress) => void) {
        this.cost = opening;
    }
    get width(): number { return this.info.width; }
    get height(): number { return this.info.height; }

    /** Draws part of the page at any size. */
    async render(view: View, options: RenderOptions = {}): Promise<ImageData> {
        return (await this.draw(view, options, false)).pixels as ImageData;
    }
    /** The same as a bitmap, which is quicker to show. */
    async renderBitmap(view: View, options: RenderOptions = {}): Promise<ImageBitmap> {
        return (await this.draw(view, options, true)).pixels as ImageBitmap;
    }
    /** Reads and decodes the whole page, and says what is wrong with it. */
    async verify(): Promise<Damage[]> {
        const found = await this.client.call('verify', {page: this.info.index}, undefined, this.onProgress);
        this.note(found);
        return found;
    }

    private async draw(view: View, {onDamage = 'white', signal}: RenderOptions, bitmap: boolean): Promise<Picture> {
        const ask = {page: this.info.index, view, onDamage, bitmap};
        const picture = await this.client.call('render', ask, signal, this.onProgress);
        this.note(picture.damage);
        this.onCost?.(this.cost = picture.cost);
        return picture;
    }
    private note(found: Damage[]): void {
        for (const damage of found) {
            if (this.damage.has(damage.tile)) continue;
            this.damage.set(damage.tile, damage);
            this.onDamage?.(damage);
        }
    }
}
