export * from './index.js';
import type {Quor, Source} from './index.js';

/** Loads the module from `quor.wasm` next to this package, or from an address or bytes. */
export declare function load(source?: Source | URL | string): Promise<Quor>;
