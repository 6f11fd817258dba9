// The viewer: files in, the page on the stage, and everything around it.

import {openFile, PageError, warmUp, type FileLike, type Mode, type Page, type Progress, type TiffFile} from '../src/index';
import {aboutPage, Figures, resolutionText, showDamage, thousands} from './panel';
import {Stage} from './stage';

const element = <E extends HTMLElement = HTMLElement>(id: string) => document.getElementById(id) as E;

interface Opened {
    file: TiffFile;
    name: string;
    bytes?: number;
    page?: Page;
    figures?: Figures;
}
let current: Opened | undefined;
let opening: AbortController | undefined;

const stage = new Stage(element('page'), (error) => fail(error));

// --- telling -------------------------------------------------------------------------

/** Also read out by screen readers. */
function tell(text: string): void { element('status').textContent = text; }

function fail(error: Error | string): void {
    const text = typeof error === 'string' ? error : error.message;
    element('error').querySelector('p')!.textContent = text;
    element('error').hidden = false;
    element('progress').hidden = true;
    if (document.body.dataset['state'] === 'opening') document.body.dataset['state'] = current?.page ? 'shown' : 'empty';
}

function showProgress({phase, done, total}: Progress): void {
    const bar = element<HTMLProgressElement>('progress');
    bar.hidden = done >= total;
    if (phase === 'reading') bar.value = done / total;
    else bar.removeAttribute('value');
    if (!bar.hidden) tell({reading: 'Reading', preparing: 'Laying the page out', checking: 'Checking the page'}[phase]);
}

function describe(): void {
    const {page, file, name} = current!;
    const {width, height, index} = page!.info;
    const where = file.pages.length > 1 ? `, page ${index + 1} of ${file.pages.length}` : '';
    const damage = page!.damage.size ? ` ${page!.damage.size} damaged tile${page!.damage.size > 1 ? 's' : ''}.` : '';
    tell(`${name}${where}: ${thousands(width)} x ${thousands(height)} pixels, ${resolutionText(page!.info)}.${damage}`);
    stage.viewer.canvas.setAttribute('aria-label', `${name}${where}, at ${zoomText()}`);
}

const zoomText = () => {
    const percent = 100 * stage.scale;
    return `${percent < 10 ? percent.toFixed(1) : Math.round(percent)} %`;
};

// --- opening -------------------------------------------------------------------------

async function open(from: FileLike, name: string, bytes?: number): Promise<void> {
    opening?.abort();
    const abort = opening = new AbortController();
    const began = performance.now();
    element('error').hidden = true;
    document.body.dataset['state'] = 'opening';
    tell(`Opening ${name}`);
    try {
        const file = await openFile(from, {signal: abort.signal, onProgress: showProgress,
                                           onSlow: (slow) => { element('slow').hidden = !slow; }});
        const opened: Opened = {file, name, bytes};
        try {
            await showPage(opened, 0, began);
        } catch (error) {
            file.close();
            throw error;
        }
    } catch (error) {
        if (abort === opening) fail(new PageError('internal', `${name}: ${(error as Error).message}`));
    }
}

/** The page takes the place of the one that is shown, which stays if this one cannot be opened. */
async function showPage(opened: Opened, index: number, began = performance.now()): Promise<void> {
    const page = await opened.file.openPage(index);
    if (current !== opened) current?.file.close();
    else opened.page?.close();
    current = opened;
    opened.page = page;
    const figures = opened.figures = new Figures(page, began);
    page.onCost = (cost) => figures.drawn(cost);
    page.onDamage = (damage) => {
        stage.mark(damage);
        showDamage(page, (where) => stage.goTo(where));
        describe();
    };
    stage.onComplete = () => {
        document.body.dataset['firstView'] = figures.complete().toFixed(1);
        document.body.dataset['state'] = 'shown';
        element('progress').hidden = true;
        describe();
    };
    aboutPage(opened.name, opened.bytes, page.info);
    showDamage(page, (where) => stage.goTo(where));
    element<HTMLInputElement>('number').value = String(index + 1);
    element('count').textContent = `of ${opened.file.pages.length}`;
    element('pager').hidden = opened.file.pages.length < 2;
    for (const [action, end] of [['previous', 0], ['next', opened.file.pages.length - 1]] as const)
        for (const button of buttons(action)) button.disabled = index === end;
    document.title = element('title').textContent = `${opened.name} - Tilepress viewer`;
    document.body.dataset['state'] = 'shown';
    document.body.dataset['page'] = String(index + 1);
    stage.show(page);
}

