// The solver: a factorized mesh and its solves.

import {integers, mesh, putMesh, reals, requireMultiple, someReals} from './arrays.js';
import {Reason, badArgument} from './errors.js';
import {kInfoBytes} from './layout.js';
import {check} from './meshes.js';

/** Frees solvers that were forgotten; free() is the way to give memory back in time. */
const forgotten = new FinalizationRegistry(({core, address}) => release(core, address));

export class Solver {
  #core;
  #address = 0;

  /** The number of vertices. */
  vertexCount;

  /** Made by Quor.solver. */
  constructor(core, vertices, triangles, tags, {progress, unprescribed = 'throw'} = {}) {
    const given = mesh(vertices, triangles);
    const marks = integers('tags', tags, given.n);
    if (unprescribed !== 'throw' && unprescribed !== 'ignore') {
      throw new TypeError(`unprescribed: ${String(unprescribed)} is neither "throw" nor "ignore"`);
    }
    if (unprescribed === 'throw') {
      requireField(given, check(core, given.vertices, given.triangles, marks));
    }
    this.#core = core;
    this.vertexCount = given.n;
    this.#address = core.frame((frame) => {
      const out = frame.room(4);
      frame.call('quorkitConstruct', ...putMesh(frame, given), frame.put(marks),
          progress ? frame.value('quorjsProgress') : 0, 0, out);
      return frame.word(out);
    }, progress);
    forgotten.register(this, {core, address: this.#address}, this);
    if (unprescribed === 'throw' && this.info !== 0) {
      this.free();
      throw badArgument('triangles', 'the matrix is singular, a pivot is exactly zero: clean the mesh');
    }
  }

  /** 0 if the factorization succeeded, 1 if a pivot was exactly zero. */
  get info() {
    return this.#ask((frame, words) => words[3]);
  }

  get prescribedCount() {
    return this.#ask((frame, words) => words[2]);
  }

  /** For each place in solver order the caller's index of its vertex. */
  get order() {
    return this.#ask((frame, words) => frame.take(Int32Array, words[6], words[0]));
  }

  /** Coordinates in solver order. */
  get vertices() {
    return this.#ask((frame, words) => frame.take(Float64Array, words[4], 3 * words[0]));
  }

  /** Corners in solver order. */
  get triangles() {
    return this.#ask((frame, words) => frame.take(Int32Array, words[5], 3 * words[1]));
  }

  solve(prescribed, source) {
    const values = reals('prescribed', prescribed, this.vertexCount);
    return this.#solve(values, source, (handle, ...rest) => ['quorkitSolve', handle, ...rest]);
  }

  solveMany(prescribed, source) {
    const values = reals('prescribed', prescribed);
    requireMultiple('prescribed', values, this.vertexCount);
    const count = values.length / this.vertexCount;
    return this.#solve(values, source, (handle, ...rest) => ['quorkitSolveMany', handle, count, ...rest]);
  }

  free() {
    if (this.#address !== 0) {
      forgotten.unregister(this);
      release(this.#core, this.#address);
      this.#address = 0;
    }
  }

  #solve(values, source, call) {
    const address = this.#open();
    const sources = someReals('source', source, values.length);
    return this.#core.frame((frame) => {
      const field = frame.put(values);  // the result may take its place
      frame.call(...call(address, field, frame.put(sources), field));
      return frame.take(Float64Array, field, values.length);
    });
  }

  #ask(read) {
    const address = this.#open();
    return this.#core.frame((frame) => {
      const out = frame.room(kInfoBytes);
      frame.call('quorkitSolverInfo', address, out);
      return read(frame, frame.take(Uint32Array, out, kInfoBytes / 4));
    });
  }

  #open() {
    if (this.#address === 0) {
      throw badArgument('solver', 'it was freed: make another');
    }
    return this.#address;
  }
}
if (typeof Symbol.dispose === 'symbol') {
  Object.defineProperty(Solver.prototype, Symbol.dispose, {value: Solver.prototype.free});
}

/** An instance that failed keeps its solvers. */
function release(core, address) {
  if (core.isUsable) {
    core.enter('quorkitFreeSolver', address);
  }
}

/** Refuses a mesh whose field nothing defines; other faults are the constructor's to name. */
function requireField({vertices}, report) {
  if (report.unusedVertices.count > 0 || report.repeatedCorners.count > 0 || report.cornersOutOfRange.count > 0) {
    return;
  }
  if (report.notFinite.count > 0) {
    const v = report.notFinite.first;
    throw badArgument('vertices', `vertex ${v} is at (${vertices.slice(3 * v, 3 * v + 3).join(', ')}): ` +
      'give finite coordinates', v, Reason.NOT_FINITE);
  }
  const {count, first} = report.unprescribedPieces;
  if (count > 0) {
    throw badArgument('tags', `${count} of ${report.pieces.count} connected components have no prescribed ` +
      `vertex; the first has vertex ${first}: prescribe one in each`, first);
  }
}
