// What the worker does, for programs and tests without workers.
export {CodedPage} from './coded-page';
export {PageError} from './errors';
export {Module} from './module';
export {BlobSource, HttpSource} from './source';
export {readDirectories, readLayout} from './tiff';
