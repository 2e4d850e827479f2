// The object that load() returns.

import {Core} from './core.js';
import {areas, check, clean, refine, weld} from './meshes.js';
import {colours, decodeIntegerFromSphere, encodeIntegerToSphere, objText} from './showing.js';
import {Solver} from './solver.js';

/** The material file that goes with every OBJ text, as the library writes it. */
const kMaterial = 'newmtl Heat \nKd 1 1 1             \nNs 96.0784\t\t\t \nd 1\t\t\t\t\t \n' +
  'illum 1\t\t\t\t \nKa 0 0 0\t\t\t \nKs 1 1 1\t\t\t \nmap_Kd viridis.PNG\n';

export class Quor {
  #core;

  constructor(core) {
    this.#core = core;
  }

  weld(points, triangles, tolerance) { return weld(this.#core, points, triangles, tolerance); }
  check(vertices, triangles, tags) { return check(this.#core, vertices, triangles, tags); }
  clean(vertices, triangles) { return clean(this.#core, vertices, triangles); }
  refine(vertices, triangles, options) { return refine(this.#core, vertices, triangles, options); }
  areas(vertices, triangles) { return areas(this.#core, vertices, triangles); }
  solver(vertices, triangles, tags, options) {
    return new Solver(this.#core, vertices, triangles, tags, options);
  }
  colours(field, low, high) { return colours(this.#core, field, low, high); }
  objText(vertices, triangles, field, name, margin) {
    return objText(this.#core, vertices, triangles, field, name, margin);
  }
  mtlText() { return kMaterial; }
  encodeIntegerToSphere(value) { return encodeIntegerToSphere(this.#core, value); }
  decodeIntegerFromSphere(point) { return decodeIntegerFromSphere(this.#core, point); }

  /**
   * Runs every step once on a small part. Browsers run the first call of a function unoptimized;
   * afterwards they have compiled it.
   */
  warmUp() {
    const side = 24;
    const points = [];
    for (let k = 0; k < 6 * side * side; ++k) {
      const [x, y] = [[0, 0], [1, 0], [1, 1], [0, 0], [1, 1], [0, 1]][k % 6];
      const cell = Math.floor(k / 6);
      points.push(cell % side + x, Math.floor(cell / side) + y, 0);
    }
    const soup = this.weld(points, Int32Array.from({length: points.length / 3}, (_, k) => k), 1e-6);
    const made = this.refine(soup.vertices, soup.triangles, {longestEdge: 0.5});
    const n = made.vertices.length / 3;
    const tags = Int32Array.from({length: n}, (_, v) => (made.vertices[3 * v] === 0 ? 1 : 0));
    const solver = this.solver(made.vertices, made.triangles, tags);
    this.colours(solver.solve(new Float64Array(n), new Float64Array(n).fill(-1)));
    solver.free();
  }
}

/**
 * @param {BufferSource | WebAssembly.Module | Response | Promise<Response>} source
 * @returns {Promise<Quor>}
 */
export async function instantiateQuor(source) {
  return new Quor(await Core.instantiate(source));
}