async function goToPage(index: number): Promise<void> {
    if (!current || !(index >= 0 && index < current.file.pages.length)) return resetNumber();
    try {
        await showPage(current, index);
    } catch (error) {
        fail(error as Error);
        resetNumber();
    }
}
function resetNumber(): void {
    if (current?.page) element<HTMLInputElement>('number').value = String(current.page.info.index + 1);
}

// --- actions -------------------------------------------------------------------------

interface Action {
    label: string;
    icon?: string;
    keys?: string[];
    /** Needs no page. */
    free?: boolean;
    run(): void;
}
const turnPage = (by: number) => () => void goToPage((current?.page?.info.index ?? 0) + by);
const actions: Record<string, Action> = {
    open: {label: 'Open a file', keys: ['o'], free: true, run: () => element<HTMLInputElement>('file').click()},
    address: {label: 'Open an address', keys: ['u'], free: true, run: () => element<HTMLDialogElement>('address').showModal()},
    previous: {label: 'Previous page', icon: 'previous', keys: ['PageUp'], run: turnPage(-1)},
    next: {label: 'Next page', icon: 'next', keys: ['PageDown'], run: turnPage(1)},
    in: {label: 'Zoom in', icon: 'plus', keys: ['+', '='], run: () => stage.zoom(1)},
    out: {label: 'Zoom out', icon: 'minus', keys: ['-'], run: () => stage.zoom(-1)},
    fit: {label: 'Whole page', icon: 'fit', keys: ['0', 'Home'], run: () => stage.fit()},
    actual: {label: 'Every pixel (100 %)', keys: ['1'], run: () => { stage.scale = 1; }},
    left: {label: 'Turn left', icon: 'turn', keys: ['l', 'R'], run: () => stage.turn(-1)},
    right: {label: 'Turn right', icon: 'turn', keys: ['r'], run: () => stage.turn(1)},
    mirror: {label: 'Mirror', icon: 'mirror', keys: ['m'], run: () => { stage.mirror(); press('mirror', stage.viewer.viewport.getFlip()); }},
    invert: {label: 'Invert', icon: 'invert', keys: ['i'], run: () => press('invert', element('page').classList.toggle('inverted'))},
    info: {label: 'About this page', icon: 'info', keys: ['p'], run: () => {
        const panel = element('panel');
        panel.hidden = !panel.hidden;
        press('info', !panel.hidden);
    }},
    full: {label: 'Full screen', icon: 'full', keys: ['f'], free: true, run: () => {
        void (document.fullscreenElement ? document.exitFullscreen() : document.documentElement.requestFullscreen());
    }},
    help: {label: 'Keys', icon: 'help', keys: ['?'], free: true, run: () => element<HTMLDialogElement>('keys').showModal()},
    check: {label: 'Check the whole page', run: () => void checkPage()},
    stop: {label: 'Stop', free: true, run: () => {
        element('slow').hidden = true;
        opening?.abort();
        current?.file.close();
        fail('The page was given up.');
    }},
    dismiss: {label: 'Dismiss', icon: 'close', free: true, run: () => { element('error').hidden = true; }},
    cancel: {label: 'Cancel', free: true, run: () => element<HTMLDialogElement>('address').close()},
};
const moves: Record<string, [number, number]> = {ArrowLeft: [-.15, 0], ArrowRight: [.15, 0], ArrowUp: [0, -.15], ArrowDown: [0, .15]};

const buttons = (action: string) => document.querySelectorAll<HTMLButtonElement>(`[data-action="${action}"]`);
function press(action: string, pressed: boolean): void {
    for (const button of buttons(action)) button.setAttribute('aria-pressed', String(pressed));
    tell(`${actions[action]!.label}: ${pressed ? 'on' : 'off'}`);
}

