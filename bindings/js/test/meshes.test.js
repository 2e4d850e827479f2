// Every function of the kit through JavaScript, and what a wrong call throws.
import assert from 'node:assert/strict';
import test from 'node:test';
import {QuorError, Reason, Status, load} from 'quor';
import {columns, gridMesh, soupOf, tagEnds} from './shared.js';

const quor = await load();
const kSide = 9;
const mesh = gridMesh(kSide, kSide);
const last = kSide * kSide - 1;

function near(actual, expected, tolerance = 1e-12) {
  assert.equal(actual.length, expected.length);
  actual.forEach((value, k) => assert.ok(Math.abs(value - expected[k]) <= tolerance, `[${k}]: ${value}, ${expected[k]}`));
}

test('weld gives back the mesh of a soup, with the origins of its triangles', () => {
  const soup = soupOf(mesh);
  const twice = [...soup.triangles, ...soup.triangles.slice(0, 3)];  // the last one repeats the first
  const welded = quor.weldWithOrigins(soup.vertices, twice, 1e-9);
  assert.equal(welded.vertices.length, mesh.vertices.length);
  assert.deepEqual([...welded.triangleOrigins], [...mesh.triangles.keys()].slice(0, mesh.triangles.length / 3));
  soup.vertices.forEach((x, k) => assert.equal(welded.vertices[3 * welded.pointMap[Math.floor(k / 3)] + (k % 3)], x));
  assert.deepEqual(Object.keys(quor.weld(soup.vertices, soup.triangles, 0)), ['vertices', 'triangles', 'pointMap']);
});

test('check reports each fault by its first index', () => {
  const triangles = [...mesh.triangles, 0, 0, 1, 0, 1, 2, 0, 1, 999];
  const count = mesh.triangles.length / 3;
  const report = quor.check([...mesh.vertices, NaN, 0, 0], triangles, new Int32Array(last + 2));
  assert.deepEqual(report.repeatedCorners, {count: 1, first: count});
  assert.deepEqual(report.flatTriangles, {count: 1, first: count + 1});
  assert.deepEqual(report.cornersOutOfRange, {count: 1, first: count + 2});
  assert.deepEqual(report.unusedVertices, {count: 1, first: last + 1});
  assert.deepEqual(report.unprescribedPieces, {count: 1, first: 0});
  assert.ok(Math.abs(report.diagonal - Math.SQRT2) < 1e-12);
});

test('checkRegions finds regions that touch, unless their values are equal', () => {
  const regions = Int32Array.from({length: last + 1}, (_, v) => (v % kSide === 3 ? 0 : v % kSide === 4 ? 1 : -1));
  assert.equal(quor.checkRegions(mesh.vertices, mesh.triangles, regions).touchingRegions.count, 2 * kSide);
  assert.equal(quor.checkRegions(mesh.vertices, mesh.triangles, regions, new Float64Array(last + 1))
      .touchingRegions.count, 0);
});

test('clean drops a degenerate triangle and says what became of each vertex', () => {
  const cleaned = quor.clean([...mesh.vertices, 7, 7, 7], [...mesh.triangles, 0, 1, 1]);
  assert.equal(cleaned.triangles.length, mesh.triangles.length);
  assert.equal(cleaned.vertexMap[last + 1], -1);
  assert.equal(cleaned.vertexMap.length, last + 2);
  assert.equal(cleaned.degenerateCount, 0);
});

test('refine keeps its three promises', () => {
  const byLength = quor.refine(mesh.vertices, mesh.triangles, {longestEdge: 0.05});
  assert.ok(quor.check(byLength.vertices, byLength.triangles).longestEdge <= 0.05);
  assert.equal(byLength.longestEdge, 0.05);
  const [a, b] = byLength.vertexOrigins.slice(2 * (last + 1));
  near(byLength.vertices.slice(3 * (last + 1), 3 * (last + 2)),
      [0, 1, 2].map((k) => (byLength.vertices[3 * a + k] + byLength.vertices[3 * b + k]) / 2));
  assert.ok(quor.refine(mesh.vertices, mesh.triangles, {triangleCount: 1000}).triangles.length <= 3000);
  const sizes = new Float64Array(last + 1).fill(Infinity);
  sizes[0] = 0.01;
  const graded = quor.refine(mesh.vertices, mesh.triangles, {longestEdge: 1, sizes});
  assert.ok(graded.triangles.length > mesh.triangles.length);
  assert.throws(() => quor.refine(mesh.vertices, mesh.triangles, {}), TypeError);
});

