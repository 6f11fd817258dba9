// Where a file's bytes come from: a blob, or a URL whose server answers requests for ranges.

import {PageError} from './errors';

export interface Source {
    readonly size: number;
    /** Bytes read so far. */
    readonly read: number;
    /** Fewer bytes than asked for at the file's end. */
    bytes(offset: number, length: number, signal?: AbortSignal): Promise<Uint8Array>;
}

const kMaxWhole = 2 ** 28;  // bytes of a file that a server gives in one piece only
const kFirst = 2 ** 16;

export class BlobSource implements Source {
    read = 0;
    constructor(private readonly blob: Blob) {}
    get size(): number { return this.blob.size; }
    async bytes(offset: number, length: number): Promise<Uint8Array> {
        const bytes = new Uint8Array(await this.blob.slice(offset, offset + length).arrayBuffer());
        this.read += bytes.length;
        return bytes;
    }
}

/** A file by HTTP. Its beginning is fetched at once; a server that ignores ranges sends all of it, which is kept. */
export class HttpSource implements Source {
    read = 0;
    private constructor(private readonly url: string, readonly size: number, private readonly start: Uint8Array) {
        this.read = start.length;
    }

    static async open(url: string): Promise<HttpSource> {
        const response = await request(url, {headers: {Range: `bytes=0-${kFirst - 1}`}});
        if (response.status === 206) {
            const start = new Uint8Array(await response.arrayBuffer());
            return new HttpSource(url, await wholeSize(url, response), start);
        }
        if (Number(response.headers.get('content-length') ?? 0) > kMaxWhole) throw tooLarge();
        const whole = await limited(response);
        return new HttpSource(url, whole.length, whole);
    }

    async bytes(offset: number, length: number, signal?: AbortSignal): Promise<Uint8Array> {
        const end = Math.min(offset + length, this.size);
        if (end <= this.start.length) return this.start.slice(offset, Math.max(end, offset));
        const response = await request(this.url, {headers: {Range: `bytes=${offset}-${end - 1}`}, signal});
        if (response.status !== 206) throw new PageError('network', 'The server no longer answers requests for ranges.');
        const bytes = new Uint8Array(await response.arrayBuffer());
        if (bytes.length !== end - offset) throw new PageError('network', 'The server sent a part of another length.');
        this.read += bytes.length;
        return bytes;
    }
}

async function request(url: string, init: RequestInit): Promise<Response> {
    let response: Response;
    try {
        response = await fetch(url, {...init, credentials: 'omit'});
    } catch (error) {
        throw new PageError('network', `${url} cannot be read: ${(error as Error).message}`);
    }
    if (!response.ok) throw new PageError('network', `${url} cannot be read: the server says ${response.status}.`);
    return response;
}

/** Servers of other origins may hide the range's header; then the file is asked for its length alone. */
async function wholeSize(url: string, response: Response): Promise<number> {
    const range = /\/(\d+)$/.exec(response.headers.get('content-range') ?? '');
    const size = range ? range[1] : (await request(url, {method: 'HEAD'})).headers.get('content-length');
    if (!size) throw new PageError('network', 'The server does not say how large the file is.');
    return Number(size);
}

async function limited(response: Response): Promise<Uint8Array> {
    const parts: Uint8Array[] = [];
    let size = 0;
    const reader = response.body!.getReader();
    for (let part = await reader.read(); !part.done; part = await reader.read()) {
        parts.push(part.value);
        size += part.value.length;
        if (size > kMaxWhole) {
            await reader.cancel();
            throw tooLarge();
        }
    }
    return new Uint8Array(await new Blob(parts as BlobPart[]).arrayBuffer());
}

const tooLarge = () => new PageError('limit', 'The server gives the file in one piece only, and it is too large for that.');

/** A part of a file. */
export interface Range {
    offset: number;
    size: number;
}

/** Reads many parts in few pieces: neighbours come together, and a few pieces at once. `take` gets each part's bytes. */
export async function readRanges(source: Source, ranges: Range[], take: (index: number, bytes: Uint8Array) => void,
                                 onProgress?: (done: number, total: number) => void, signal?: AbortSignal): Promise<void> {
    const pieces = merged(ranges);
    const total = pieces.reduce((sum, {size}) => sum + size, 0);
    let done = 0;
    const worker = async () => {
        for (let piece = pieces.shift(); piece; piece = pieces.shift()) {
            const bytes = await source.bytes(piece.offset, piece.size, signal);
            for (const k of piece.parts) {
                const from = ranges[k]!.offset - piece.offset;
                take(k, bytes.subarray(from, from + ranges[k]!.size));
            }
            onProgress?.(done += piece.size, total);
        }
    };
    await Promise.all(Array.from({length: Math.min(kAtOnce, pieces.length)}, worker));
}

const kAtOnce = 6;
const kGap = 2 ** 14;    // a gap that costs less than another request
const kPiece = 2 ** 22;

interface Piece extends Range {
    parts: number[];
}

function merged(ranges: Range[]): Piece[] {
    const pieces: Piece[] = [];
    const order = ranges.map((_, k) => k).sort((a, b) => ranges[a]!.offset - ranges[b]!.offset);
    for (const k of order) {
        const {offset, size} = ranges[k]!;
        const last = pieces[pieces.length - 1];
        const end = Math.max(offset + size, last ? last.offset + last.size : 0);
        if (last && offset <= last.offset + last.size + kGap && end - last.offset <= kPiece) {
            last.size = end - last.offset;
            last.parts.push(k);
        } else {
            pieces.push({offset, size, parts: [k]});
        }
    }
    return pieces;
}
