// The page's side of a worker: calls become messages, answers become promises.

import {QuorError, Status} from './errors.js';
import {kNames} from './quor.js';

/**
 * Calls in one worker, which runs them one after the other.
 *
 * A worker at work receives no message. Where memory can be shared, a flag cancels the call. Elsewhere a
 * cancel ends the worker and starts another: solvers made before are lost, and say so.
 */
class Connection {
  #start;
  #source;
  #port = null;
  #waiting = new Map();
  #lastId = 0;
  #failure = null;

  /** Counts the workers, since a solver lives in one of them. */
  generation = 0;

  /** @param {(receive: (message: object) => void, fail: (error: unknown) => void) => object} start */
  constructor(start, source) {
    this.#start = start;
    this.#source = source;
  }

  async open() {
    this.#port = this.#start((message) => this.#receive(message), (error) => this.#fail(error));
    ++this.generation;
    await this.call('load', [this.#source]);
  }

  call(name, given, {progress, signal, transfer = false} = {}, solver = undefined) {
    if (this.#failure !== null) {
      return Promise.reject(this.#failure);
    }
    if (signal?.aborted) {
      return Promise.reject(signal.reason);
    }
    const id = ++this.#lastId;
    const flag = (signal || progress) && canShare() ? new Int32Array(new SharedArrayBuffer(4)) : null;
    return new Promise((resolve, reject) => {
      const abort = () => this.#cancel(id, signal.reason);
      signal?.addEventListener('abort', abort);
      const forget = () => signal?.removeEventListener('abort', abort);
      this.#waiting.set(id, {resolve, reject, progress, flag, forget});
      try {
        this.#port.post({id, name, given, flag, solver, isWatched: progress !== undefined},
            transfer ? buffersOf(given) : []);
      } catch (error) {  // an argument that no message can carry
        this.#take(id);
        reject(error);
      }
    });
  }

  end() {
    this.#fail(new Error('it was ended'));
  }

  #cancel(id, reason) {
    const call = this.#take(id);
    call.reject(reason);
    if (call.flag !== null) {
      Atomics.store(call.flag, 0, 1);
      return;
    }
    this.#stop(new QuorError(Status.UNUSABLE, 'another call was cancelled, which ended the worker: call again'));
    this.open().catch((error) => this.#fail(error));
  }

  #receive({id, fraction, result, error}) {
    if (fraction !== undefined) {
      this.#report(id, fraction);
      return;
    }
    const call = this.#take(id);
    if (call === undefined) {  // cancelled when the worker had all but finished
      if (result?.solver !== undefined) {
        this.call('free', [], {}, result.solver).catch(() => {});
      }
    } else if (error !== undefined) {
      call.reject(errorOf(error));
    } else {
      call.resolve(result);
    }
  }

  #report(id, fraction) {
    try {
      this.#waiting.get(id)?.progress(fraction);
    } catch (error) {
      this.#cancel(id, error);
    }
  }

  #take(id) {
    const call = this.#waiting.get(id);
    this.#waiting.delete(id);
    call?.forget();
    return call;
  }

  #fail(error) {
    this.#failure ??= new QuorError(Status.UNUSABLE,
        `the worker cannot be used (${error?.message ?? error}): start another`, {cause: error});
    this.#stop(this.#failure);
  }

  #stop(error) {
    this.#port.end();
    for (const id of [...this.#waiting.keys()]) {
      this.#take(id).reject(error);
    }
  }
}

/** Frees solvers in workers that were forgotten. */
const forgotten = new FinalizationRegistry((handle) => release(handle).catch(() => {}));

async function release({connection, generation, solver}) {
  if (generation === connection.generation) {
    await connection.call('free', [], {}, solver);
  }
}

/** A solver in a worker. */
class RemoteSolver {
  #handle;
  #options;

  constructor(connection, {solver, info, vertexCount, prescribedCount}, {transfer}) {
    this.#handle = {connection, generation: connection.generation, solver};
    this.#options = {transfer};
    Object.assign(this, {info, vertexCount, prescribedCount});
    forgotten.register(this, this.#handle, this);
  }

  solve(...given) {
    return this.#call('solve', given);
  }

  solveMany(...given) {
    return this.#call('solveMany', given);
  }

  async free() {
    forgotten.unregister(this);
    await release(this.#handle);
  }

  async #call(name, given) {
    const {connection, generation, solver} = this.#handle;
    if (generation !== connection.generation) {
      throw new QuorError(Status.UNUSABLE, 'the solver was lost when a cancel ended its worker: make another');
    }
    return connection.call(name, given, this.#options, solver);
  }
}

/** The functions of load(), each with a promise of its result. */
function remoteQuor(connection, options) {
  const remote = {
    with: (others) => remoteQuor(connection, {...options, ...others}),
    end: () => connection.end(),
  };
  for (const name of kNames) {
    remote[name] = (...given) => connection.call(name, given, options);
  }
  remote.solver = async (...given) =>
    new RemoteSolver(connection, await connection.call('solver', given, options), options);
  return Object.freeze(remote);
}

/**
 * @param start   starts a worker: returns {post(message, transfer), end()}
 * @param source  what load() takes, or undefined
 */
export async function connect(start, source) {
  const connection = new Connection(start, source);
  await connection.open();
  const remote = remoteQuor(connection, {});
  remote.warmUp().catch(() => {});  // in the background: a first call that follows at once waits for it
  return remote;
}

function canShare() {
  return typeof SharedArrayBuffer === 'function' && (globalThis.crossOriginIsolated ?? true);
}

/** The buffers of all typed arrays among the arguments, each once. */
function buffersOf(given) {
  const arrays = given.flatMap((value) => (isPlain(value) ? Object.values(value) : [value]));
  return [...new Set(arrays.filter(ArrayBuffer.isView).map(({buffer}) => buffer))]
      .filter((buffer) => buffer instanceof ArrayBuffer);
}

function isPlain(value) {
  return value !== null && typeof value === 'object' && !ArrayBuffer.isView(value) && !Array.isArray(value);
}

/** An error of the class that it had in the worker. */
function errorOf({name, message, detail}) {
  if (name === 'QuorError') {
    return new QuorError(detail.status, message, detail);
  }
  const Type = {TypeError, RangeError}[name] ?? Error;
  return new Type(message);
}
