// viewer_test.js DIR OBJ: the viewer on the result of the demo, which heatmap wrote into DIR with
// --html, on small results that are spoilt, and from the disk without a server.

import assert from 'node:assert/strict';
import {spawnSync} from 'node:child_process';
import {copyFileSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import {request} from 'node:http';
import {tmpdir} from 'node:os';
import {join, resolve} from 'node:path';
import {after, test} from 'node:test';
import {fileURLToPath, pathToFileURL} from 'node:url';
import {closeBrowser, opened, withPage, withViewer} from './browser.js';

const directory = resolve(process.argv[2]);
const objName = process.argv[3];
const root = fileURLToPath(new URL('../../..', import.meta.url));
const mtlName = objName.replace('.obj', '.mtl');
const jsonName = objName.replace('.obj', '.json');
const HOT = [253, 231, 37];  // left end of the ramp
const COLD = [68, 1, 84];
const LEAST = 200;  // pixels that show a colour
const size = {viewport: {width: 480, height: 360}};
const ABOVE = 'direction=0.2,-1,1.5';
const BOTH_ENDS = 'direction=1,-1.4,-0.8';  // of the demo
const count = (obj, word) => obj.split('\n').filter((line) => line.startsWith(`${word} `)).length;

// A strip of squares along x, a third of it hot and a third cold, as an OBJ like those of the library.
const SQUARES = 30;
const plate = [`mtllib ${mtlName}`,
  ...Array.from({length: 2 * SQUARES + 2}, (_, i) => `v ${i >> 1} ${10 * (i & 1)} 0\nvt ${
    Math.min(Math.max((i >> 1) * 3 / SQUARES - 1, 0), 1)} 0.5`), 'usemtl Heat',
  ...Array.from({length: 2 * SQUARES}, (_, i) => (i & 1 ? [i + 2, i + 1, i + 3] : [i + 1, i + 2, i + 3])
    .map((k) => `${k}/${k}`)).map((corners) => `f ${corners.join(' ')}`), ''].join('\n');

// How many pixels of the 3D view have exactly these colours, and where their middle is.
async function pixels(page, colours) {
  const png = (await page.locator('#view').screenshot()).toString('base64');
  return page.evaluate(async ([base64, wanted]) => {
    const bytes = await (await fetch(`data:image/png;base64,${base64}`)).blob();
    const image = await createImageBitmap(bytes);
    const context = new OffscreenCanvas(image.width, image.height).getContext('2d');
    context.drawImage(image, 0, 0);
    const {data} = context.getImageData(0, 0, image.width, image.height);
    const box = document.getElementById('view').getBoundingClientRect();
    return wanted.map((colour) => {
      const found = [];
      for (let i = 0; i < data.length; i += 4) {
        if (colour.every((value, channel) => Math.abs(data[i + channel] - value) <= 2)) {
          found.push(i / 4);
        }
      }
      const mean = (coordinate) => found.reduce((sum, at) => sum + coordinate(at), 0) / found.length;
      return {count: found.length, x: box.x + mean((at) => at % image.width),
        y: box.y + mean((at) => Math.floor(at / image.width))};
    });
  }, [png, colours]);
}

async function requireDemo(page) {
  assert.equal(await opened(page), 'ready');
  assert.equal(await page.textContent('#message'), '');
  const text = readFileSync(join(directory, objName), 'utf8');
  const status = (await page.textContent('#status')).replaceAll(',', '');
  assert.equal(status, `${objName}: ${count(text, 'v')} vertices ${count(text, 'f')} triangles`);
  await page.uncheck('#shading');
  const [hot, cold] = await pixels(page, [HOT, COLD]);
  assert.ok(hot.count > LEAST, `${hot.count} pixels are as hot as it gets`);
  assert.ok(cold.count > LEAST, `${cold.count} pixels are as cold as it gets`);
  return [hot, cold];
}

// What is said of the value there; '' for nothing.
async function probed(page, {x, y}) {
  await page.mouse.move(x, y);
  await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => setTimeout(done))));
  return await page.isVisible('#probe') ? page.textContent('#probe') : '';
}

