// A page in the module: its tiles are read when a view needs them, and stay in their codes.

import {PageError} from './errors';
import type {CodedTile, Module, Walk} from './module';
import {readRanges, type Source} from './source';
import type {Layout} from './tiff';
import type {Damage, OnDamage, Progress, View} from './types';

const kPrepareFrom = 2e7;          // pixels of a page in tall strips from which every view costs less when it is laid out anew
const kTallStrip = 1024;
const kMaxHeld = 2 ** 28;          // bytes of tiles, after which those that no view needs are given up
const kMaxPicture = 2 ** 25;       // pixels
const kMissing: CodedTile = {data: 0, size: 0};

type OnProgress = (progress: Progress) => void;

export interface Drawn extends Walk {
    pictures: Uint8ClampedArray[];
    ms: number;
}

export class CodedPage {
    private page = 0;
    private readonly tiles: CodedTile[];
    private readonly held = new Set<number>();
    private heldBytes = 0;
    private prepared = false;
    /** Something for damaged tiles to point at: a tile that is there, but has no bytes. */
    private readonly nothing: number;

    constructor(private readonly module: Module, private readonly source: Source, readonly layout: Layout) {
        this.tiles = new Array<CodedTile>(layout.tileCount).fill(kMissing);
        this.nothing = module.alloc(1);
    }

    /** Pages of which every view would walk over all that lies above it are read and laid out anew. */
    async prepare(onProgress: OnProgress): Promise<void> {
        const {layout, tileHeight, width, height} = this.layout;
        if (this.prepared || layout === 'tiles' || tileHeight < kTallStrip || width * height < kPrepareFrom) return;
        this.prepared = true;
        await this.load(this.all(), onProgress);
        onProgress({phase: 'preparing', done: 0, total: 1});
        this.module.prepare(this.opened(), this.layout);
        onProgress({phase: 'preparing', done: 1, total: 1});
    }

    async render(views: View[], onDamage: OnDamage, onProgress: OnProgress): Promise<Drawn> {
        for (const view of views) this.check(view);
        await this.load(new Set(views.flatMap((view) => this.under(view))), onProgress);
        const page = this.opened();
        const start = performance.now();
        return {...this.module.render(page, this.layout, views, onDamage), ms: performance.now() - start};
    }

    /** Reads and decodes everything. */
    async verify(onProgress: OnProgress): Promise<Damage[]> {
        await this.load(this.all(), onProgress);
        onProgress({phase: 'checking', done: 0, total: 1});
        const {damage} = this.module.verify(this.opened(), this.layout);
        onProgress({phase: 'checking', done: 1, total: 1});
        return damage;
    }

    close(): void {
        this.shut();
        for (const tile of this.held) this.drop(tile);
        this.module.free(this.nothing);
    }

    private opened(): number { return this.page ||= this.module.openPage(this.layout, this.tiles); }
    private shut(): void {
        if (this.page) this.module.releasePage(this.page);
        this.page = 0;
    }

    private all(): Set<number> { return new Set(this.tiles.keys()); }

    private check({left = 0, top = 0, width, height, outWidth, outHeight}: View): void {
        const {width: pageWidth, height: pageHeight} = this.layout;
        const whole = [left, top, width ?? 0, height ?? 0, outWidth, outHeight].every((value) => Number.isInteger(value) && value >= 0);
        if (!whole || outWidth === 0 || outHeight === 0 || left + (width ?? 1) > pageWidth || top + (height ?? 1) > pageHeight)
            throw new PageError('argument', `No part of a page of ${pageWidth} x ${pageHeight} pixels, or a picture without a size.`);
        if (outWidth * outHeight > kMaxPicture) throw new PageError('limit', `A picture of ${outWidth} x ${outHeight} pixels is too large.`);
    }

    /** Numbers of the tiles under a view. */
    private under({left = 0, top = 0, width, height}: View): number[] {
        const {tileWidth, tileHeight, width: pageWidth, height: pageHeight} = this.layout;
        const across = Math.ceil(pageWidth / tileWidth);
        const span = (from: number, length: number, side: number) =>
            Array.from({length: Math.floor((from + length - 1) / side) - Math.floor(from / side) + 1}, (_, k) => Math.floor(from / side) + k);
        const columns = span(left, width || pageWidth - left, tileWidth);
        return span(top, height || pageHeight - top, tileHeight).flatMap((row) => columns.map((column) => row * across + column));
    }

    private async load(needed: Set<number>, onProgress: OnProgress): Promise<void> {
        const {offsets, sizes} = this.layout;
        const lacking = [...needed].filter((tile) => !this.held.has(tile) && sizes[tile]! > 0);
        if (!lacking.length) return;
        this.shut();  // a page is what it was when it was opened: the next one knows the tiles to come
        this.makeRoom(needed, lacking.reduce((sum, tile) => sum + sizes[tile]!, 0));
        const ranges = lacking.map((tile) => {
            const offset = Math.min(offsets[tile]!, this.source.size);
            return {offset, size: Math.min(sizes[tile]!, this.source.size - offset)};
        });
        await readRanges(this.source, ranges, (k, bytes) => this.keep(lacking[k]!, bytes),
                         (done, total) => onProgress({phase: 'reading', done, total}));
    }

    private keep(tile: number, bytes: Uint8Array): void {
        const data = bytes.length ? this.module.alloc(bytes.length) : this.nothing;
        this.module.bytes(data, bytes.length).set(bytes);
        this.tiles[tile] = {data, size: bytes.length};
        this.held.add(tile);
        this.heldBytes += bytes.length;
    }
    private drop(tile: number): void {
        const {data, size} = this.tiles[tile]!;
        if (size) this.module.free(data);
        this.tiles[tile] = kMissing;
        this.held.delete(tile);
        this.heldBytes -= size;
    }
    private makeRoom(needed: Set<number>, more: number): void {
        if (this.heldBytes + more <= kMaxHeld) return;
        for (const tile of this.held)
            if (!needed.has(tile)) this.drop(tile);
    }
}
