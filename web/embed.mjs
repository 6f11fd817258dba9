// Puts a page into the viewer, which then opens with it: embed.mjs VIEWER.html FILE.tif OUT.html
import {readFile, writeFile} from 'node:fs/promises';
import {basename} from 'node:path';

const [viewer, file, out] = process.argv.slice(2);
const name = basename(file).replace(/[&"<>]/g, (c) => `&#${c.charCodeAt(0)};`);
const page = `<script type="image/tiff" id="embedded-page" data-name="${name}">${await readFile(file, 'base64')}</script>`;
await writeFile(out, (await readFile(viewer, 'utf8')).replace('<!--PAGE-->', () => page));
