// What the types allow and refuse, for tsc --strict.
import {QuorError, Status, load, type Quor, type Report, type Solution} from 'quor';
import {load as loadExternal} from 'quor/external';
import {startWorker, type RemoteSolver} from 'quor/worker';

const quor: Quor = await load();
const other: Quor = await loadExternal(new URL('file:///quor.wasm'));
const {vertices, triangles, pointMap} = quor.weld([0, 0, 0], new Int32Array(0), 0);
const report: Report = quor.check(vertices, triangles);
const index: number = report.needles.first + pointMap[0]!;
const solver = quor.solver(vertices, triangles, [1], {progress: (fraction) => fraction > 0.5});
const field: Float64Array = solver.solveMany([1, 2], null ?? undefined);
const solution: Solution = other.solveWithin(vertices, triangles, 0.1, {vertexValues: field, shareOfSpan: true});
const bytes: Uint8Array = quor.colours(solution.field);
const text: string = quor.objText(vertices, triangles, field, 'plate');
quor.refine(vertices, triangles, {longestEdge: 1, sizes: field});
quor.refine(vertices, triangles, {triangleCount: 1});
// @ts-expect-error: one of them only
quor.refine(vertices, triangles, {longestEdge: 1, triangleCount: 1});
// @ts-expect-error: no tolerance
quor.weld(vertices, triangles);
// @ts-expect-error: text is no array of numbers
quor.areas(['0'], triangles);
// @ts-expect-error: read only
solver.info = 1;

const remote = await startWorker();
const far: RemoteSolver = await remote.with({signal: new AbortController().signal, transfer: true})
    .solver(vertices, triangles, [1], {unprescribed: 'ignore'});
const late: Float64Array = await far.solve(field);
// @ts-expect-error: a function cannot go to a worker
await remote.solver(vertices, triangles, [1], {progress: () => {}});
// @ts-expect-error: a promise
const early: Float64Array = remote.areas(vertices, triangles);

export const all = [index, bytes, text, late, early, Status.CANCELLED, new QuorError(1, 'text').argument];
