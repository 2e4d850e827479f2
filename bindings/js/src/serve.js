// The worker's side: runs the calls that arrive, one after the other.

import {load} from './index.js';

/**
 * @param {{post: (message: object, transfer: ArrayBuffer[]) => void}} port
 * @returns {(message: object) => Promise<void>} takes a message
 */
export function serve(port) {
  const solvers = new Map();
  let loading = null;  // calls may arrive before it is done
  let lastSolver = 0;

  /** Results of a call; a solver stays here, and the page gets a number for it. */
  function run(quor, {id, name, given, flag, solver, isWatched}) {
    if (flag !== null && Atomics.load(flag, 0) !== 0) {
      throw new Error('cancelled before it began');
    }
    if (solver !== undefined) {
      return runSolver(solvers, solver, name, given);
    }
    const progress = isWatched || flag !== null ? watch(port, id, flag, isWatched) : undefined;
    if (name === 'solveWithin') {
      const [vertices, triangles, tolerance, options] = given;
      return quor.solveWithin(vertices, triangles, tolerance, {...options, progress});
    }
    if (name === 'solver') {
      const [vertices, triangles, tags, options] = given;
      const made = quor.solver(vertices, triangles, tags, {...options, progress});
      solvers.set(++lastSolver, made);
      const {info, vertexCount, prescribedCount} = made;
      return {solver: lastSolver, info, vertexCount, prescribedCount};
    }
    return quor[name](...given);
  }

  return async (message) => {
    const {id} = message;
    try {
      let result;
      if (message.name === 'load') {
        loading = load(message.given[0]);
        await loading;
      } else {
        result = run(await loading, message);
      }
      port.post({id, result}, buffersOf(result));
    } catch (error) {
      const {name, message: text, status, reason, argument, index} = error;
      port.post({id, error: {name, message: text, detail: {status, reason, argument, index}}}, []);
    }
  };
}

function runSolver(solvers, number, name, given) {
  const solver = solvers.get(number);
  if (name === 'free') {
    solver?.free();
    solvers.delete(number);
    return undefined;
  }
  if (solver === undefined) {
    throw new Error('solver: it was freed: make another');
  }
  return solver[name](...given);
}

/** A progress function that reports hundredths to the page and cancels when the flag is set. */
function watch(port, id, flag, isWatched) {
  let reported = -1;
  return (fraction) => {
    if (isWatched && (fraction >= reported + 0.01 || fraction === 1)) {
      reported = fraction;
      port.post({id, fraction}, []);
    }
    return flag !== null && Atomics.load(flag, 0) !== 0;
  };
}

/** All arrays of a result are copies, which the worker needs no longer. */
function buffersOf(result) {
  const values = ArrayBuffer.isView(result) ? [result] : Object.values(Object(result));
  return values.filter(ArrayBuffer.isView).map(({buffer}) => buffer);
}
