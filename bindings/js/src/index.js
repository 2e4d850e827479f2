// The package with its WebAssembly inside: works from any bundler and from one file.
import {bytes} from './embedded.js';
import {instantiateQuor} from './quor.js';

export {QuorError, Reason, Status} from './errors.js';

/** Loads the module; once is enough. Another source, such as a compiled module, may be given. */
export async function load(source) {
  return instantiateQuor(source ?? bytes());
}
