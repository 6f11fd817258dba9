// The library's plain C page interface, called in the memory of its WebAssembly module. Offsets of fields are those of
// include/tilepress/page.h for 32-bit targets.

import {PageError} from './errors';
import {damageText, type Damage, type DamageKind, type Mode, type OnDamage, type View} from './types';

interface Exports {
    memory: WebAssembly.Memory;
    _initialize(): void;
    tp_alloc(size: number): number;
    tp_free(block: number): void;
    tp_status_text(status: number): number;
    tp_encoder_open(width: number, fillOrder: number, limits: number, encoder: number): number;
    tp_encoder_add_bits(encoder: number, rows: number, stride: number, count: number): number;
    tp_encoder_finish(encoder: number, data: number, size: number): number;
    tp_encoder_close(encoder: number): void;
    tp_page_open(info: number, tiles: number, count: number, page: number): number;
    tp_page_release(page: number): void;
    tp_page_memory(page: number): bigint;
    tp_page_prepare(page: number, options: number): number;
    tp_page_verify(page: number, options: number): number;
    tp_page_render(page: number, views: number, count: number, options: number): number;
}

/** The tiles of a page as the module sees them. */
export interface PageForm {
    width: number;
    height: number;
    tileWidth: number;
    tileHeight: number;
    fillOrder: 1 | 2;
    blackIsZero: boolean;
    layout: 'tiles' | 'strips';
}

/** Bytes in the module's memory. No data: the tile is not there and is paper. */
export interface CodedTile {
    data: number;
    size: number;
}

const kBorrow = 1;
const kInvert = 1;
const kRgba = 2;
const kOk = 0, kDamaged = 1;
const kFailures = new Map([
    [-1, 'argument'], [-2, 'memory'], [-3, 'limit'], [-4, 'damaged'], [-5, 'cancelled'], [-6, 'limit'],
] as const);
const kModes: Mode[] = ['grey', 'coverage', 'ink', 'nearest'];
const kPolicies: OnDamage[] = ['fail', 'white', 'keep'];
const kKinds: DamageKind[] = ['missing', 'bad code', 'backwards', 'past the end', 'out of data', 'left over'];

const kInfoSize = 48, kViewSize = 60, kOptionsSize = 48, kDamageSize = 32, kCodedSize = 8;
const kDamageRoom = 64;
const kMaxSpare = 16;
const kMaxPixels = 2n ** 34n, kMaxBytes = 2n ** 28n;

/** How a walk ended. */
export interface Walk {
    damage: Damage[];
    /** Damaged tiles, also those beyond the list. */
    damaged: number;
}

export class Module {
    private readonly spare: Uint8ClampedArray[] = [];

    private constructor(private readonly api: Exports) {}

    static async start(compiled: WebAssembly.Module): Promise<Module> {
        // Nothing of its host is used, but the C library asks for output and for an end.
        const imports: WebAssembly.Imports = {};
        for (const {module, name} of WebAssembly.Module.imports(compiled)) {
            (imports[module] ??= {})[name] = () => { throw new Error(`the module called ${name}`); };
        }
        const {exports} = await WebAssembly.instantiate(compiled, imports);
        const api = exports as unknown as Exports;
        api._initialize();
        return new Module(api);
    }

    get memoryBytes(): number { return this.api.memory.buffer.byteLength; }

    alloc(size: number): number {
        const block = this.api.tp_alloc(Math.max(size, 1)) >>> 0;
        if (!block) throw new PageError('memory', 'The page needs more memory than the viewer takes.');
        return block;
    }
    free(block: number): void { this.api.tp_free(block); }
    /** Anew each time: the memory moves when it grows. */
    bytes(at: number, size: number): Uint8Array { return new Uint8Array(this.api.memory.buffer, at, size); }

    openPage(form: PageForm, tiles: CodedTile[]): number {
        return this.scratch([kInfoSize, kCodedSize * tiles.length, 4], (info, table, page) => {
            const view = this.view();
            [kInfoSize, form.width, form.height, form.tileWidth, form.tileHeight, form.fillOrder, form.blackIsZero ? 1 : 0,
                kBorrow].forEach((value, k) => view.setUint32(info + 4 * k, value, true));
            view.setBigUint64(info + 32, kMaxPixels, true);
            view.setBigUint64(info + 40, kMaxBytes, true);
            tiles.forEach(({data, size}, k) => {
                view.setUint32(table + kCodedSize * k, data, true);
                view.setUint32(table + kCodedSize * k + 4, size, true);
            });
            this.check(this.api.tp_page_open(info, table, tiles.length, page));
            return this.view().getUint32(page, true);
        });
    }
    releasePage(page: number): void { this.api.tp_page_release(page); }

    prepare(page: number, form: PageForm): Walk {
        return this.walk(form, 'white', (options) => this.api.tp_page_prepare(page, options));
    }
    verify(page: number, form: PageForm): Walk {
        return this.walk(form, 'white', (options) => this.api.tp_page_verify(page, options));
    }

    /** Draws all views in one walk; the pictures are copies. */
    render(page: number, form: PageForm, views: View[], onDamage: OnDamage): Walk & {pictures: Uint8ClampedArray[]} {
        const sizes = views.map(({outWidth, outHeight}) => 4 * outWidth * outHeight);
        return this.scratch([kViewSize * views.length, ...sizes], (records, ...pixels) => {
            this.bytes(records, kViewSize * views.length).fill(0);
            const memory = this.view();
            views.forEach((view, k) => writeView(memory, records + kViewSize * k, view, pixels[k]!));
            const walk = this.walk(form, onDamage,
                                   (options) => this.api.tp_page_render(page, records, views.length, options));
            const pictures = pixels.map((at, k) => {
                const picture = this.picture(sizes[k]!);
                picture.set(this.bytes(at, picture.length));
                return picture;
            });
            return {...walk, pictures};
        });
    }

