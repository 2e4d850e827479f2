// page.js HTML: makes the viewer one page that needs nothing else, from template.html: style, program
// with the parts of three.js that it uses, their licence, and the usual ramp.

import {createHash} from 'node:crypto';
import {readFileSync, writeFileSync} from 'node:fs';
import {buildSync} from 'esbuild';

const folder = new URL('..', import.meta.url);
const read = (name) => readFileSync(new URL(name, folder), 'utf8').trimEnd();

const {outputFiles: [script]} = buildSync({
  absWorkingDir: folder.pathname,
  entryPoints: ['main.js'],
  bundle: true,
  minify: true,
  format: 'iife',
  target: 'es2022',
  charset: 'utf8',
  legalComments: 'inline',
  loader: {'.PNG': 'dataurl'},
  write: false,
});
if (/<\/script|<!--/i.test(script.text)) {
  throw new Error('the program would end its own script element');
}
const parts = {
  licence: read('node_modules/three/LICENSE').replaceAll('\r', ''),
  style: read('viewer.css'),
  script: script.text.trimEnd(),
};
const template = read('template.html');

// What a Content Security Policy calls the content of an element: that of its one part in the template,
// with the white space around it.
function hashOf(name) {
  const [, before, after] = template.match(new RegExp(`<${name}>(\\s*)\\{\\{${name}\\}\\}(\\s*)</${name}>`));
  return `'sha256-${createHash('sha256').update(before + parts[name] + after).digest('base64')}'`;
}

parts.scriptHash = hashOf('script');
parts.styleHash = hashOf('style');
const page = template.replace(/\{\{(\w+)\}\}/g, (_, name) => parts[name]);
writeFileSync(process.argv[2], `${page}\n`);
