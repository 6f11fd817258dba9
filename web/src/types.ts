// What callers see of files, pages and pictures.

/** A page as its file describes it; nothing is decoded for it. */
export interface PageInfo {
    /** From 0. */
    index: number;
    width: number;
    height: number;
    layout: 'tiles' | 'strips';
    tileWidth: number;
    /** Rows of a tile or strip. */
    tileHeight: number;
    tileCount: number;
    /** Pixels an inch across and down, where the file says. */
    resolution?: [number, number];
    /** 1 to 8 as TIFF has it; 1 is upright. */
    orientation: number;
    /** The second bit of a file's bytes comes first or last. */
    fillOrder: 1 | 2;
    blackIsZero: boolean;
    /** Why the page cannot be shown; absent for one that can. */
    problem?: string;
}

/** How pixels of the page become one of a smaller picture: their share of ink on a curve that keeps thin lines dark, the
 *  linear share, ink if any is, the top left one. */
export type Mode = 'grey' | 'coverage' | 'ink' | 'nearest';

/** A rectangle of the page and the picture to be made of it. */
export interface View {
    /** The rectangle in pixels of the page; all of the page where it is left out. */
    left?: number;
    top?: number;
    width?: number;
    height?: number;
    /** The picture's size, after it has been turned. */
    outWidth: number;
    outHeight: number;
    /** 'grey' unless given. */
    mode?: Mode;
    /** 1 to 8 as TIFF has it; 1, upright, unless given. */
    orientation?: number;
    invert?: boolean;
    /** 0xRRGGBB; black on white unless given. */
    ink?: number;
    paper?: number;
}

/** What becomes of a damaged tile from its first bad row on: paper, its last good row again, or an error. */
export type OnDamage = 'white' | 'keep' | 'fail';

export type DamageKind = 'bad code' | 'backwards' | 'past the end' | 'out of data' | 'left over' | 'missing';

/** Where a tile is damaged. */
export interface Damage {
    /** Number of the tile or strip, row by row, from 0. */
    tile: number;
    /** Its first row that cannot be decoded. */
    row: number;
    /** About where in its bytes. */
    byte: number;
    kind: DamageKind;
    /** What is not shown, in pixels of the page. */
    left: number;
    top: number;
    width: number;
    height: number;
}

/** A sentence about a damaged tile. */
export function damageText({tile, row, kind}: Damage): string {
    return kind === 'left over' ? `Tile ${tile} has bytes behind its last row.`
                                : `Tile ${tile} cannot be decoded from its row ${row} on (${kind}).`;
}

/** What a picture took. */
export interface Cost {
    /** Milliseconds in the module, its share where several pictures came from one walk. */
    ms: number;
    /** Bytes of the module's memory. */
    memory: number;
    /** Bytes read of the file so far. */
    read: number;
}

export interface Progress {
    phase: 'reading' | 'preparing' | 'checking';
    /** Bytes, for reading; else 0 of 1. */
    done: number;
    total: number;
}

export interface OpenOptions {
    signal?: AbortSignal;
    onProgress?: (progress: Progress) => void;
    /** Called when the worker has not answered for a second and a half, and, with false, when it has again. */
    onSlow?: (slow: boolean) => void;
    /** Milliseconds of work without an answer after which the file is given up; 10,000 unless given. */
    timeLimit?: number;
}
