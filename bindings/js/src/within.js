// A field within a tolerance, without a solver.

import {integer, integers, mesh, number, requireMultiple, someIntegers, someReals} from './arrays.js';
import {QuorError, Status} from './errors.js';
import {putProblem, readSolution} from './layout.js';

/** Why there is no field, by the outcome of the library. */
const kNoField = {
  1: (vertex) => `vertexValues: vertex ${vertex} has a value, but no edge at it is prescribed: ` +
    'prescribe an edge or a triangle',
  2: (vertex) => `nothing is prescribed on the connected component of vertex ${vertex}`,
  3: () => 'the equations have no finite solution: clean the mesh',
};

export function solveWithin(core, vertices, triangles, tolerance, options = {}) {
  const given = mesh(vertices, triangles);
  if ((options.edges === undefined) !== (options.edgeValues === undefined)) {
    throw new TypeError('solveWithin: edges and edgeValues go together');
  }
  const edges = options.edges === undefined ? null : integers('edges', options.edges);
  requireMultiple('edges', edges ?? [], 2);
  const problem = {
    mesh: given,
    tolerance: number('tolerance', tolerance),
    triangleValues: someReals('triangleValues', options.triangleValues, given.m),
    edges,
    edgeValues: someReals('edgeValues', options.edgeValues, (edges?.length ?? 0) / 2),
    vertexValues: someReals('vertexValues', options.vertexValues, given.n),
    sources: someReals('sources', options.sources, given.m),
    faces: someIntegers('faces', options.faces, given.m),
    shareOfSpan: options.shareOfSpan ?? false,
    triangleLimit: integer('triangleLimit', options.triangleLimit ?? 0),
  };
  const {outcome, vertex, solution} = core.frame((frame) => frame.made('quorkitFreeSolution',
      (address) => readSolution(frame, address), 'quorkitSolveWithin', putProblem(frame, problem),
      options.progress ? frame.value('quorjsProgress') : 0, 0), options.progress);
  if (outcome !== 0) {
    throw new QuorError(Status.BAD_ARGUMENT, kNoField[outcome](vertex), {index: vertex});
  }
  return solution;
}
