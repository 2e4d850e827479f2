// The module's memory and its calls. Everything that knows addresses is here and in layout.js.

import {QuorError, Status, badArgument} from './errors.js';
import {kErrorBytes, kErrorText} from './layout.js';

/** Names of arguments that differ from those in quorkit.h. */
const kNames = {prescribedValues: 'prescribed', sourceValues: 'source', isShareOfSpan: 'shareOfSpan'};

/**
 * One instance of the module. Its memory only grows; ending the worker that holds it, or dropping
 * every reference, gives it back.
 */
export class Core {
  #exports = null;
  #progress = null;
  #isAtWork = false;
  #thrown = null;
  #failure = null;

  /** @param {BufferSource | WebAssembly.Module | Response | Promise<Response>} source */
  static async instantiate(source) {
    const core = new Core();
    core.#exports = (await instantiate(await source, core.#imports())).exports;
    core.#exports._initialize();
    return core;
  }

  #imports() {
    return {
      env: {
        quorProgress: (fraction) => this.#report(fraction),
        emscripten_notify_memory_growth() {},
      },
      wasi_snapshot_preview1: {
        clock_time_get: (_clock, _precision, address) => {
          const view = new DataView(this.#exports.memory.buffer);
          view.setBigUint64(address >>> 0, BigInt(Math.round(performance.now() * 1e6)), true);
          return 0;
        },
        proc_exit(code) {
          throw new Error(`quor: the module ended with code ${code}`);
        },
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
   * @param {(fraction: number) => unknown} [progress]
   * @returns {T}
   */
  frame(run, progress) {
    if (this.#isAtWork) {
      throw badArgument('progress', 'must not call the instance that reports it: load a second instance');
    }
    if (progress !== undefined && typeof progress !== 'function') {
      throw new TypeError(`progress: ${String(progress)} is not a function`);
    }
    const frame = new Frame(this);
    this.#progress = progress;
    this.#isAtWork = true;
    try {
      return run(frame);
    } finally {
      this.#isAtWork = false;
      this.#progress = undefined;
      this.#thrown = null;
      if (this.#failure === null) {
        frame.release();
      }
    }
  }

  /**
   * Calls an exported function. Nothing may throw through the module: after a trap, an exhausted stack
   * or an exit its memory is in no known state, and the instance is never called again.
   */
  enter(name, ...given) {
    if (this.#failure !== null) {
      throw new QuorError(Status.UNUSABLE, 'this instance failed earlier and cannot be used: load another',
          {cause: this.#failure});
    }
    try {
      return this.#exports[name](...given);
    } catch (error) {
      this.#failure = error;
      throw new QuorError(Status.UNUSABLE, `${name} failed (${error}): load another instance`, {cause: error});
    }
  }

  /** Throws what the progress function threw during the last call, if it threw. */
  rethrow() {
    if (this.#thrown !== null) {
      throw this.#thrown.error;
    }
  }

  get isUsable() {
    return this.#failure === null;
  }

  /** Memory as it is now: growing replaces the buffer. */
  get buffer() {
    return this.#exports.memory.buffer;
  }
}

async function instantiate(source, imports) {
  if (source instanceof WebAssembly.Module) {
    return WebAssembly.instantiate(source, imports);
  }
  const isResponse = typeof Response === 'function' && source instanceof Response;
  if (isResponse && !source.ok) {
    throw new Error(`quor: cannot load ${source.url}: ${source.status} ${source.statusText}`);
  }
  const bytes = isResponse ? await source.arrayBuffer() : source;
  return (await WebAssembly.instantiate(bytes, imports)).instance;
}

/** The arrays of one call, in the module's memory. */
export class Frame {
  #core;
  #held = [];

  constructor(core) {
    this.#core = core;
  }

  /** Room for so many bytes. Addresses above 2 GB come as negative numbers. */
  room(bytes) {
    const address = this.#core.enter('malloc', bytes || 1) >>> 0;
    if (address === 0) {
      throw new QuorError(Status.OUT_OF_MEMORY, `out of memory: no room for ${bytes} bytes of arguments`);
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
    new Uint8Array(this.#core.buffer, address, array.byteLength)
        .set(new Uint8Array(array.buffer, array.byteOffset, array.byteLength));
    return address;
  }

  /** The address of a text with a zero at its end. */
  putText(text) {
    return this.put(new TextEncoder().encode(`${text}\0`));
  }

  /** A copy of an array; views would die when the memory grows. */
  take(Type, address, length) {
    return length === 0 ? new Type(0) : new Type(this.#core.buffer, address >>> 0, length).slice();
  }

  /** The text that ends with a zero. */
  text(address) {
    const bytes = new Uint8Array(this.#core.buffer, address >>> 0);
    return new TextDecoder().decode(bytes.slice(0, bytes.indexOf(0)));
  }

  word(address) {
    return this.take(Uint32Array, address, 1)[0];
  }

  /** Calls a function without a status. */
  value(name, ...given) {
    return this.#core.enter(name, ...given);
  }

  /** Calls a function that returns a status. Throws what a progress function threw, or a QuorError. */
  call(name, ...given) {
    const error = this.room(kErrorBytes);
    const status = this.#core.enter(name, ...given, error);
    this.#core.rethrow();
    if (status !== Status.DONE) {
      throw this.#errorAt(error);
    }
  }

  /**
   * Calls a function that makes something, and reads that; it is released in any case.
   * @template T
   * @param {string} free           the function that releases it
   * @param {(address: number) => T} read
   * @returns {T}
   */
  made(free, read, name, ...given) {
    const out = this.room(4);
    this.call(name, ...given, out);
    const address = this.word(out);
    try {
      return read(address);
    } finally {
      this.#core.enter(free, address);
    }
  }

  #errorAt(address) {
    const [status, reason, , index] = this.take(Int32Array, address, 4);
    const name = this.text(this.word(address + 8));
    const argument = kNames[name] ?? name;
    let text = this.text(address + kErrorText)
        .replace(/\bquorkit([A-Z])/g, (_, letter) => letter.toLowerCase());
    if (name !== '' && text.startsWith(name)) {
      text = argument + text.slice(name.length);
    }
    return new QuorError(status, text, {reason, argument, index});
  }

  release() {
    for (const address of this.#held) {
      this.#core.enter('free', address);
    }
    this.#held = [];
  }
}
