// TIFF files for tests, with directories that say what a test wants.

const tags = {
    ImageWidth: 256, ImageLength: 257, BitsPerSample: 258, Compression: 259, Photometric: 262, SamplesPerPixel: 277, StripOffsets: 273, Orientation: 274,
    RowsPerStrip: 278, StripByteCounts: 279, TileWidth: 322, TileLength: 323, TileOffsets: 324, TileByteCounts: 325,
};

/** Rows without a change: a bit each, and an end-of-block. */
export function blankTile(rows) {
    const bytes = new Uint8Array(Math.ceil((rows + 24) / 8));
    for (let k = 0; k < rows; ++k) bytes[k >> 3] |= 0x80 >> (k & 7);
    for (const k of [rows + 11, rows + 23]) bytes[k >> 3] |= 0x80 >> (k & 7);
    return bytes;
}

/** A little-endian file: a directory behind the header, its long values, and the data. A field may be a function of where
 *  the data begin. */
export function tiff(fields, data = new Uint8Array(), {next = 0, gap = 0} = {}) {
    const valuesAt = (value, start) => [typeof value === 'function' ? value(start) : value].flat();
    const entries = Object.entries(fields).map(([name, value]) => ({tag: tags[name], value, count: valuesAt(value, 0).length}))
        .sort((a, b) => a.tag - b.tag);
    const directory = 8, beyond = directory + 2 + 12 * entries.length + 4;
    let start = beyond;
    for (const entry of entries)
        if (entry.count > 1) [entry.at, start] = [start, start + 4 * entry.count];
    start += gap;
    const bytes = new Uint8Array(start + data.length);
    const view = new DataView(bytes.buffer);
    bytes.set([0x49, 0x49, 42, 0, directory]);
    view.setUint16(directory, entries.length, true);
    entries.forEach(({tag, value, count, at}, k) => {
        const entry = directory + 2 + 12 * k;
        view.setUint16(entry, tag, true);
        view.setUint16(entry + 2, 4, true);  // long
        view.setUint32(entry + 4, count, true);
        if (at) view.setUint32(entry + 8, at, true);
        valuesAt(value, start).forEach((number, n) => view.setUint32((at ?? entry + 8) + 4 * n, number, true));
    });
    view.setUint32(beyond - 4, next, true);
    bytes.set(data, start);
    return bytes;
}

/** One blank strip of 64 x 64 pixels, changed by `fields`. */
export const blankPage = (fields = {}, options) => tiff({
    ImageWidth: 64, ImageLength: 64, Compression: 4, Photometric: 0, StripOffsets: (start) => start, RowsPerStrip: 64,
    StripByteCounts: blankTile(64).length, ...fields,
}, blankTile(64), options);

/** Files that claim what they do not hold, and what opening or drawing them must fail with. */
export const hostile = {
    'no TIFF': [new TextEncoder().encode('%PDF-1.7 and so on'), 'not-tiff'],
    'nothing': [new Uint8Array(), 'not-tiff'],
    'a header alone': [blankPage().slice(0, 8), 'not-tiff'],
    'a directory cut off': [blankPage().slice(0, 40), 'not-tiff'],
    'a directory outside the file': [Uint8Array.of(0x49, 0x49, 42, 0, 0xf0, 0xff, 0xff, 0xff), 'not-tiff'],
    'no pixels': [blankPage({ImageWidth: 0}), 'unsupported'],
    'the largest sides': [blankPage({ImageWidth: 2 ** 32 - 1, ImageLength: 2 ** 32 - 1}), 'unsupported'],
    'too many pixels': [blankPage({ImageWidth: 2 ** 20, ImageLength: 2 ** 20}), 'unsupported'],
    'tiles without a side': [blankPage({TileWidth: 0, TileLength: 16}), 'unsupported'],
    'a tile a pixel': [blankPage({ImageWidth: 2 ** 16, ImageLength: 2 ** 16, TileWidth: 1, TileLength: 1}), 'unsupported'],
    'fewer tiles than the page has': [blankPage({RowsPerStrip: 1}), 'not-tiff'],
    'more codes than are read': [blankPage({StripByteCounts: 2 ** 31}), 'limit'],
    'another compression': [blankPage({Compression: 5}), 'unsupported'],
    'colour': [blankPage({SamplesPerPixel: 3}), 'unsupported'],
};

/** Costs half a minute or more from 100,000 bytes: every tile names the same codes, of very many rows. */
export function endless() {
    const count = 7000, rows = 2 ** 16, data = blankTile(rows);
    return tiff({
        ImageWidth: 16 * count, ImageLength: rows, Compression: 4, Photometric: 0, TileWidth: 16, TileLength: rows,
        TileOffsets: (start) => new Array(count).fill(start), TileByteCounts: new Array(count).fill(data.length),
    }, data);
}
