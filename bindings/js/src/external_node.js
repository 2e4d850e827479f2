// The same for Node.js, which does not fetch files.
import {readFile} from 'node:fs/promises';
import {instantiateQuor} from './quor.js';

export {QuorError, Reason, Status} from './errors.js';

/** Loads the module from quor.wasm next to this package, or from the address or bytes that are given. */
export async function load(source = new URL('../quor.wasm', import.meta.url)) {
  if (typeof source === 'string' && /^https?:/.test(source)) {
    return instantiateQuor(fetch(source));
  }
  return instantiateQuor(source instanceof URL || typeof source === 'string' ? await readFile(source) : source);
}
