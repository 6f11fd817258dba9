// The directories of a TIFF file, held to limits: nothing here trusts a count, an offset or a size.

import {Tiff, TiffTag, type TiffImage} from '@cogeotiff/core';
import {PageError} from './errors';
import type {Source} from './source';
import type {PageInfo} from './types';

const kMaxSide = 2 ** 20;
const kMaxPixels = 2 ** 34;
const kMaxTiles = 2 ** 20;
const kMaxPages = 2 ** 14;
const kMaxTagBytes = 2 ** 24;       // of one value of a directory
const kMaxCodedBytes = 2 ** 28;     // of one page
const kSharedCodedBytes = 2 ** 26;  // of one page, where tiles share bytes of the file and so name more than it has
const kBlock = 2 ** 16;

const kGroup4 = 4;
const kCompressions: Record<number, string> = {
    1: 'none', 2: 'CCITT RLE', 3: 'Group 3', 5: 'LZW', 6: 'JPEG', 7: 'JPEG', 8: 'Deflate', 32773: 'PackBits', 32946: 'Deflate',
    34712: 'JPEG 2000', 50000: 'Zstandard', 50001: 'WebP',
};

/** A page and where its tiles are in the file. */
export interface Layout extends PageInfo {
    offsets: ArrayLike<number>;
    sizes: ArrayLike<number>;
}

export interface Directory {
    info: PageInfo;
    image: TiffImage;
}

/** All pages of a file. */
export async function readDirectories(source: Source): Promise<Directory[]> {
    const start = await source.bytes(0, 4);
    const order = String.fromCharCode(...start.subarray(0, 2));
    const version = order === 'II' ? start[2]! | start[3]! << 8 : start[2]! << 8 | start[3]!;
    if ((order !== 'II' && order !== 'MM') || (version !== 42 && version !== 43))
        throw new PageError('not-tiff', 'This is not a TIFF file.');
    try {
        const tiff = new Tiff(headerReader(source), {defaultReadSize: kBlock});
        endChain(tiff, source.size);
        await tiff.init();
        return await Promise.all(tiff.images.map(async (image, index) => ({image, info: await describe(image, index)})));
    } catch (error) {
        if (error instanceof PageError) throw error;
        throw new PageError('not-tiff', `The file's directories cannot be read: ${(error as Error).message}`);
    }
}

/** Where the page's tiles are; throws what is wrong with it. */
export async function readLayout({info, image}: Directory, source: Source): Promise<Layout> {
    if (info.problem) throw new PageError('unsupported', info.problem);
    const [offsetsTag, sizesTag] = info.layout === 'tiles' ? [TiffTag.TileOffsets, TiffTag.TileByteCounts]
                                                           : [TiffTag.StripOffsets, TiffTag.StripByteCounts];
    const offsets = await list(image, offsetsTag);
    let sizes = await list(image, sizesTag);
    if (!sizes.length && info.tileCount === 1 && offsets.length) sizes = [source.size - offsets[0]!];
    const listed = Math.min(offsets.length, sizes.length);
    if (listed < info.tileCount)
        throw new PageError('not-tiff', `The page needs ${info.tileCount} tiles, and its file lists ${listed}.`);
    let total = 0;
    for (let k = 0; k < info.tileCount; ++k) total += sizes[k]!;
    // Tiles that share bytes, all pointing to one that costs much, would make a small file endless work.
    if (total > Math.min(kMaxCodedBytes, Math.max(source.size, kSharedCodedBytes)))
        throw new PageError('limit', `The page's codes are said to take ${total} bytes, which is more than is read.`);
    return {...info, offsets, sizes};
}

/** What the directory reader asks of a source: whole blocks are read and kept, since values lie close together. */
function headerReader(source: Source) {
    const blocks = new Map<number, Promise<Uint8Array>>();
    const block = (index: number) => {
        if (!blocks.has(index)) blocks.set(index, source.bytes(index * kBlock, kBlock));
        return blocks.get(index)!;
    };
    return {
        url: new URL('tiff:file'),
        metadata: {size: source.size},
        async fetch(offset: number, length = kBlock): Promise<ArrayBuffer> {
            if (!(length <= kMaxTagBytes)) throw new PageError('limit', `A value of ${length} bytes is more than is read.`);
            if (!(offset >= 0 && length >= 0 && offset + length <= source.size))
                throw new Error(`what should be at ${offset} is outside the file`);
            if (length > kBlock) return (await source.bytes(offset, length)).slice().buffer as ArrayBuffer;
            const result = new Uint8Array(length);
            for (let at = offset; at < offset + length;) {
                const index = Math.floor(at / kBlock);
                const part = (await block(index)).subarray(at - index * kBlock, offset + length - index * kBlock);
                if (!part.length) throw new Error('the file is shorter than it was');
                result.set(part, at - offset);
                at += part.length;
            }
            return result.buffer;
        },
    };
}