// All that the page reports, but that there is no JSON beside an OBJ, which is as good.
function reportErrors(page) {
  const errors = [];
  page.on('console', (message) => message.type() === 'error' &&
    !message.location().url.endsWith('.json') && errors.push(message.text()));
  page.on('pageerror', (error) => errors.push(String(error)));
  return errors;
}

// A directory with one result per case, in which a small part is changed by change(file), which tells
// where its files are.
function resultsOf(t, cases) {
  const results = mkdtempSync(join(tmpdir(), 'viewer-'));
  t.after(() => rmSync(results, {recursive: true}));
  for (const {name, change} of cases) {
    mkdirSync(join(results, name));
    copyFileSync(join(directory, mtlName), join(results, name, mtlName));
    copyFileSync(join(directory, 'viridis.PNG'), join(results, name, 'viridis.PNG'));
    writeFileSync(join(results, name, objName), plate);
    change((file) => join(results, name, file));
  }
  return results;
}

after(closeBrowser);

test('the page is made of what lies beside it', (t) => {
  const folder = mkdtempSync(join(tmpdir(), 'viewer-'));
  t.after(() => rmSync(folder, {recursive: true}));
  const made = join(folder, 'viewer.html');
  assert.equal(spawnSync(join(root, 'scripts/steps/viewer_page'), [made]).status, 0);
  assert.ok(readFileSync(made).equals(readFileSync(join(root, 'assets/viewer.html'))),
    'make assets/viewer.html again: scripts/steps/viewer_page');
});

test('opens the demo by address and shows both ends', () =>
  withViewer(directory, size, async (page, address) => {
    const errors = reportErrors(page);
    const seen = async () => (await pixels(page, [COLD]))[0].count;
    await page.goto(`${address}?obj=${objName}&high=100%20°C&low=low`);
    const [, {count: before}] = await requireDemo(page);
    assert.equal(await page.innerText('#legend'), '100 °C\nlow');
    const ends = await page.evaluate(() => {
      const bar = document.getElementById('bar');
      const at = (y) => [...bar.getContext('2d').getImageData(0, y, 1, 1).data.slice(0, 3)];
      return [at(0), at(bar.height - 1)];
    });
    const near = (a, b) => Math.hypot(...a.map((value, i) => value - b[i])) < 6;
    assert.ok(near(ends[0], HOT) && near(ends[1], COLD), `the bar goes from ${ends.join(' to ')}`);

    await page.check('#wireframe');
    assert.ok(await seen() < before / 2, 'edges are drawn over the surface');
    await page.uncheck('#wireframe');
    const lines = await page.locator('#view').screenshot();
    await page.uncheck('#isolines');
    assert.ok(!lines.equals(await page.locator('#view').screenshot()), 'isolines can be seen');
    await page.mouse.move(200, 160);
    await page.mouse.down();
    await page.mouse.move(300, 100, {steps: 4});
    await page.mouse.up();
    assert.notEqual(await seen(), before, 'dragging turns the part');
    await page.click('#fit');
    assert.equal(await seen(), before, 'fit goes back');
    assert.deepEqual(errors, []);
  }));

// A flat box of these lengths as an OBJ whose field goes along x.
function box(x, y, z) {
  const corners = [0, 1, 2, 3, 4, 5, 6, 7].map((k) => [k & 1, k >> 1 & 1, k >> 2]);
  const sides = [[0, 2, 3, 1], [4, 5, 7, 6], [0, 1, 5, 4], [2, 6, 7, 3], [0, 4, 6, 2], [1, 3, 7, 5]];
  return [`mtllib ${mtlName}`,
    ...corners.map((c) => `v ${c[0] * x} ${c[1] * y} ${c[2] * z}\nvt ${c[0]} 0.5`), 'usemtl Heat',
    ...sides.map((side) => `f ${side.map((k) => `${k + 1}/${k + 1}`).join(' ')}`), ''].join('\n');
}

