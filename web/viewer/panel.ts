// What is told about a page in words and figures.

import {damageText, type Cost, type Damage, type Page, type PageInfo} from '../src/index';

const element = (id: string) => document.getElementById(id)!;

export const thousands = (value: number) => value.toLocaleString('en', {maximumFractionDigits: 0});
export const sizeText = (bytes: number) => bytes < 1e5 ? `${thousands(bytes)} bytes` : `${(bytes / 1e6).toFixed(2)} MB`;

function list(id: string, rows: [string, string][]): void {
    element(id).replaceChildren(...rows.flatMap(([term, value]) => [
        Object.assign(document.createElement('dt'), {textContent: term}),
        Object.assign(document.createElement('dd'), {textContent: value}),
    ]));
}

export function resolutionText({resolution}: PageInfo): string {
    if (!resolution) return 'not said';
    const [x, y] = resolution.map((value) => Math.round(value * 10) / 10);
    return x === y ? `${x} dpi` : `${x} x ${y} dpi`;
}

export function aboutPage(name: string, fileBytes: number | undefined, info: PageInfo): void {
    const {width, height, resolution, layout, tileWidth, tileHeight, tileCount} = info;
    const rows: [string, string][] = [['File', name]];
    if (fileBytes !== undefined) rows.push(['Bytes', sizeText(fileBytes)]);
    rows.push(['Size', `${thousands(width)} x ${thousands(height)}`]);
    rows.push(['Resolution', resolutionText(info)]);
    if (resolution)
        rows.push(['On paper', `${Math.round(width / resolution[0] * 25.4)} x ${Math.round(height / resolution[1] * 25.4)} mm`]);
    rows.push(['Layout', tileCount === 1 ? 'one strip'
        : layout === 'tiles' ? `${thousands(tileCount)} tiles of ${tileWidth} x ${tileHeight}`
        : `${thousands(tileCount)} strips of ${tileHeight} rows`]);
    rows.push(['Coding', `Group 4${info.fillOrder === 2 ? ', low bit first' : ''}${info.blackIsZero ? ', black is zero' : ''}`]);
    list('about', rows);
}

/** Figures of the tiles drawn of one page. */
export class Figures {
    private tiles = 0;
    private ms = 0;
    private first?: number;
    constructor(private readonly page: Page, private readonly began: number) { this.tell(); }

    drawn({ms}: Cost): void {
        ++this.tiles;
        this.ms += ms;
        this.tell();
    }
    complete(): number {
        this.first ??= performance.now() - this.began;
        this.tell();
        return this.first;
    }
    private tell(): void {
        const {ms, memory, read} = this.page.cost;
        list('figures', [
            ['First view', this.first === undefined ? '' : `${thousands(this.first)} ms`],
            ['Last tile', this.tiles ? `${ms.toFixed(1)} ms` : ''],
            ['A tile', this.tiles ? `${(this.ms / this.tiles).toFixed(1)} ms of ${thousands(this.tiles)}` : ''],
            ['Memory', sizeText(memory)],
            ['Read', sizeText(read)],
        ]);
    }
}

export function showDamage(page: Page, goTo: (damage: Damage) => void): void {
    element('damage-none').hidden = page.damage.size > 0;
    element('damage').replaceChildren(...[...page.damage.values()].map((damage) => {
        const button = Object.assign(document.createElement('button'), {type: 'button', textContent: damageText(damage)});
        button.onclick = () => goTo(damage);
        const item = document.createElement('li');
        item.append(button);
        return item;
    }));
}
