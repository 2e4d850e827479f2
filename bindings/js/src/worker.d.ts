import type {Integers, Quor, Reals, Solver, SolverOptions, WithinOptions} from './index.js';

export {QuorError, Reason, Status} from './index.js';

export interface CallOptions {
  /** Called with the fraction that is done. What it throws cancels the call. */
  progress?: (fraction: number) => void;
  /**
   * Cancels the call, which rejects with the signal's reason. Where memory cannot be shared this ends the
   * worker and starts another: solvers made before are lost.
   */
  signal?: AbortSignal;
  /** Moves the buffers of typed arrays into the worker instead of copying; they are empty afterwards. */
  transfer?: boolean;
}

/** A solver in a worker. */
export interface RemoteSolver extends Pick<Solver, 'info' | 'vertexCount' | 'prescribedCount'> {
  solve(prescribed: Reals, source?: Reals): Promise<Float64Array>;
  solveMany(prescribed: Reals, source?: Reals): Promise<Float64Array>;
  free(): Promise<void>;
}

/** The functions of `Quor`, each with a promise of its result. They run one after the other. */
export type RemoteQuor = {
  [Name in Exclude<keyof Quor, 'solver' | 'solveWithin'>]:
    (...given: Parameters<Quor[Name]>) => Promise<ReturnType<Quor[Name]>>;
} & {
  solver(vertices: Reals, triangles: Integers, tags: Integers,
      options?: Omit<SolverOptions, 'progress'>): Promise<RemoteSolver>;
  solveWithin(vertices: Reals, triangles: Integers, tolerance: number,
      options?: Omit<WithinOptions, 'progress'>): Promise<ReturnType<Quor['solveWithin']>>;
  /** The same worker with options for the calls that are made through the result. */
  with(options: CallOptions): RemoteQuor;
  /** Ends the worker, which gives all its memory back. Calls that wait are rejected. */
  end(): void;
};

export interface WorkerOptions {
  /** What `load` takes, but no Response. */
  source?: BufferSource | WebAssembly.Module;
  /** Starts a worker that runs `quor/worker-script`, for bundlers that do not find it themselves. */
  worker?: () => unknown;
}

/** Starts a worker, loads the module in it and warms it up in the background. */
export declare function startWorker(options?: WorkerOptions): Promise<RemoteQuor>;
