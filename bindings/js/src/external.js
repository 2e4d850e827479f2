// The package with its WebAssembly as a file of its own, for strict content-security policies and for
// bundlers that handle files.
import {instantiateQuor} from './quor.js';

export {QuorError, Reason, Status} from './errors.js';

/** Loads the module from quor.wasm next to this package, or from the address or bytes that are given. */
export async function load(source = new URL('../quor.wasm', import.meta.url)) {
  return instantiateQuor(source instanceof URL || typeof source === 'string' ? fetch(source) : source);
}