    /** Draws a small page with something of everything, so that the browser compiles for speed what runs most. */
    async warmUp(goOn: () => boolean): Promise<void> {
        const side = 512, across = side / 8;
        const {data, size} = this.scratch([across * side, 4, 4], (rows, encoder, coded) => {
            const pixels = this.bytes(rows, across * side);
            for (let k = 0; k < pixels.length; ++k) {
                const x = k % across, y = Math.floor(k / across);
                pixels[k] = (x * x + y * y * 3) % 7 < 2 ? 0xff << ((x + y) & 7) : y % 24 < 3 ? 0xc3 : 0;
            }
            this.check(this.api.tp_encoder_open(side, 1, 0, encoder));
            const handle = this.view().getUint32(encoder, true);
            this.check(this.api.tp_encoder_add_bits(handle, rows, across, side));
            this.check(this.api.tp_encoder_finish(handle, encoder, coded));
            const [from, size] = [encoder, coded].map((at) => this.view().getUint32(at, true)) as [number, number];
            const data = this.alloc(size);
            this.bytes(data, size).set(this.bytes(from, size));
            this.api.tp_encoder_close(handle);
            return {data, size};
        });
        const form = {width: side, height: side, tileWidth: side, tileHeight: side, fillOrder: 1, blackIsZero: false, layout: 'tiles'} as const;
        const page = this.openPage(form, [{data, size}]);
        const views = [2, 3, 16].map((by) => ({outWidth: Math.floor(side / by), outHeight: Math.floor(side / by)}));
        while (goOn()) {
            for (const picture of this.render(page, form, views, 'white').pictures) this.reuse(picture);
            await new Promise((done) => setTimeout(done));
        }
        this.releasePage(page);
        this.free(data);
    }

    /** Takes a picture back that is needed no more: garbage of a megabyte a tile would pile up while a page is panned. */
    reuse(picture: Uint8ClampedArray): void {
        if (this.spare.push(picture) > kMaxSpare) this.spare.shift();
    }

    private picture(size: number): Uint8ClampedArray {
        const k = this.spare.findIndex(({length}) => length === size);
        return k < 0 ? new Uint8ClampedArray(size) : this.spare.splice(k, 1)[0]!;
    }

    private view(): DataView { return new DataView(this.api.memory.buffer); }

    /** Blocks for the length of a call. */
    private scratch<T>(sizes: number[], use: (...blocks: number[]) => T): T {
        const blocks: number[] = [];
        try {
            for (const size of sizes) blocks.push(this.alloc(size));
            return use(...blocks);
        } finally {
            blocks.forEach((block) => this.free(block));
        }
    }

    private walk(form: PageForm, onDamage: OnDamage, call: (options: number) => number): Walk {
        return this.scratch([kOptionsSize, kDamageSize * kDamageRoom], (options, records) => {
            this.bytes(options, kOptionsSize).fill(0);
            let view = this.view();
            view.setUint32(options, kOptionsSize, true);
            view.setUint32(options + 4, kPolicies.indexOf(onDamage), true);
            view.setUint32(options + 32, records, true);
            view.setUint32(options + 36, kDamageRoom, true);
            const status = call(options);
            view = this.view();
            const damaged = view.getUint32(options + 40, true);
            const damage = Array.from({length: Math.min(damaged, kDamageRoom)},
                                      (_, k) => readDamage(view, records + kDamageSize * k, form));
            this.check(status, damage[0]);
            return {damage, damaged};
        });
    }

    private check(status: number, damage?: Damage): void {
        if (status === kOk || status === kDamaged) return;
        const code = kFailures.get(status as -1) ?? 'argument';
        if (code === 'damaged' && damage) throw new PageError(code, damageText(damage), damage.tile, damage.row);
        throw new PageError(code, this.text(this.api.tp_status_text(status)));
    }

    private text(at: number): string {
        const bytes = new Uint8Array(this.api.memory.buffer, at);
        return new TextDecoder().decode(bytes.slice(0, bytes.indexOf(0)));
    }
}

function writeView(memory: DataView, at: number, view: View, pixels: number): void {
    const opaque = (colour: number) => (colour | 0xff000000) >>> 0;
    const coloured = view.ink !== undefined || view.paper !== undefined;
    [kViewSize, view.left ?? 0, view.top ?? 0, view.width ?? 0, view.height ?? 0, view.outWidth, view.outHeight,
        kModes.indexOf(view.mode ?? 'grey'), kRgba, view.orientation ?? 1, view.invert ? kInvert : 0,
        coloured ? opaque(view.ink ?? 0) : 0, coloured ? opaque(view.paper ?? 0xffffff) : 0, pixels, 4 * view.outWidth,
    ].forEach((value, k) => memory.setUint32(at + 4 * k, value, true));
}

function readDamage(memory: DataView, at: number, form: PageForm): Damage {
    const [tile, row] = [memory.getUint32(at, true), memory.getUint32(at + 4, true)];
    const [kind, left, top] = [16, 20, 24].map((offset) => memory.getUint32(at + offset, true)) as [number, number, number];
    const bottom = Math.min(top - row + form.tileHeight, form.height);
    return {
        tile, row, byte: Number(memory.getBigUint64(at + 8, true)), kind: kKinds[kind] ?? 'bad code', left, top,
        width: Math.max(0, Math.min(form.tileWidth, form.width - left)), height: Math.max(0, bottom - top),
    };
}
