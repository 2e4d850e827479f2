// The solver: a factorized mesh and its solves.

import {integers, mesh, reals} from './arrays.js';
import {QuorError, Status} from './errors.js';
import {check, requirePrescribed} from './meshes.js';

/** Frees solvers that were forgotten; free() is the way to give memory back in time. */
const forgotten = new FinalizationRegistry(({core, address}) => core.freeSolver(address));

export class Solver {
  #core;
  #address;
  #n;

  /** Made by Quor.solver. */
  constructor(core, vertices, triangles, tags, {progress, unprescribed = 'throw'} = {}) {
    const given = mesh(vertices, triangles);
    const marks = integers('tags', tags, given.n);
    if (unprescribed !== 'throw' && unprescribed !== 'ignore') {
      throw new TypeError(`unprescribed: ${String(unprescribed)} is neither "throw" nor "ignore"`);
    }
    if (unprescribed === 'throw') {
      requirePrescribed(check(core, given.vertices, given.triangles, marks));
    }
    this.#core = core;
    this.#n = given.n;
    this.#address = core.frame((frame) => {
      const out = frame.room(4);
      const {library} = frame;
      frame.require(
          library.quorkitConstruct(given.n, frame.put(given.vertices), given.m,
              frame.put(given.triangles), frame.put(marks), progress ? library.quorjsProgress() : 0, 0, out),
          'triangles: a triangle has two equal corners, or a vertex has no triangle: clean the mesh first');
      return frame.word(out);
    }, progress);
    forgotten.register(this, {core, address: this.#address}, this);
  }

  /** 0 if the factorization succeeded, 1 if a pivot was exactly zero. */
  get info() {
    const address = this.#open();
    return this.#core.frame((frame) => {
      const out = frame.room(64);
      frame.require(frame.library.quorkitSolverInfo(address, out));
      return frame.take(Uint32Array, out, 4)[3];
    });
  }

  get vertexCount() {
    return this.#n;
  }

  solve(prescribed, source) {
    const address = this.#open();
    const values = reals('prescribed', prescribed, this.#n);
    const sources = source === undefined ? null : reals('source', source, this.#n);
    return this.#core.frame((frame) => {
      const field = frame.room(8 * this.#n);
      frame.require(frame.library.quorkitSolve(address, frame.put(values), frame.put(sources), field));
      return frame.take(Float64Array, field, this.#n);
    });
  }

  free() {
    if (this.#address !== 0) {
      forgotten.unregister(this);
      this.#core.freeSolver(this.#address);
      this.#address = 0;
    }
  }

  #open() {
    if (this.#address === 0) {
      throw new QuorError(Status.BAD_ARGUMENT, 'the solver is closed: make another');
    }
    return this.#address;
  }
}
if (typeof Symbol.dispose === 'symbol') {
  Object.defineProperty(Solver.prototype, Symbol.dispose, {value: Solver.prototype.free});
}