test('guesses which axis is up, and can be told', async (t) => {
  const cases = [['plate', [50, 40, 3], 'z'], ['plate lying in x and z', [50, 3, 40], 'y'],
    ['tower', [10, 50, 10], 'z'], ['cube', [1, 1, 1], 'z'], ['block, hardly lower along y', [50, 40, 45], 'z']]
    .map(([name, lengths, up]) => ({name, up,
      change: (file) => writeFileSync(file(objName), box(...lengths))}));
  const results = resultsOf(t, cases);
  await withViewer(results, size, async (page, address) => {
    for (const {name, up} of cases) {
      await page.goto(`${address}?obj=${encodeURIComponent(name)}/${objName}`);
      await opened(page);
      assert.equal(await page.textContent('#up'), `${up} up`, name);
    }
    await page.goto(`${address}?obj=tower/${objName}&up=y`);
    await opened(page);
    const standing = await page.locator('#view').screenshot();
    await page.click('#up');
    assert.equal(await page.textContent('#up'), 'z up');
    assert.ok(!standing.equals(await page.locator('#view').screenshot()));
  });
});

const POINTS = count(plate, 'v');
// Texture coordinates that keep clear of the ends of the ramp, as for a margin or a range that several
// results share: from from to to, and, as writers leave it, a triangle without area that has the ends.
const within = (from, to) => (file) => writeFileSync(file(objName),
  plate.replace(/^vt (\S+)/gm, (_, u) => `vt ${from + (to - from) * u}`)
    .replace(/^usemtl/m, 'v 0 0 0\nvt 0 0.5\nv 0 0 0\nvt 1 0.5\nusemtl') +
    `f 1/1 ${POINTS + 1}/${POINTS + 1} ${POINTS + 2}/${POINTS + 2}\n`);
const saying = (info, change = () => {}) => (file) => {
  change(file);
  writeFileSync(file(jsonName), typeof info === 'string' ? info : JSON.stringify(info));
};
const CELSIUS = {quor: 1, title: 'plate', field: 'temperature', unit: '°C', minimum: 20, maximum: 100};
// Legend, value where it is hottest and coldest, message. The ends of the ramp are found by colour.
const SHARES = ['share of the range', '1', '0'];
const scales = [
  ['no JSON', () => {}, SHARES, ['1', '0'], ''],
  ['JSON', saying(CELSIUS), ['temperature', '100 °C', '20 °C'], ['100 °C', '20 °C'], ''],
  ['JSON and margin', saying(CELSIUS, within(0.001, 0.999)), ['temperature', '100 °C', '20 °C'],
    ['100 °C', '20 °C'], ''],
  ['shared range', saying({...CELSIUS, minimum: -60}, within(0, 0.5)),
    ['temperature', '100 °C', '−60 °C'], ['100 °C'], ''],
  ['small numbers', saying({quor: 1, minimum: 1e-9, maximum: 3e-9}), ['3e-9', '1e-9'], ['3e-9', '1e-9'], ''],
  ['an error', saying({...CELSIUS, error: 0.3}), ['temperature', '100 °C', '20 °C', '± 0.3 °C'], ['100 °C'], ''],
  ['an error of many digits', saying({...CELSIUS, error: 0.031104}), ['temperature', '100 °C', '20 °C', '± 0.032 °C'],
    ['100 °C'], ''],
  ['an error that does not hold everywhere', saying({...CELSIUS, error: 20, errorExcept: 'within 2 of (1, 2, 3)'}),
    ['temperature', '100 °C', '20 °C', '± 20 °C *'], ['100 °C'], '* The error does not hold within 2 of (1, 2, 3).'],
  ['an error that is none', saying({...CELSIUS, error: '1e999'}), ['temperature', '100 °C', '20 °C'], ['100 °C'], ''],
  ['one of another program', saying({scale: 2}), SHARES, ['1', '0'], ''],
  ['a newer one', saying({...CELSIUS, quor: 2}), SHARES, ['1', '0'], 'for a newer viewer'],
  ['no numbers', saying({quor: 1, minimum: null}), SHARES, ['1', '0'], 'no minimum and maximum'],
  ['half a JSON', saying('{"quor": 1, "min'), SHARES, ['1', '0'], 'is damaged'],
];