test('flip keeps edges between faces, and turns those inside one', () => {
  const quad = {vertices: [0, 0, 0, 4, 1, 0, 8, 0, 0, 4, -1, 0], triangles: [0, 1, 2, 0, 2, 3]};
  assert.deepEqual([...quor.flip(quad.vertices, quad.triangles, [0, 1]).triangles], quad.triangles);
  const flipped = quor.flip(quad.vertices, quad.triangles);
  assert.notDeepEqual([...flipped.triangles], quad.triangles);
  assert.equal(flipped.triangleOrigins.length, 2);
});

test('faces tells the two sides of a fold apart', () => {
  const fold = gridMesh(5, 5, (u, v) => [u, v, Math.max(u - 0.5, 0)]);
  const found = quor.faces(fold.vertices, fold.triangles);
  assert.equal(found.faceCount, 2);
  assert.equal(found.chains.length, found.edges.length / 2);
  assert.equal(quor.faces(fold.vertices, fold.triangles, 60).faceCount, 1);
});

test('a linear field comes back with its areas, flow and gradients', () => {
  const field = columns(kSide, kSide);
  const regions = field.map((value) => (value === 0 ? 0 : value === 1 ? 1 : -1));
  near(quor.flow(mesh.vertices, mesh.triangles, field, regions), [-1, 1]);
  assert.equal(quor.flow(mesh.vertices, mesh.triangles, field, regions, 5).length, 5);
  const slopes = quor.gradients(mesh.vertices, mesh.triangles, field);
  slopes.forEach((value, k) => assert.ok(Math.abs(value - (k % 3 === 0 ? 1 : 0)) < 1e-12));
  assert.ok(Math.abs(quor.areas(mesh.vertices, mesh.triangles).reduce((a, b) => a + b) - 1) < 1e-12);
});

test('solver: solve, solveMany and solver order agree', () => {
  const solver = quor.solver(mesh.vertices, mesh.triangles, tagEnds(kSide, kSide));
  const values = columns(kSide, kSide);
  const field = solver.solve(values);
  near(field, values, 1e-12);
  const source = quor.areas(mesh.vertices, mesh.triangles);
  const many = solver.solveMany([...values, ...values.map((x) => 2 - x)], [...source, ...source]);
  assert.deepEqual(many.slice(0, last + 1), solver.solve(values, source));
  assert.deepEqual(many.slice(last + 1), solver.solve(values.map((x) => 2 - x), source));
  assert.ok(solver.solve(values, source)[40] < field[40], 'a positive source lowers the field');
  assert.equal(solver.prescribedCount, 2 * kSide);
  solver.order.forEach((v, k) => assert.equal(solver.vertices[3 * k], mesh.vertices[3 * v]));
  solver.triangles.forEach((k, corner) => assert.equal(solver.order[k], mesh.triangles[corner]));
  solver.free();
  solver.free();
  assert.throws(() => solver.solve(values), {name: 'QuorError', status: Status.BAD_ARGUMENT});
});

test('solver works in a using block where the language has one', {skip: !Symbol.dispose}, () => {
  const solver = quor.solver(mesh.vertices, mesh.triangles, tagEnds(kSide, kSide));
  solver[Symbol.dispose]();
  assert.throws(() => solver.info, QuorError);
});

