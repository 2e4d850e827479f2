// What goes wrong between JavaScript and a module: exceptions, memory, traps.
import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import test from 'node:test';
import {Status, load} from 'quor';
import {columns, gridMesh, tagEnds} from './shared.js';

const quor = await load();
const mesh = gridMesh(60, 60);
const tags = tagEnds(60, 60);

test('what a progress function throws arrives, and the instance goes on', () => {
  const wrong = new Error('of the caller');
  for (const after of [0, 0.3, 1]) {
    assert.throws(() => quor.solver(mesh.vertices, mesh.triangles, tags, {progress(fraction) {
      if (fraction >= after) {
        throw wrong;
      }
    }}), (error) => error === wrong);
  }
  const solver = quor.solver(mesh.vertices, mesh.triangles, tags);
  assert.ok(Math.abs(solver.solve(columns(60, 60))[30] - 30 / 59) < 1e-9);
  solver.free();
});

test('progress rises from 0 to 1, and only true cancels', () => {
  const seen = [];
  quor.solver(mesh.vertices, mesh.triangles, tags, {progress: (fraction) => seen.push(fraction)}).free();
  assert.equal(seen[0], 0);
  assert.equal(seen.at(-1), 1);
  seen.reduce((a, b) => (assert.ok(a <= b), b));
  assert.throws(() => quor.solver(mesh.vertices, mesh.triangles, tags, {progress: () => true}),
      {status: Status.CANCELLED});
  assert.throws(() => quor.solveWithin(mesh.vertices, mesh.triangles, 1e-6, {progress: () => true,
    vertexValues: columns(60, 60).map((x) => (x === 0 || x === 1 ? x : NaN))}), {status: Status.CANCELLED});
});

test('a progress function cannot call the instance that reports to it', () => {
  assert.throws(() => quor.solver(mesh.vertices, mesh.triangles, tags, {progress() {
    quor.areas(mesh.vertices, mesh.triangles);
  }}), {argument: 'progress'});
  assert.equal(quor.areas(mesh.vertices, mesh.triangles).length, 3600);
});

test('freed and failed calls leave no memory behind', async () => {
  const {memory, wrapped} = await watched();
  const work = () => {
    const solver = wrapped.solver(mesh.vertices, mesh.triangles, tags);
    solver.solve(columns(60, 60));
    solver.free();
    wrapped.refine(mesh.vertices, mesh.triangles, {longestEdge: 0.01});
    wrapped.faces(mesh.vertices, mesh.triangles);
    wrapped.objText(mesh.vertices, mesh.triangles, columns(60, 60), 'a');
    assert.throws(() => wrapped.solver(mesh.vertices, mesh.triangles, tags, {progress: () => true}));
    assert.throws(() => wrapped.weld(mesh.vertices, mesh.triangles, NaN));
  };
  work();
  const before = memory().buffer.byteLength;
  for (let k = 0; k < 30; ++k) {
    work();
  }
  assert.equal(memory().buffer.byteLength, before);
});

test('out of memory is a status, and the instance goes on', async () => {
  const {wrapped, exports} = await watched();
  const held = [];
  for (let size = 1 << 30; size >= 1 << 12; size /= 2) {
    for (let address = exports().malloc(size); address !== 0; address = exports().malloc(size)) {
      held.push(address);
    }
  }
  assert.ok(held.some((address) => address < 0), 'addresses above 2 GB are negative numbers');
  assert.throws(() => wrapped.solver(mesh.vertices, mesh.triangles, tags), {status: Status.OUT_OF_MEMORY});
  held.forEach((address) => exports().free(address));
  wrapped.solver(mesh.vertices, mesh.triangles, tags).free();
});

test('arrays above 2 GB have the same results', async () => {
  const {wrapped, exports} = await watched();
  const solved = (instance) => {
    const solver = instance.solver(mesh.vertices, mesh.triangles, tags);
    const field = solver.solve(columns(60, 60));
    solver.free();
    return field;
  };
  for (const size of [1 << 28, 1 << 20, 1 << 14]) {  // until nothing of this size is free below
    while (exports().malloc(size) > 0) {}
  }
  assert.deepEqual(solved(wrapped), solved(quor));
  assert.equal(wrapped.objText(mesh.vertices, mesh.triangles, columns(60, 60), 'a'),
      quor.objText(mesh.vertices, mesh.triangles, columns(60, 60), 'a'));
  assert.deepEqual(wrapped.faces(mesh.vertices, mesh.triangles), quor.faces(mesh.vertices, mesh.triangles));
  assert.throws(() => wrapped.weld(mesh.vertices, mesh.triangles, -1), {argument: 'tolerance'});
});

test('after a trap the instance is unusable and says so', async () => {
  const {wrapped, exports} = await watched();
  const solver = wrapped.solver(mesh.vertices, mesh.triangles, tags);
  const bytes = new Uint8Array(exports().memory.buffer);
  bytes.fill(0xff, 1024);  // stack, heap and constants: what follows cannot go well
  assert.throws(() => {
    for (let k = 0; k < 4; ++k) {
      wrapped.refine(mesh.vertices, mesh.triangles, {longestEdge: 0.01});
    }
  }, {status: Status.UNUSABLE});
  assert.throws(() => wrapped.areas(mesh.vertices, mesh.triangles), {status: Status.UNUSABLE});
  solver.free();  // does nothing
  assert.equal((await load()).areas(mesh.vertices, mesh.triangles).length, 3600);
});

test('warming up compiles and leaves a working instance', () => {
  quor.warmUp();
  assert.equal(quor.areas(mesh.vertices, mesh.triangles).length, 3600);
});

/** An instance whose exports the test can see: the runtime is asked for them while it loads. */
async function watched() {
  const real = WebAssembly.instantiate;
  let seen = null;
  WebAssembly.instantiate = async (...given) => {
    const made = await real(...given);
    seen = (made.instance ?? made).exports;
    return made;
  };
  try {
    const wrapped = await load(readFileSync(createRequire(import.meta.url).resolve('quor/quor.wasm')));
    return {wrapped, exports: () => seen, memory: () => seen.memory};
  } finally {
    WebAssembly.instantiate = real;
  }
}
