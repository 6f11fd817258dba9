// The page's side of a worker: calls and answers, and an end for a worker that no longer answers.

import workerSource from 'embedded:worker';
import packedModule from 'embedded:module';
import {PageError} from './errors';
import type {CallName, Calls, FromWorker, ToWorker} from './protocol';
import type {OpenOptions, Progress} from './types';

const kTick = 250;        // ms
const kSlowAfter = 1500;
const kTimeLimit = 10000;

interface Pending {
    resolve(answer: unknown): void;
    reject(error: Error): void;
    onProgress?: (progress: Progress) => void;
}

/** The module, unpacked and compiled once for all files. */
let compiled: Promise<WebAssembly.Module> | undefined;
export const compiledModule = () => compiled ??= unpack(packedModule).then((bytes) => WebAssembly.compile(bytes));

async function unpack(base64: string): Promise<ArrayBuffer> {
    const bytes = Uint8Array.from(atob(base64), (c) => c.charCodeAt(0));
    return new Response(new Blob([bytes]).stream().pipeThrough(new DecompressionStream('gzip'))).arrayBuffer();
}

let workerUrl: string | undefined;
const startWorker = () =>
    new Worker(workerUrl ??= URL.createObjectURL(new Blob([workerSource], {type: 'text/javascript'})), {name: 'tilepress'});

/** A worker that runs already, for the next file. */
let spare: Worker | undefined;

/** Compiles the module and starts a worker ahead of the first file, which is then there sooner. */
export async function warmUp(): Promise<void> {
    const module = await compiledModule();
    if (spare) return;
    spare = startWorker();
    spare.onerror = () => { spare = undefined; };
    const message: ToWorker = {id: 0, call: 'warm', module};
    spare.postMessage([message]);
}

function takeWorker(): Worker {
    const worker = spare ?? startWorker();
    spare = undefined;
    return worker;
}

export class WorkerClient {
    private readonly worker = takeWorker();
    private outgoing: ToWorker[] = [];
    private readonly pending = new Map<number, Pending>();
    private next = 0;
    /** Ticks of waiting without a sign of life. A page in the background ticks slowly, and so waits longer. */
    private silent = 0;
    private ended: PageError | undefined;
    private readonly clock = setInterval(() => this.tick(), kTick);

    constructor(private readonly options: OpenOptions) {
        this.worker.onmessage = ({data}: MessageEvent<FromWorker>) => this.receive(data);
        this.worker.onerror = (event) => this.end(new PageError('internal', `The worker failed: ${event.message}`));
    }

    call<N extends CallName>(call: N, ask: Calls[N]['ask'], signal?: AbortSignal,
                             onProgress?: (progress: Progress) => void): Promise<Calls[N]['answer']> {
        if (this.ended) return Promise.reject(this.ended);
        if (signal?.aborted) return Promise.reject(new PageError('cancelled', 'The picture is no longer wanted.'));
        const id = ++this.next;
        signal?.addEventListener('abort', () => this.post({id, call: 'cancel'}), {once: true});
        return new Promise((resolve, reject) => {
            this.pending.set(id, {resolve: resolve as (answer: unknown) => void, reject, onProgress});
            this.post({...ask, id, call} as ToWorker);
        });
    }

    end(why: PageError): void {
        if (this.ended) return;
        this.ended = why;
        clearInterval(this.clock);
        this.worker.terminate();
        if (this.silent * kTick >= kSlowAfter) this.options.onSlow?.(false);
        for (const {reject} of this.pending.values()) reject(why);
        this.pending.clear();
    }

    private post(message: ToWorker): void {
        if (this.outgoing.push(message) > 1) return;
        queueMicrotask(() => {
            this.worker.postMessage(this.outgoing);
            this.outgoing = [];
        });
    }

    private receive(message: FromWorker): void {
        if (this.silent * kTick >= kSlowAfter) this.options.onSlow?.(false);
        this.silent = 0;
        if ('beat' in message) return;
        if ('fatal' in message) return this.end(PageError.fromPlain(message.fatal));
        const call = this.pending.get(message.id);
        if ('progress' in message) return call?.onProgress?.(message.progress);
        this.pending.delete(message.id);
        if ('error' in message) call?.reject(PageError.fromPlain(message.error));
        else call?.resolve(message.answer);
    }

    private tick(): void {
        if (!this.pending.size) this.silent = 0;
        else if (++this.silent * kTick === kSlowAfter) this.options.onSlow?.(true);
        const limit = this.options.timeLimit ?? kTimeLimit;
        if (this.silent * kTick > limit)
            this.end(new PageError('limit', `The file was given up after ${Math.round(limit / 1000)} seconds of work without an end.`));
    }
}
