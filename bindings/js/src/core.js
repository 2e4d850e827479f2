// The module's memory and its calls. Everything that knows addresses is here.

import {QuorError, Status} from './errors.js';

/**
 * One instance of the module. Its memory only grows; ending the worker that holds it, or dropping
 * every reference, gives it back.
 */
export class Core {
  #exports = null;
  #progress = null;
  #thrown = null;
  #isUnusable = false;

  /** @param {BufferSource | WebAssembly.Module | Response | Promise<Response>} source */
  static async instantiate(source) {
    const core = new Core();
    const made = await instantiate(await source, core.#imports());
    core.#exports = made.exports;
    core.#exports._initialize();
    return core;
  }

  #imports() {
    const now = (_clock, _precision, address) => {
      const view = new DataView(this.#exports.memory.buffer);
      view.setBigUint64(address >>> 0, BigInt(Math.round(performance.now() * 1e6)), true);
      return 0;
    };
    return {
      env: {quorProgress: (fraction) => this.#report(fraction), emscripten_notify_memory_growth() {}},
      wasi_snapshot_preview1: {
        clock_time_get: now,
        proc_exit(code) { throw new Error(`quor: the module ended with code ${code}`); },
      },
    };
  }

  /** An exception must not cross the module's frames: it cancels, and is thrown when they are left. */
  #report(fraction) {
    try {
      return this.#progress(fraction) === true ? 1 : 0;
    } catch (error) {
      this.#thrown = {error};
      return 1;
    }
  }

  /**
   * Runs calls with arrays that live until `run` returns.
   * @template T
   * @param {(frame: Frame) => T} run
   * @param {((fraction: number) => unknown) | undefined} [progress]
   * @returns {T}
   */
  frame(run, progress) {
    if (this.#isUnusable) {
      throw new QuorError(Status.UNUSABLE, 'this instance failed before and cannot be used: load another');
    }
    if (this.#progress !== null) {
      throw new QuorError(Status.BAD_ARGUMENT, 'a progress function must not call the library: it is at work');
    }
    const frame = new Frame(this, this.#exports);
    this.#progress = progress ?? null;
    try {
      return run(frame);
    } catch (error) {
      this.#isUnusable ||= error instanceof WebAssembly.RuntimeError || error instanceof RangeError;
      throw error;
    } finally {
      this.#progress = null;
      if (!this.#isUnusable) {
        frame.release();
      }
    }
  }

  /** What a progress function threw during the last call, once. */
  takeThrown() {
    const thrown = this.#thrown;
    this.#thrown = null;
    return thrown;
  }

  /** Releases a solver; a broken instance keeps it. */
  freeSolver(address) {
    if (!this.#isUnusable) {
      this.#exports.quorkitFreeSolver(address);
    }
  }

  /** The English text of a status. */
  textOf(status) {
    const bytes = new Uint8Array(this.#exports.memory.buffer, this.#exports.quorkitStatusText(status) >>> 0);
    return new TextDecoder().decode(bytes.slice(0, bytes.indexOf(0)));
  }
}

async function instantiate(source, imports) {
  if (source instanceof WebAssembly.Module) {
    return WebAssembly.instantiate(source, imports);
  }
  const isResponse = typeof Response === 'function' && source instanceof Response;
  if (isResponse && !source.ok) {
    throw new Error(`quor: ${source.url}: ${source.status} ${source.statusText}`);
  }
  const bytes = isResponse ? await source.arrayBuffer() : source;
  return (await WebAssembly.instantiate(bytes, imports)).instance;
}

/** The arrays of one call, in the module's memory. */
export class Frame {
  #core;
  #held = [];

  constructor(core, exports) {
    this.#core = core;
    this.library = exports;
  }

  /** Room for so many bytes; addresses above 2 GB come as negative numbers. */
  room(bytes) {
    const address = this.library.malloc(bytes || 1) >>> 0;
    if (address === 0) {
      throw new QuorError(Status.OUT_OF_MEMORY, this.#core.textOf(Status.OUT_OF_MEMORY));
    }
    this.#held.push(address);
    return address;
  }

  /** The address of a copy of a typed array; 0 for none. */
  put(array) {
    if (array === null || array === undefined) {
      return 0;
    }
    const address = this.room(array.byteLength);
    new Uint8Array(this.library.memory.buffer, address, array.byteLength)
        .set(new Uint8Array(array.buffer, array.byteOffset, array.byteLength));
    return address;
  }

  /** The address of a text with a zero at its end. */
  putText(text) {
    return this.put(new TextEncoder().encode(`${text}\0`));
  }

  /** A copy of an array; views would die when the memory grows. */
  take(Type, address, length) {
    return new Type(this.library.memory.buffer, address >>> 0, length).slice();
  }

  word(address) {
    return this.take(Uint32Array, address, 1)[0];
  }

  /** Throws what a progress function threw, or the error that the status means. */
  require(status, text) {
    const thrown = this.#core.takeThrown();
    if (thrown) {
      throw thrown.error;
    }
    if (status !== Status.DONE) {
      throw new QuorError(status, status === Status.BAD_ARGUMENT && text ? text : this.#core.textOf(status));
    }
  }

  release() {
    for (const address of this.#held) {
      this.library.free(address);
    }
    this.#held = [];
  }
}
