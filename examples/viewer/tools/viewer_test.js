// viewer_test.js DIR OBJ: the viewer on the result of the demo, and what it says of broken copies.

import assert from 'node:assert/strict';
import {copyFileSync, cpSync, mkdtempSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {test} from 'node:test';
import {opened, withViewer} from './browser.js';

const [directory, objName] = process.argv.slice(2);
const text = readFileSync(join(directory, objName), 'utf8');
const mtlName = objName.replace('.obj', '.mtl');
const count = (word) => text.split('\n').filter((line) => line.startsWith(`${word} `)).length;
const HOT = [253, 231, 37];  // left end of the ramp
const COLD = [68, 1, 84];
const LEAST = 200;  // pixels that show a colour
const size = {viewport: {width: 480, height: 320}};

// Numbers of pixels of the 3D view that have exactly these colours.
async function pixels(page, colours) {
  const png = (await page.locator('#view').screenshot()).toString('base64');
  return page.evaluate(async ([base64, wanted]) => {
    const bytes = await (await fetch(`data:image/png;base64,${base64}`)).blob();
    const image = await createImageBitmap(bytes);
    const context = new OffscreenCanvas(image.width, image.height).getContext('2d');
    context.drawImage(image, 0, 0);
    const {data} = context.getImageData(0, 0, image.width, image.height);
    return wanted.map((colour) => {
      let found = 0;
      for (let i = 0; i < data.length; i += 4) {
        found += colour.every((value, channel) => Math.abs(data[i + channel] - value) <= 2);
      }
      return found;
    });
  }, [png, colours]);
}

async function requireDemo(page) {
  assert.equal(await opened(page), 'ready');
  assert.equal(await page.textContent('#message'), '');
  const status = (await page.textContent('#status')).replaceAll(',', '');
  assert.equal(status, `${objName}: ${count('v')} vertices ${count('f')} triangles`);
  await page.uncheck('#shading');
  const [hot, cold] = await pixels(page, [HOT, COLD]);
  assert.ok(hot > LEAST, `${hot} pixels are as hot as it gets`);
  assert.ok(cold > LEAST, `${cold} pixels are as cold as it gets`);
}

function reportErrors(page) {
  const errors = [];
  page.on('console', (message) => message.type() === 'error' && errors.push(message.text()));
  page.on('pageerror', (error) => errors.push(String(error)));
  return errors;
}

test('opens the demo by address', () => withViewer(directory, size, async (page, address) => {
  const errors = reportErrors(page);
  await page.goto(`${address}?obj=${objName}&direction=1,-1.4,-0.8&high=100%20°C`);
  await requireDemo(page);
  assert.equal(await page.innerText('#legend'), '100 °C\nlow');

  const ends = await page.evaluate(() => {
    const bar = document.getElementById('bar');
    const at = (y) => [...bar.getContext('2d').getImageData(0, y, 1, 1).data.slice(0, 3)];
    return [at(0), at(bar.height - 1)];
  });
  const near = (a, b) => Math.hypot(...a.map((value, i) => value - b[i])) < 6;
  assert.ok(near(ends[0], HOT) && near(ends[1], COLD), `the bar goes from ${ends.join(' to ')}`);

  const [before] = await pixels(page, [COLD]);
  await page.check('#wireframe');
  assert.ok((await pixels(page, [COLD]))[0] < before / 2, 'lines are drawn over the surface');
  await page.uncheck('#wireframe');
  await page.mouse.move(200, 160);
  await page.mouse.down();
  await page.mouse.move(300, 100, {steps: 4});
  await page.mouse.up();
  assert.notEqual((await pixels(page, [COLD]))[0], before, 'dragging turns the part');
  await page.click('#fit');
  assert.equal((await pixels(page, [COLD]))[0], before, 'fit goes back');
  assert.deepEqual(errors, []);
}));

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
    await page.goto(`${address}?direction=1,-1.4,-0.8`);
    await drop(objName, 'viridis.PNG');
    assert.equal(await opened(page), 'ready');
    assert.match(await page.textContent('#message'), new RegExp(`material file ${mtlName} is missing`));
    await drop(mtlName);
    await requireDemo(page);
    assert.deepEqual(errors, []);
  }));

// What is said of a copy of the demo that is spoilt in one way, and whether it is shown all the same.
const spoilt = [
  ['no OBJ', (file) => rmSync(file(objName)), `${objName} is not there`, 'failed'],
  ['no MTL', (file) => rmSync(file(mtlName)), `material file ${mtlName} is missing`, 'ready'],
  ['no ramp', (file) => rmSync(file('viridis.PNG')), 'colour ramp viridis.PNG is missing', 'ready'],
  ['no image', (file) => writeFileSync(file('viridis.PNG'), 'x'), 'viridis.PNG is not an image', 'ready'],
  ['other material', (file) => writeFileSync(file(mtlName), 'newmtl Cold\n'), 'no material "Heat"', 'ready'],
  ['no mesh', (file) => copyFileSync(file('viridis.PNG'), file(objName)), 'holds no triangle', 'failed'],
  ['bad corner', (file) => writeFileSync(file(objName), `${text}f 1/1 2/2 999999999/1\n`),
    'is damaged', 'failed'],
  ['equal values', (file) => writeFileSync(file(objName), text.replace(/^vt .*/gm, 'vt -nan 0.5')),
    'no field to show', 'ready'],
  ['one NaN', (file) => writeFileSync(file(objName), text.replace(/^vt .*/m, 'vt nan 0.5')),
    'triangles have no value and are grey', 'ready'],
];

test('says what is wrong with files', async (t) => {
  const copies = mkdtempSync(join(tmpdir(), 'viewer-'));
  t.after(() => rmSync(copies, {recursive: true}));
  const small = {viewport: {width: 300, height: 200}};
  await withViewer(copies, small, async (page, address) => {
    for (const [name, spoil, words, state] of spoilt) {
      await t.test(name, async () => {
        const copy = join(copies, name);
        cpSync(directory, copy, {recursive: true});
        spoil((file) => join(copy, file));
        await page.goto(`${address}?obj=${encodeURIComponent(name)}/${objName}`);
        assert.equal(await opened(page), state);
        const message = await page.textContent('#message');
        assert.ok(message.includes(words), `said: ${message}`);
      });
    }
  });
});