test('says what the colours mean', async (t) => {
  const results = resultsOf(t, scales.map(([name, change]) => ({name, change})));
  await withViewer(results, size, async (page, address) => {
    for (const [name, , legend, values, words] of scales) {
      await t.test(name, async () => {
        await page.goto(`${address}?obj=${encodeURIComponent(name)}/${objName}&${ABOVE}`);
        assert.equal(await opened(page), 'ready');
        assert.ok((await page.textContent('#message')).includes(words));
        const shown = await Promise.all(['field', 'high', 'low', 'error'].map((id) => page.textContent(`#${id}`)));
        assert.deepEqual(shown.filter((part) => part), legend);
        assert.equal((await page.textContent('#status')).match(/\S+(?= triangles)/)[0].replace(',', ''),
          String(2 * SQUARES));
        await page.uncheck('#shading');
        const found = await pixels(page, [HOT, COLD]);
        for (const [i, value] of values.entries()) {
          assert.equal(await probed(page, found[i]), value);
        }
        assert.equal(await probed(page, {x: 5, y: 80}), '', 'nothing is there');
        if (name === 'shared range') {
          assert.deepEqual(await page.locator('.tick').allTextContents(),
            ['−40', '−20', '0', '20', '40', '60', '80']);
        }
      });
    }
    assert.deepEqual(await page.locator('.tick').allTextContents(),
      ['0.1', '0.2', '0.3', '0.4', '0.5', '0.6', '0.7', '0.8', '0.9']);
  });
});

test('opens dropped files, also one after the other', () =>
  withViewer(directory, size, async (page, address) => {
    const errors = reportErrors(page);
    const drop = (...names) => page.evaluate(async (list) => {
      const transfer = new DataTransfer();
      for (const name of list) {
        transfer.items.add(new File([await (await fetch(name)).blob()], name));
      }
      document.body.dataset.state = '';
      window.dispatchEvent(new DragEvent('drop', {dataTransfer: transfer}));
    }, names);
    await page.goto(`${address}?${BOTH_ENDS}`);
    await drop(objName, 'viridis.PNG');
    assert.equal(await opened(page), 'ready');
    assert.match(await page.textContent('#message'), new RegExp(`material file ${mtlName} is missing`));
    await drop(mtlName);
    await requireDemo(page);
    assert.deepEqual(errors, []);
  }));

// What is said of a result that is spoilt in one way, and whether it is shown all the same.
const spoilt = [
  ['no OBJ', (file) => rmSync(file(objName)), `${objName} is not there`, 'failed'],
  ['no MTL', (file) => rmSync(file(mtlName)), `material file ${mtlName} is missing`, 'ready'],
  ['no ramp', (file) => rmSync(file('viridis.PNG')), 'colour ramp viridis.PNG is missing', 'ready'],
  ['no image', (file) => writeFileSync(file('viridis.PNG'), 'x'), 'viridis.PNG is not an image', 'ready'],
  ['other material', (file) => writeFileSync(file(mtlName), 'newmtl Cold\n'), 'no material "Heat"', 'ready'],
  ['no mesh', (file) => copyFileSync(file('viridis.PNG'), file(objName)), 'holds no triangle', 'failed'],
  ['empty', (file) => writeFileSync(file(objName), ''), 'is empty', 'failed'],
  ['cut among the points', (file) => writeFileSync(file(objName), plate.slice(0, 500)),
    'has points but no triangle: it was cut short', 'failed'],
  ['cut among the triangles', (file) => writeFileSync(file(objName), plate.slice(0, -500).trimEnd()),
    'ends in the middle of a line: it was cut short', 'ready'],
  ['cut in the last number', (file) => writeFileSync(file(objName), plate.trimEnd().slice(0, -1)),
    'ends in the middle of a line: it was cut short', 'ready'],
  ['no texture',
    (file) => writeFileSync(file(objName), plate.replace(/^vt .*\n/gm, '').replace(/\/\d+/g, '')),
    'holds no field: it has no texture', 'ready'],
  ['bad corner', (file) => writeFileSync(file(objName), `${plate}f 1/1 2/2 999999999/1\n`),
    'is damaged', 'failed'],
  ['equal values', (file) => writeFileSync(file(objName), plate.replace(/^vt .*/gm, 'vt -nan 0.5')),
    'no field to show', 'ready'],
  ['one NaN', (file) => writeFileSync(file(objName), plate.replace(/^vt .*/m, 'vt nan 0.5')),
    'triangles have no value and are grey', 'ready'],
];

