// The fingerprints of tests/api/fingerprint.cpp that the package can compute, from the module as it is packed.
import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import test from 'node:test';
import {load} from 'quor';
import {Numbers, gridMesh, soupOf, tagEnds} from './shared.js';

const source = readFileSync(process.env.QUOR_FINGERPRINTS, 'utf8');
const expected = Object.fromEntries([...source.matchAll(/isSame\("(\w+)".*0x([0-9A-F]{16})\)/g)]
    .map(([, name, digits]) => [name, digits]));
const quor = await load();

/** FNV-1a, 64 bits, in two halves: the prime is 2^40 + 0x1B3. */
class Hash {
  #high = 0xCBF29CE4;
  #low = 0x84222325;

  add(array) {
    for (const byte of new Uint8Array(array.buffer, array.byteOffset, array.byteLength)) {
      const low = (this.#low ^ byte) >>> 0;
      const product = low * 0x1B3;
      this.#high = (this.#high * 0x1B3 + Math.floor(product / 2 ** 32) + ((low << 8) >>> 0)) % 2 ** 32;
      this.#low = product % 2 ** 32;
    }
  }

  get value() {
    return [this.#high, this.#low].map((half) => half.toString(16).padStart(8, '0')).join('').toUpperCase();
  }
}

function wavyMesh(side) {
  const numbers = new Numbers();
  return gridMesh(side, side, (u, v) => [u + 0.2 * numbers.next() / side, v + 0.2 * numbers.next() / side,
    u * (1 - u) * (v - 0.3) * (1 + numbers.next() / side)]);
}

function fieldFingerprint(side) {
  const mesh = wavyMesh(side);
  const solver = quor.solver(mesh.vertices, mesh.triangles, tagEnds(side, side));
  const values = mesh.vertices.slice(0, side * side);
  const hash = new Hash();
  hash.add(solver.solve(values));
  hash.add(solver.solve(values, values));
  solver.free();
  return hash.value;
}

test('weld has the native bits', () => {
  const numbers = new Numbers();
  const random = {vertices: Float64Array.from({length: 3 * 4000}, () => numbers.next()), triangles: new Int32Array(0)};
  const hash = new Hash();
  for (const soup of [soupOf(wavyMesh(40)), wavyMesh(60), random]) {
    for (const tolerance of [0, 1e-9, 0.004, 0.01, 0.03, 0.06, 0.5, Infinity]) {
      const welded = quor.weld(soup.vertices, soup.triangles, tolerance);
      hash.add(welded.vertices);
      hash.add(welded.triangles);
      hash.add(welded.pointMap);
    }
  }
  assert.equal(hash.value, expected.weld);
});

test('fields have the native bits', () => {
  assert.equal(fieldFingerprint(90), expected.field);
  assert.equal(fieldFingerprint(50), expected.small);
});

test('integers in directions have the native bits', () => {
  const numbers = new Numbers();
  const hash = new Hash();
  for (let value = -1; value <= 65534; ++value) {
    const p = quor.encodeIntegerToSphere(value);
    hash.add(p);
    const far = Math.fround(Math.fround(Math.fround(numbers.next()) - 0.5) * 2 ** (value % 70));
    hash.add(Int32Array.of(quor.decodeIntegerFromSphere(far, p[1], -p[2])));
  }
  assert.equal(hash.value, expected.sphere);
});

test('the text of OBJ and MTL has the native bytes', () => {
  const mesh = wavyMesh(90);
  const solver = quor.solver(mesh.vertices, mesh.triangles, tagEnds(90, 90));
  const text = quor.objText(solver.vertices, solver.triangles, mesh.vertices.slice(0, 8100), 'f', 0);
  solver.free();
  const hash = new Hash();
  hash.add(new TextEncoder().encode(text.slice(text.indexOf('\n'))));
  hash.add(new TextEncoder().encode(quor.mtlText()));
  assert.equal(hash.value, expected.files);
});
