// site_test.mjs DIR: the documentation in a browser, from the disk: how wide its pages are on a phone,
// and what the search finds.

import assert from 'node:assert/strict';
import {readdirSync} from 'node:fs';
import {join, relative, resolve} from 'node:path';
import {after, test} from 'node:test';
import {pathToFileURL} from 'node:url';
import {closeBrowser, withPage} from '../../tools/viewer/tools/browser.js';

const site = resolve(process.argv[2]);
const phone = {viewport: {width: 390, height: 700}};
const address = (page) => String(pathToFileURL(join(site, page)));

// All pages of the site; files of the tree that are HTML themselves are copied beside theirs.
const files = readdirSync(site, {recursive: true, withFileTypes: true}).filter((entry) => entry.isFile())
  .map((entry) => relative(site, join(entry.parentPath ?? entry.path, entry.name)));
const pages = files.filter((name) => name.endsWith('.html') && !files.includes(`${name}.html`) &&
  name !== 'assets/viewer.html');

after(closeBrowser);

test('no page is wider than a phone', () => withPage(phone, async (page) => {
  assert.ok(pages.length > 100 && pages.includes('tools/heatmap/index.html'));
  for (const name of pages) {
    await page.goto(address(name));
    const {width, culprits} = await page.evaluate(() => ({
      width: document.documentElement.scrollWidth,
      culprits: [...document.body.querySelectorAll('*')].filter((element) =>
        element.getBoundingClientRect().right > innerWidth && !element.closest('pre, .table'))
        .map((element) => `${element.tagName} ${element.textContent.trim().slice(0, 40)}`),
    }));
    assert.ok(width <= 390 && culprits.length === 0, `${name} is ${width} wide: ${culprits.join('; ')}`);
  }
}));

// What is typed, on which page, and the page that comes first.
const searches = [
  ['quorWeld tolerance', 'docs/index.html', /^Reference: quorWeld/],
  ['isolines', 'index.html', /^Write and view/],
  ['mingw', 'bindings/python/index.html', /mingw|Windows/],
  ['STL part', 'docs/index.html', /^Get started/],
  ['colour bytes', 'docs/index.html', /^Write and view|^Reference/],
];

test('finds words without a server', () => withPage(phone, async (page) => {
  const errors = [];
  page.on('console', (message) => message.type() === 'error' && errors.push(message.text()));
  page.on('pageerror', (error) => errors.push(String(error)));
  for (const [words, from, first] of searches) {
    await page.goto(address(from));
    await page.keyboard.press('/');
    await page.keyboard.type(words);
    const found = await page.locator('#found a').allTextContents();
    assert.match(found[0], first, `${words}: ${found.join('; ')}`);
    const {left, right} = await page.evaluate(() => document.getElementById('found').getBoundingClientRect());
    assert.ok(left >= 0 && right <= 390);
    await page.keyboard.press('Enter');
    await page.waitForURL((url) => String(url) !== address(from));
    const text = (await page.textContent('body')).toLowerCase();
    assert.ok(words.toLowerCase().split(' ').every((word) => text.includes(word)));
  }
  await page.goto(address('index.html'));
  const find = async (words) => {
    await page.fill('#search', words);
    return page.locator('#found a').allTextContents();
  };
  const ramps = await find('colour ramp');
  assert.ok(ramps.length > 0);
  assert.deepEqual(await find('color ramp'), ramps);
  await page.fill('#search', 'nowhere-to-be-found');
  assert.match(await page.textContent('#found'), /Nothing has all/);
  assert.deepEqual(errors, []);
}));
