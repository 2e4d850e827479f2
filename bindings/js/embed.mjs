// embed.mjs QUOR.WASM: puts the module into the package, as a file and inside a script.
import {copyFileSync, readFileSync, writeFileSync} from 'node:fs';

const here = new URL('.', import.meta.url);
const text = readFileSync(process.argv[2]).toString('base64');
copyFileSync(process.argv[2], new URL('quor.wasm', here));
writeFileSync(new URL('src/embedded.js', here), `// Made by embed.mjs.
const text = '${text}';

/** The bytes of quor.wasm. */
export function bytes() {
  return Uint8Array.from(atob(text), (letter) => letter.charCodeAt(0));
}
`);
