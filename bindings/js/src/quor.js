// The object that load() returns.

import {Core} from './core.js';
import * as meshes from './meshes.js';
import * as showing from './showing.js';
import {Solver} from './solver.js';
import {solveWithin} from './within.js';

const kOperations = {
  weld: meshes.weld,
  weldWithOrigins: meshes.weldWithOrigins,
  check: meshes.check,
  checkRegions: meshes.checkRegions,
  clean: meshes.clean,
  refine: meshes.refine,
  flip: meshes.flip,
  faces: meshes.faces,
  areas: meshes.areas,
  flow: meshes.flow,
  gradients: meshes.gradients,
  solver: (core, ...given) => new Solver(core, ...given),
  solveWithin,
  colours: showing.colours,
  objText: showing.objText,
  mtlText: showing.mtlText,
  encodeIntegerToSphere: showing.encodeIntegerToSphere,
  decodeIntegerFromSphere: showing.decodeIntegerFromSphere,
  warmUp,
};

/** The names of the functions, for the worker. */
export const kNames = Object.keys(kOperations);

/**
 * @param {BufferSource | WebAssembly.Module | Response | Promise<Response>} source
 */
export async function instantiateQuor(source) {
  const core = await Core.instantiate(source);
  const quor = {};
  for (const [name, operation] of Object.entries(kOperations)) {
    quor[name] = (...given) => operation(core, ...given);
  }
  return Object.freeze(quor);
}

/** Runs every step once on a square of 1,152 triangles, so that the browser has compiled it. */
function warmUp(core) {
  const side = 24;
  const points = [];
  for (let k = 0; k < 6 * side * side; ++k) {
    const [x, y] = [[0, 0], [1, 0], [1, 1], [0, 0], [1, 1], [0, 1]][k % 6];
    const cell = Math.floor(k / 6);
    points.push((cell % side) + x, Math.floor(cell / side) + y, 0);
  }
  const soup = meshes.weld(core, points, Int32Array.from({length: points.length / 3}, (_, k) => k), 1e-6);
  const made = meshes.refine(core, soup.vertices, soup.triangles, {longestEdge: 0.75});
  const n = made.vertices.length / 3;
  const tags = Int32Array.from({length: n}, (_, v) => (made.vertices[3 * v] === 0 ? 1 : 0));
  const solver = new Solver(core, made.vertices, made.triangles, tags);
  showing.colours(core, solver.solve(new Float64Array(n).fill(1)));
  solver.free();
}
