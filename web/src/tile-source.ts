// Pages for OpenSeadragon: tiles of a pyramid that is nowhere, since every one is drawn when it is asked for.

import type {Page, RenderOptions} from './file';
import type {View} from './types';

export interface TileSourceOptions {
    /** Pixels of a tile's side; 512 unless given. */
    tileSize?: number;
    /** The longer side of the coarsest level in pixels, at least; as much as one tile holds unless given. */
    coarsest?: number;
    /** How tiles are drawn: mode, colours, inversion. Asked for each tile. */
    look?: () => Pick<View, 'mode' | 'invert' | 'ink' | 'paper'>;
    onDamage?: RenderOptions['onDamage'];
    /** Called when a tile could not be drawn. */
    onError?: (error: Error) => void;
}

/** What OpenSeadragon hands to a source for one tile. */
interface Job {
    src: string;
    userData: {abort?: AbortController};
    finish(data: ImageBitmap, request: null, type: 'imageBitmap'): void;
    fail(message: string, request: null): void;
}

/** Pixels that neighbours share: tiles without any are stretched to hide their seams, and so lose their sharpness. */
const kOverlap = 1;

/** A tile source for OpenSeadragon's `tileSources`. */
export function tileSource(page: Page, {tileSize = 512, coarsest, look, onDamage, onError}: TileSourceOptions = {}) {
    const {width, height} = page;
    const longer = Math.max(width, height, 2);
    const maxLevel = Math.ceil(Math.log2(longer));
    const halvings = coarsest ? Math.floor(Math.log2(longer / coarsest)) : Math.ceil(Math.log2(longer / tileSize));
    const minLevel = maxLevel - Math.min(Math.max(halvings, 0), maxLevel);
    return {
        width, height, tileSize, tileOverlap: kOverlap, minLevel, maxLevel,
        getTileUrl: (level: number, x: number, y: number) => `${level}/${x}/${y}`,
        hasTransparency: () => false,
        downloadTileStart(job: Job) {
            const [level, x, y] = job.src.split('/').map(Number) as [number, number, number];
            const abort = job.userData.abort = new AbortController();
            const view = {...tileView(page, level - maxLevel, tileSize, x, y), ...look?.()};
            page.renderBitmap(view, {onDamage, signal: abort.signal}).then(
                (bitmap) => job.finish(bitmap, null, 'imageBitmap'),
                (error: Error) => {
                    if (!abort.signal.aborted) onError?.(error);
                    job.fail(error.message, null);
                });
        },
        downloadTileAbort(job: Job) { job.userData.abort?.abort(); },
    };
}

function tileView(page: Page, level: number, tileSize: number, x: number, y: number): View {
    const scale = 2 ** -level;
    const span = (k: number, whole: number) => {
        const from = Math.max(0, k * tileSize - kOverlap) * scale;
        return {from, length: Math.min(((k + 1) * tileSize + kOverlap) * scale, whole) - from};
    };
    const across = span(x, page.width), down = span(y, page.height);
    return {
        left: across.from, top: down.from, width: across.length, height: down.length,
        outWidth: Math.ceil(across.length / scale), outHeight: Math.ceil(down.length / scale),
    };
}