test('says what is wrong with files', async (t) => {
  const results = resultsOf(t, spoilt.map(([name, change]) => ({name, change})));
  await withViewer(results, {viewport: {width: 300, height: 300}}, async (page, address) => {
    const errors = reportErrors(page);
    for (const [name, , words, state] of spoilt) {
      await t.test(name, async () => {
        await page.goto(`${address}?obj=${encodeURIComponent(name)}/${objName}&${ABOVE}`);
        assert.equal(await opened(page), state);
        const message = await page.textContent('#message');
        assert.ok(message.includes(words), `said: ${message}`);
        if (name.startsWith('cut in the last')) {
          assert.match(await page.textContent('#status'), new RegExp(` ${2 * SQUARES - 1} triangles$`));
        }
      });
    }
    assert.deepEqual(errors.filter((error) => !error.includes('404')), []);
  });
});

// What a file from a stranger may hold, and what is shown of it all the same. Nothing of it may call another
// place, run, or stop the page.
const FOREIGN = 'quor.invalid';
const mtl = (line) => (file) => writeFileSync(file(mtlName), `newmtl Heat\n${line}\n`);
const obj = (text) => (file) => writeFileSync(file(objName), text);
const HTML = '<img src=x onerror=document.title=1>';
const hostile = [
  ['materials of another host', obj(plate.replace(mtlName, `//${FOREIGN}/a.mtl`)), 'not the plain name', 'ready'],
  ['materials of another scheme', obj(plate.replace(mtlName, `http://${FOREIGN}/a.mtl`)), 'not the plain', 'ready'],
  ['materials with backslashes', obj(plate.replace(mtlName, `\\\\${FOREIGN}\\a.mtl`)), 'not the plain', 'ready'],
  ['materials of another folder', obj(plate.replace(mtlName, `../other/${mtlName}`)), 'not the plain', 'ready'],
  ['materials in the folder above', obj(plate.replace(mtlName, '..')), 'not the plain name', 'ready'],
  ['materials that are encoded', obj(plate.replace(mtlName, '%2e%2e%2fother.mtl')), 'is missing', 'ready'],
  ['ramp of another host', mtl(`map_Kd //${FOREIGN}/a.png`), 'not the plain name', 'ready'],
  ['ramp with options', mtl(`map_Kd -s 2 2 2 -o 1 1 1 //${FOREIGN}/a.png`), 'not the plain name', 'ready'],
  ['ramp of another folder', mtl('map_Kd ../../viridis.PNG'), 'not the plain name', 'ready'],
  ['ramp as data', mtl('map_Kd data:image/png;base64,AAAA'), 'not the plain name', 'ready'],
  ['other maps of another host', mtl(`map_Ks //${FOREIGN}/a.png\nbump //${FOREIGN}/b.png`), 'with an image', 'ready'],
  ['names of prototypes', obj(plate.replace('usemtl Heat', 'usemtl __proto__')), 'no material "__proto__"', 'ready'],
  ['names of HTML', obj(plate.replace('usemtl Heat', `usemtl ${HTML}\no ${HTML}`)), HTML, 'ready'],
  ['a title of HTML', saying({...CELSIUS, title: HTML, field: HTML, unit: HTML}), '', 'ready'],
  ['words that are none', saying('{"quor": 1, "minimum": 0, "maximum": 1, "title": {"toString": 1},' +
    '"field": [{"valueOf": 0}], "unit": {"toString": null}, "error": {"valueOf": 1},' +
    '"errorExcept": {"toString": 1}}'), '', 'ready'],
  ['a range below the digits', saying({...CELSIUS, minimum: 1, maximum: 1 + 2 ** -52}), '', 'ready'],
  ['a range of large numbers', saying({...CELSIUS, minimum: 2 ** 60, maximum: 2 ** 60 + 256}), '', 'ready'],
  ['the widest range', saying({...CELSIUS, minimum: -1.7e308, maximum: 1.7e308}), '', 'ready'],
  ['the narrowest range', saying({...CELSIUS, minimum: 0, maximum: 5e-324}), '', 'ready'],
  ['numbers beyond all', saying('{"quor": 1, "minimum": -1e999, "maximum": 1e999}'), 'no minimum', 'ready'],
  ['a deep JSON', saying('['.repeat(1e6)), 'is damaged', 'ready'],
  ['a JSON of a prototype', saying('{"__proto__": {"quor": 1, "minimum": 0}, "quor": 1}'), 'no minimum', 'ready'],
  ['faces of no triangle', obj('v 0 0 0\nf 1\nf\nf 1 1\n'), 'holds no triangle', 'failed'],
  ['corners below the first', obj(`${plate}f -1 -99 -9999999\n`), 'is damaged', 'failed'],
  ['corners without numbers', obj(`${plate}f a/b c/d e/f\n`), 'is damaged', 'failed'],
  ['points without numbers', obj(`v\nv 0\nv a b c\n${plate}`), '', 'failed'],
  ['points beyond single precision', obj(plate.replace('v 0 0 0', 'v 1e300 0 0')), 'is damaged', 'failed'],
  ['points at the end of single precision', obj(plate.replace(/^v (\S+)/gm, 'v $1e37')), '', 'ready'],
  ['all points in one', obj(plate.replace(/^v .*/gm, 'v 1 1 1')), 'at one point', 'failed'],
  ['a face of many corners', obj(`${plate}f ${'1/1 2/2 3/3 '.repeat(5000)}\n`), '', 'ready'],
  ['two hundred materials', obj(plate + Array.from({length: 200}, (_, k) =>
    `o ${k}\nusemtl ${k}\nf 1/1 2/2 3/3\n`).join('')), '', 'ready'],
  ['a line of a megabyte', obj(`# ${'x'.repeat(1e6)}\n${plate}`), '', 'ready'],
  ['bytes that are no text', (file) => writeFileSync(file(objName),
    Buffer.concat([Buffer.from(plate), Buffer.from([0xff, 0xfe, 0, 0xc3, 10])])), '', 'ready'],
];

