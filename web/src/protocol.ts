// What a file's worker is asked and answers.

import type {PlainError} from './errors';
import type {Cost, Damage, OnDamage, PageInfo, Progress, View} from './types';

export interface Calls {
    warm: {ask: {module: WebAssembly.Module}; answer: void};
    start: {ask: {module: WebAssembly.Module; source: Blob | string}; answer: PageInfo[]};
    open: {ask: {page: number}; answer: Cost};
    render: {ask: {page: number; view: View; onDamage: OnDamage; bitmap: boolean}; answer: Picture};
    verify: {ask: {page: number}; answer: Damage[]};
    close: {ask: {page: number}; answer: void};
}
export type CallName = keyof Calls;

export interface Picture {
    pixels: ImageData | ImageBitmap;
    damage: Damage[];
    cost: Cost;
}

/** Messages of one moment come together, as an array. */
export type ToWorker = {id: number} & ({call: 'cancel'} | {[N in CallName]: {call: N} & Calls[N]['ask']}[CallName]);

/** A fatal error ends the worker; a beat says that it is alive though nothing is finished. */
export type FromWorker =
    | {id: number; answer: unknown}
    | {id: number; error: PlainError}
    | {id: number; progress: Progress}
    | {fatal: PlainError}
    | {beat: true};