async function checkPage(): Promise<void> {
    const page = current!.page!;
    try {
        const found = await page.verify();
        tell(found.length ? `${found.length} damaged tile${found.length > 1 ? 's' : ''} found.` : 'Every row can be decoded.');
    } catch (error) {
        fail(error as Error);
    }
}

function perform(name: string): void {
    const action = actions[name]!;
    if (action.free || current?.page) action.run();
}

for (const [name, {label, icon, keys}] of Object.entries(actions))
    for (const button of buttons(name)) {
        if (icon) button.innerHTML = `<svg aria-hidden="true"><use href="#${icon}"/></svg>`;
        if (!button.textContent?.trim()) button.setAttribute('aria-label', label);
        button.title = keys ? `${label} (${keys[0]})` : label;
        button.onclick = () => perform(name);
    }
buttons('actual').forEach((button) => button.setAttribute('aria-label', 'Every pixel, 100 %'));

element('key-list').replaceChildren(...[...Object.values(actions).filter(({keys}) => keys), {label: 'Move', keys: ['Arrows']}].flatMap(({label, keys}) => {
    const term = document.createElement('dt'), value = document.createElement('dd');
    term.append(...keys!.flatMap((key, k) => [k ? ' ' : '', Object.assign(document.createElement('kbd'), {textContent: key})]));
    value.textContent = label;
    return [term, value];
}));

addEventListener('keydown', (event) => {
    const target = event.target as HTMLElement;
    if (event.ctrlKey || event.metaKey || event.altKey || target.closest('input, select, dialog')) return;
    const move = moves[event.key];
    if (move && current?.page) stage.pan(...move);
    else {
        const name = Object.keys(actions).find((key) => actions[key]!.keys?.includes(event.key));
        if (!name) return;
        perform(name);
    }
    event.preventDefault();
});

// --- files in ------------------------------------------------------------------------

const openChosen = (file: File | undefined) => { if (file) void open(file, file.name, file.size); };
const chooser = element<HTMLInputElement>('file');
chooser.onchange = () => {
    openChosen(chooser.files?.[0]);
    chooser.value = '';
};
addEventListener('dragover', (event) => {
    event.preventDefault();
    document.body.classList.add('dropping');
});
addEventListener('dragleave', (event) => { if (!event.relatedTarget) document.body.classList.remove('dropping'); });
addEventListener('drop', (event) => {
    event.preventDefault();
    document.body.classList.remove('dropping');
    openChosen(event.dataTransfer?.files[0]);
});

const number = element<HTMLInputElement>('number');
number.onchange = () => void goToPage(Number(number.value) - 1);
element<HTMLSelectElement>('mode').onchange = ({target}) => {
    stage.mode = (target as HTMLSelectElement).value as Mode;
    if (current?.page) stage.redraw();
};
stage.onMove = () => {
    element('zoom').textContent = zoomText();
    stage.viewer.canvas.setAttribute('aria-label', `${current!.name}, at ${zoomText()}`);
};
stage.viewer.canvas.setAttribute('role', 'img');
stage.viewer.canvas.setAttribute('aria-label', 'No page is open');

// What an address may be fetched was settled when the viewer was loaded, so another one loads it anew.
element<HTMLDialogElement>('address').onclose = () => {
    if (element<HTMLDialogElement>('address').returnValue === 'open') location.hash = new URLSearchParams({url: element<HTMLInputElement>('url').value}).toString();
};
addEventListener('hashchange', () => location.reload());

const address = new URLSearchParams(location.hash.slice(1)).get('url');
const embedded = document.getElementById('embedded-page');
if (address) {
    void open(address, address.split(/[?#]/)[0]!.split('/').pop() || address);
} else if (embedded) {
    const bytes = Uint8Array.from(atob(embedded.textContent!.trim()), (c) => c.charCodeAt(0));
    void open(bytes, embedded.dataset['name'] ?? 'page', bytes.length);
} else {
    void warmUp();
}

// For the console, and for tests.
Object.assign(globalThis, {tilepress: {stage, open, page: () => current?.page}});