test('shows files of strangers and does nothing that they say', async (t) => {
  const results = resultsOf(t, hostile.map(([name, change]) => ({name, change})));
  copyFileSync(join(directory, 'viridis.PNG'), join(results, 'viridis.PNG'));
  mkdirSync(join(results, 'other'));
  copyFileSync(join(directory, mtlName), join(results, 'other', mtlName));
  await withViewer(results, {viewport: {width: 300, height: 300}}, async (page, address) => {
    const requests = [];
    const errors = [];
    page.on('request', (request) => requests.push(request.url()));
    page.on('pageerror', (error) => errors.push(String(error)));
    for (const [name, , words, state] of hostile) {
      await t.test(name, {timeout: 60000}, async () => {
        requests.length = 0;
        const folder = `${address}${encodeURIComponent(name)}/`;
        const start = `${address}?obj=${encodeURIComponent(name)}/${objName}`;
        await page.goto(start);
        assert.equal(await opened(page), state, await page.textContent('#message'));
        const message = await page.textContent('#message');
        assert.ok(message.includes(words), `said: ${message}`);
        assert.doesNotMatch(message, /undefined|null|NaN|Cannot|not a function|Error/);
        assert.doesNotMatch(await page.innerText('body'), /undefined|object Object/);
        assert.equal(await page.evaluate(() => document.querySelector('img')), null);
        assert.notEqual(await page.title(), '1');
        assert.deepEqual(requests.filter((url) => !/^(data|blob):/.test(url) &&
          !(url.startsWith(folder) && !url.slice(folder.length).includes('/')) && url !== start), []);
      });
    }
    await t.test('links with a view and a range that are none', async () => {
      const [[ordinary]] = hostile.filter(([, , words, state]) => words === '' && state === 'ready');
      const start = `${address}?obj=${encodeURIComponent(ordinary)}/${objName}`;
      for (const odd of ['up=__proto__', 'up=w', 'direction=1e999,0,0', 'direction=a,b,c', 'minimum=0&maximum=1e999',
        'minimum=-1e999&maximum=0', 'minimum=1&maximum=0']) {
        await page.goto(`${start}&${odd}`);
        assert.equal(await opened(page), 'ready', odd);
        assert.match(await page.textContent('#up'), /^[yz] up$/, odd);
        assert.doesNotMatch(await page.innerText('#legend'), /Infinity/, odd);
        await page.uncheck('#shading');
        assert.ok((await pixels(page, [HOT]))[0].count > 0, `${odd}: nothing is seen`);
      }
    });
    await t.test('links to other places', async () => {
      for (const link of [`//${FOREIGN}/a.obj`, `http://${FOREIGN}/a.obj`, 'file:///etc/a.obj', 'http://[',
        'javascript:alert(1)', `\\\\${FOREIGN}\\a.obj`]) {
        requests.length = 0;
        await page.goto(`${address}?obj=${encodeURIComponent(link)}`);
        assert.equal(await opened(page), 'failed');
        assert.match(await page.textContent('#message'), /is not opened/);
        assert.equal(requests.filter((url) => !/^(data|blob):/.test(url)).length, 1, requests.join(' '));
      }
    });
    assert.deepEqual(errors, []);
  });
});

