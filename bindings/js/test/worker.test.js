// The package in a worker.
import assert from 'node:assert/strict';
import test from 'node:test';
import {load} from 'quor';
import {Status, startWorker} from 'quor/worker';
import {columns, gridMesh, tagEnds} from './shared.js';

const mesh = gridMesh(200, 200);
const tags = tagEnds(200, 200);
const values = columns(200, 200);

test('a worker gives the same results as the page', async () => {
  const quor = await load();
  const remote = await startWorker();
  try {
    const solver = await remote.solver(mesh.vertices, mesh.triangles, tags);
    assert.deepEqual(await solver.solve(values), quor.solver(mesh.vertices, mesh.triangles, tags).solve(values));
    await solver.free();
    await assert.rejects(solver.solve(values), /freed/);
    assert.deepEqual(await remote.faces(mesh.vertices, mesh.triangles), quor.faces(mesh.vertices, mesh.triangles));
    await assert.rejects(remote.weld(mesh.vertices, mesh.triangles, -1),
        {name: 'QuorError', status: Status.BAD_ARGUMENT, argument: 'tolerance'});
    await assert.rejects(remote.areas(mesh.vertices, 'none'), TypeError);
  } finally {
    remote.end();
  }
  await assert.rejects(remote.mtlText(), {status: Status.UNUSABLE});
});

test('transfer empties the arrays of the page', async () => {
  const remote = await startWorker();
  const [vertices, triangles] = [mesh.vertices.slice(), mesh.triangles.slice()];
  const area = await remote.with({transfer: true}).areas(vertices, triangles);
  assert.equal(area.length, 40000);
  assert.equal(vertices.length, 0);
  assert.equal(triangles.length, 0);
  remote.end();
});

test('progress arrives while the worker works, and what it throws cancels', async () => {
  const remote = await startWorker();
  const seen = [];
  await (await remote.with({progress: (fraction) => seen.push(fraction)})
      .solver(mesh.vertices, mesh.triangles, tags)).free();
  assert.ok(seen.length > 3);
  assert.equal(seen.at(-1), 1);
  const wrong = new Error('of the page');
  await assert.rejects(remote.with({progress() { throw wrong; }}).solver(mesh.vertices, mesh.triangles, tags),
      (error) => error === wrong);
  assert.equal((await remote.areas(mesh.vertices, mesh.triangles)).length, 40000);
  remote.end();
});

/** Cancels a long call; an earlier solver either still works or says that it was lost. */
async function cancelLongCall(remote) {
  const early = await remote.solver(mesh.vertices, mesh.triangles, tags);
  const controller = new AbortController();
  const vertexValues = values.map((x) => (x === 0 || x === 1 ? x * x : NaN));
  vertexValues[100] = 1;
  const long = remote.with({signal: controller.signal, progress: () => controller.abort()})
      .solveWithin(mesh.vertices, mesh.triangles, 1e-12, {vertexValues});
  await assert.rejects(long, {name: 'AbortError'});
  assert.equal((await remote.areas(mesh.vertices, mesh.triangles)).length, 40000);
  return early.solve(values);
}

test('a signal cancels from outside; the worker and its solvers go on', async () => {
  const remote = await startWorker();
  assert.equal((await cancelLongCall(remote)).length, 40000);
  await assert.rejects(remote.with({signal: AbortSignal.abort()}).mtlText(), {name: 'AbortError'});
  remote.end();
});

test('without shared memory a signal ends the worker, and its solvers say so', async () => {
  const shared = globalThis.SharedArrayBuffer;
  globalThis.SharedArrayBuffer = undefined;
  const remote = await startWorker();
  try {
    await assert.rejects(cancelLongCall(remote), {status: Status.UNUSABLE});
  } finally {
    globalThis.SharedArrayBuffer = shared;
    remote.end();
  }
});
