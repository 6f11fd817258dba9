export {PageError, type ErrorCode} from './errors';
export {warmUp} from './worker-client';
export {openFile, openPage, Page, TiffFile, type FileLike, type RenderOptions} from './file';
export {tileSource, type TileSourceOptions} from './tile-source';
export {damageText, type Cost, type Damage, type DamageKind, type Mode, type OnDamage, type OpenOptions, type PageInfo, type Progress, type View} from './types';