test('the page calls no other place, whatever runs in it', () =>
  withViewer(directory, size, async (page, address) => {
    await page.goto(address);
    const outcomes = await page.evaluate(async (host) => {
      const script = document.createElement('script');
      script.textContent = 'window.isBroken = true';
      document.body.append(script);
      const image = new Image();
      const answer = new Promise((done) => {
        image.onerror = () => done('none');
        image.onload = () => done('image');
      });
      image.src = `http://${host}/a.png`;
      return [window.isBroken, await answer, await fetch(`http://${host}/a`).catch((error) => error.name)];
    }, address.replace('http://127.0.0.1', 'localhost').replace('/', ''));
    assert.deepEqual(outcomes, [undefined, 'none', 'TypeError']);
  }));

// The boxes of what is written, none of which may touch another or the model, or leave the page.
test('writes nothing over the model, on a phone neither', (t) => {
  const results = resultsOf(t, [{name: 'plate', change: () => {}}]);
  return withViewer(results, size, async (page, address) => {
    for (const width of [320, 390, 1280]) {
      await page.setViewportSize({width, height: 660});
      await page.goto(`${address}?obj=plate/${objName}&${ABOVE}&field=temperature&unit=Pa` +
        `&minimum=-1e5&maximum=${width === 390 ? 987654321 : 100}`);
      await opened(page);
      await page.evaluate(() => {
        document.getElementById('message').textContent = 'A long message. '.repeat(12);
      });
      const boxes = await page.evaluate(() =>
        ['header > *', '#message', '#view', '#legend', '#status'].flatMap((selector) =>
          [...document.querySelectorAll(selector)].map((element) => {
            const {left, top, right, bottom} = element.getBoundingClientRect();
            return {name: element.id || element.textContent, left, top, right, bottom,
              fits: element.scrollWidth <= element.clientWidth + 1 || element.clientWidth === 0};
          })));
      assert.equal(boxes.length, 10);
      for (const a of boxes) {
        const where = `${a.name} at ${width}: ${JSON.stringify(a)}`;
        assert.ok(a.left >= 0 && a.top >= 0 && a.right <= width && a.bottom <= 660 && a.fits, where);
        for (const b of boxes) {
          assert.ok(a === b || a.right <= b.left || b.right <= a.left || a.bottom <= b.top ||
            b.bottom <= a.top, `${where} meets ${b.name}`);
        }
      }
      // The numbers, long ones too, are whole: between the bar and the edge of the legend, apart.
      const rows = await page.evaluate(() => ['#bar', '#legend', '.tick'].map((selector) =>
        [...document.querySelectorAll(selector)].map((element) => element.getBoundingClientRect().toJSON())));
      const [[bar], [legend], ticks] = rows;
      assert.ok(ticks.length >= 5);
      for (const [i, tick] of ticks.entries()) {
        assert.ok(bar.right <= tick.left && tick.right <= legend.right, `a number at ${width} is cut off`);
        assert.ok(i === 0 || tick.bottom <= ticks[i - 1].top + 4, `numbers at ${width} meet`);
      }
      assert.ok(legend.left <= bar.left);
      const {right, left, bottom, top} = boxes.find(({name}) => name === 'view');
      assert.ok(right - left > 0.6 * width && bottom - top > 200, 'the model has most of the page');
    }
  });
});