/** The reader follows directories until one has no next. A file may lead it round in circles, or outside: then the pages
 *  before are all that it has. */
function endChain(tiff: Tiff, size: number): void {
    const seen = new Set<number>();
    const read = tiff['readIfd'].bind(tiff);
    tiff['readIfd'] = (offset: number, view: Parameters<typeof read>[1]): number => {
        if (seen.add(offset).size > kMaxPages) throw new PageError('limit', `The file has more than ${kMaxPages} pages.`);
        const next = read(offset, view);
        return seen.has(next) || next >= size ? 0 : next;
    };
}

async function number(image: TiffImage, tag: TiffTag, missing: number): Promise<number> {
    const value: unknown = await image.fetch(tag);
    const first = typeof value === 'object' && value !== null ? (value as ArrayLike<unknown>)[0] : value;
    return typeof first === 'number' ? first : missing;
}

async function list(image: TiffImage, tag: TiffTag): Promise<ArrayLike<number>> {
    const found = image.tags.get(tag);
    if (found && found.count > kMaxTiles) throw new PageError('limit', `The page has ${found.count} tiles, which is more than is read.`);
    const value: unknown = await image.fetch(tag);
    return typeof value === 'number' ? [value] : (value as ArrayLike<number> | null) ?? [];
}

async function describe(image: TiffImage, index: number): Promise<PageInfo> {
    const width = await number(image, TiffTag.ImageWidth, 0), height = await number(image, TiffTag.ImageHeight, 0);
    const tiled = image.has(TiffTag.TileWidth);
    const tileWidth = tiled ? await number(image, TiffTag.TileWidth, 0) : width;
    const tileHeight = tiled ? await number(image, TiffTag.TileHeight, 0)
                             : Math.min(await number(image, TiffTag.RowsPerStrip, height) || height, height);
    const info: PageInfo = {
        index, width, height, layout: tiled ? 'tiles' : 'strips', tileWidth, tileHeight,
        tileCount: Math.ceil(width / tileWidth) * Math.ceil(height / tileHeight),
        resolution: await resolution(image),
        orientation: Math.min(Math.max(await number(image, TiffTag.Orientation, 1), 1), 8),
        fillOrder: await number(image, TiffTag.FillOrder, 1) === 2 ? 2 : 1,
        blackIsZero: await number(image, TiffTag.Photometric, 0) === 1,
    };
    const problem = sizeProblem(info) ?? await kindProblem(image);
    return problem ? {...info, problem} : info;
}

async function resolution(image: TiffImage): Promise<[number, number] | undefined> {
    const unit = {2: 1, 3: 2.54}[await number(image, TiffTag.ResolutionUnit, 2)];
    const values = await Promise.all([TiffTag.XResolution, TiffTag.YResolution].map(async (tag) => {
        const value: unknown = await image.fetch(tag);
        const [over, under] = Array.isArray(value) ? value.flat() as number[] : [];
        return unit && over && under ? over / under * unit : 0;
    }));
    return values[0] && values[1] ? [values[0], values[1]] : undefined;
}

function sizeProblem({width, height, tileWidth, tileHeight, tileCount}: PageInfo): string | undefined {
    const fits = (side: number) => side > 0 && side <= kMaxSide;
    if (!fits(width) || !fits(height) || width * height > kMaxPixels) return `The page is said to have ${width} x ${height} pixels.`;
    if (!fits(tileWidth) || !fits(tileHeight)) return `The page's tiles are said to have ${tileWidth} x ${tileHeight} pixels.`;
    if (tileCount > kMaxTiles) return `The page has ${tileCount} tiles, which is more than is read.`;
    return undefined;
}

async function kindProblem(image: TiffImage): Promise<string | undefined> {
    const compression = await number(image, TiffTag.Compression, 1);
    if (compression !== kGroup4)
        return `The page is compressed by ${kCompressions[compression] ?? `method ${compression}`}; only Group 4 is shown.`;
    if (await number(image, TiffTag.SamplesPerPixel, 1) !== 1 || await number(image, TiffTag.BitsPerSample, 1) !== 1)
        return 'The page has more than one bit a pixel.';
    return undefined;
}