test('solveWithin keeps its tolerance with each kind of prescribed value', () => {
  const corner = gridMesh(5, 5, (u, v) => [u < 0.5 ? u : 0.5, v, u < 0.5 ? 0 : u - 0.5]);
  const vertexValues = Float64Array.from({length: 25}, (_, v) => (v % 5 === 0 ? 0 : v === 4 || v === 9 ? 10 : NaN));
  const solution = quor.solveWithin(corner.vertices, corner.triangles, 0.02, {vertexValues, shareOfSpan: true});
  assert.ok(solution.isReached && solution.error <= solution.tolerance);
  assert.ok(Math.abs(solution.tolerance - 0.2) < 1e-12);
  assert.equal(solution.field.length, solution.vertices.length / 3);
  assert.ok(solution.vertices.length > corner.vertices.length);
  assert.deepEqual(solution.vertices.slice(0, 75), corner.vertices);
  const edges = [0, 5, 5, 10, 10, 15, 15, 20, 4, 9];
  const same = quor.solveWithin(corner.vertices, corner.triangles, 0.02,
      {edges, edgeValues: [0, 0, 0, 0, 10], shareOfSpan: true});
  assert.deepEqual(same.field, solution.field);
  const triangleValues = new Float64Array(32).fill(NaN);
  triangleValues[0] = 1;
  triangleValues[31] = 3;
  assert.ok(quor.solveWithin(corner.vertices, corner.triangles, 0.5, {triangleValues, triangleLimit: 500}).rounds >= 1);
  assert.throws(() => quor.solveWithin(corner.vertices, corner.triangles, 0.1), {status: Status.BAD_ARGUMENT});
  const single = new Float64Array(25).fill(NaN);
  single[12] = 1;
  assert.throws(() => quor.solveWithin(corner.vertices, corner.triangles, 0.1, {vertexValues: single}), {index: 12});
});

test('colours and texts need no file system', () => {
  assert.deepEqual([...quor.colours([NaN, 0, 1]).slice(0, 4)], [128, 128, 128, 255]);
  assert.deepEqual(quor.colours([0, 1]), quor.colours([5, 6]));
  assert.notDeepEqual(quor.colours([0, 1]), quor.colours([0, 1], 0, 10));
  const text = quor.objText([100000.5, 2.5e-7, 1e21, 1, 0, 0, 0, 1, 0], [0, 1, 2], [0, 1, 2], 'plate');
  // Six digits of a tie: to even, as printf rounds.
  assert.match(text, /^mtllib plate\.mtl\nusemtl Heat\nv 100000 2\.5e-07 1e\+21\n/);
  assert.match(quor.mtlText(), /^newmtl Heat .*map_Kd viridis\.PNG\n$/s);
  assert.throws(() => quor.objText([0, 0, NaN], [], [0], 'a'), {argument: 'vertices', reason: Reason.NOT_FINITE});
});

test('errors name argument and entry, with the names of JavaScript', () => {
  const {vertices, triangles} = mesh;
  assert.throws(() => quor.weld(vertices, triangles, -1), {name: 'QuorError', argument: 'tolerance', status: 1});
  assert.throws(() => quor.areas(vertices, [0, 1, 81]), {argument: 'triangles', index: 0, reason: Reason.OUT_OF_RANGE});
  assert.throws(() => quor.solver(vertices, triangles, new Int32Array(81)), {argument: 'tags', index: 0});
  assert.throws(() => quor.solver(vertices, [...triangles, 1, 1, 0], tagEnds(9, 9)),
      {reason: Reason.REPEATED_CORNER, index: triangles.length / 3});
  assert.throws(() => quor.areas(vertices.slice(1), triangles), RangeError);
  assert.throws(() => quor.areas(vertices, [0, 1, 1.5]), RangeError);
  assert.throws(() => quor.areas('vertices', triangles), TypeError);
  assert.throws(() => quor.areas(['0', 0, 0], []), TypeError);
  assert.throws(() => quor.solver(vertices, triangles, [1, 2]), RangeError);
  try {
    quor.refine(vertices, triangles, {longestEdge: 0});
    assert.fail('0 is no length');
  } catch (error) {
    assert.doesNotMatch(error.message, /quorkit/);
    assert.equal(error.argument, 'longestEdge');
  }
});