test('opens from the disk, without a server', () => withPage(size, async (page) => {
  const errors = reportErrors(page);
  const requests = [];
  page.on('request', (request) => requests.push(request.url()));
  const open = async (file, query) => {
    await page.goto(`${pathToFileURL(file)}?${query}`);
  };
  await open(join(directory, objName.replace('.obj', '.html')), BOTH_ENDS);
  await requireDemo(page);
  const viewer = join(root, 'assets/viewer.html');
  await open(viewer, BOTH_ENDS);
  assert.match(await page.textContent('#message'), /^Drop an OBJ file/);
  await page.setInputFiles('#open', [objName, mtlName, 'viridis.PNG'].map((name) => join(directory, name)));
  await requireDemo(page);

  const part = join(root, 'examples/data/heat_sink.stl');
  const said = [[part, /heat_sink\.stl is a mesh without a field \(STL\).*heatmap heat_sink\.stl --out/],
    [viewer, /no OBJ among what was dropped/]];
  for (const [file, words] of said) {
    await open(viewer, '');
    await page.setInputFiles('#open', file);
    await page.waitForFunction(() => !/here.*ramp\.$/.test(document.getElementById('message').textContent));
    assert.match(await page.textContent('#message'), words);
  }
  assert.deepEqual(requests.filter((url) => !/^(file|data|blob):/.test(url)), []);
  assert.deepEqual(errors, []);
  await open(viewer, `obj=${objName}`);
  assert.equal(await opened(page), 'failed');
  assert.match(await page.textContent('#message'), /may not read files by itself: drop them/);
}));

test('scripts/view answers to its own name alone', () =>
  withViewer(directory, size, async (_, address) => {
    const {port} = new URL(address);
    // fetch sets the header itself.
    const statusOf = (host) => new Promise((done) => {
      const asked = request({host: '127.0.0.1', port, path: `/${objName}`, headers: host ? {host} : {}, setHost: false},
        (response) => {
          response.resume();
          done(response.statusCode);
        });
      asked.end();
    });
    for (const host of [`127.0.0.1:${port}`, `localhost:${port}`]) {
      assert.equal(await statusOf(host), 200, host);
    }
    for (const host of ['quor.invalid', `quor.invalid:${port}`, '127.0.0.1', `127.0.0.1:${port}.quor.invalid`,
      `localhost:${port}@quor.invalid`, '']) {
      assert.equal(await statusOf(host), 403, host || 'no header');
    }
  }));

test('scripts/view says what it wants', () => {
  const cases = [[['nowhere'], /there is no nowhere/],
    [[join(directory, objName)], /is a file: name the dir/],
    [[directory, 'abc'], /abc is no port/], [[directory, '99999'], /99999 is no port/]];
  for (const [args, words] of cases) {
    const {status, stderr} = spawnSync(join(root, 'scripts/view'), args, {encoding: 'utf8'});
    assert.equal(status, 1);
    assert.match(stderr, words);
    assert.doesNotMatch(stderr, /Traceback/);
  }
});
