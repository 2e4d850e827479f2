// page.js HTML: makes the viewer one page that needs nothing else, from template.html: style, program
// with the parts of three.js that it uses, their licence, and the usual ramp.

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
const page = read('template.html').replace(/\{\{(\w+)\}\}/g, (_, name) => parts[name]);
writeFileSync(process.argv[2], `${page}\n`);
