/**
 * Numeric geometry on triangle meshes: weld, check, refine, solve for harmonic fields, show them.
 *
 * Coordinates are three numbers per vertex, triangles three 0-based vertex indices each, tags, values
 * and fields one entry per vertex, all in one flat array. A `Float64Array` or `Int32Array` is copied
 * once; any other array of numbers is converted first. Results are new arrays, which belong to the caller.
 *
 * Faults of arguments throw a `TypeError` (wrong kind), a `RangeError` (wrong length), or a `QuorError`
 * (refused by the library, which names the argument and the entry).
 */

declare global {
  interface SymbolConstructor {
    readonly dispose: unique symbol;
  }
}

/** Numbers, in a typed array or a plain one. */
export type Reals = ArrayLike<number>;
/** Integers of 32 bits, in a typed array or a plain one. */
export type Integers = ArrayLike<number>;

export declare const Status: {
  readonly DONE: 0;
  readonly BAD_ARGUMENT: 1;
  readonly OUT_OF_MEMORY: 2;
  readonly TOO_LARGE: 3;
  readonly FILE: 4;
  readonly CANCELLED: 5;
  readonly INTERNAL: 6;
  /** The instance failed earlier, or its worker ended: load another. */
  readonly UNUSABLE: 100;
};

/** What is wrong with a bad argument. */
export declare const Reason: {
  readonly NULL: 1;
  readonly OUT_OF_RANGE: 2;
  readonly NOT_FINITE: 3;
  readonly DEGENERATE: 4;
  readonly NO_EDGE: 5;
  readonly REPEATED_CORNER: 23;
  readonly UNUSED_VERTEX: 24;
};

/** The library refused a call, or could not finish it. `message` names the argument and the remedy. */
export declare class QuorError extends Error {
  constructor(status: number, text: string,
      detail?: {reason?: number; argument?: string; index?: number; cause?: unknown});
  /** One of `Status`. */
  readonly status: number;
  /** One of `Reason` for a bad argument, or 0. */
  readonly reason: number;
  /** The name of the argument, or "". */
  readonly argument: string;
  /** Which vertex, triangle or value of the argument; -1 if none or all are meant. */
  readonly index: number;
}

/** Called now and then with the fraction that is done, 0 to 1. Return `true` to cancel. */
export type Progress = (fraction: number) => unknown;

export interface Mesh {
  vertices: Float64Array;
  triangles: Int32Array;
}

export interface Welded extends Mesh {
  /** The vertex that each point became. */
  pointMap: Int32Array;
}

export interface WithOrigins extends Mesh {
  /** The input triangle that each triangle is, or is a part of. */
  triangleOrigins: Int32Array;
}

export interface WeldedWithOrigins extends Welded, WithOrigins {}

export interface CleanMesh extends WithOrigins {
  /** What each input vertex became; -1 if it was dropped. */
  vertexMap: Int32Array;
  /** Degenerate triangles that could not be removed without a crack. */
  degenerateCount: number;
}

/** It begins with the vertices of the input. */
export interface RefinedMesh extends WithOrigins {
  /** Two per vertex: the vertices whose midpoint it is; twice itself for those of the input. */
  vertexOrigins: Int32Array;
  /** The length that it was refined to. */
  longestEdge: number;
}

/** How often something was found, and the index of the first one, -1 if there is none. */
export interface Finding {
  count: number;
  first: number;
}

/** What `check` finds; see quorkitCheck in quorkit.h. `first` is a triangle or a vertex, as noted. */
export interface Report {
  longestEdge: number;
  area: number;
  diagonal: number;
  /** Triangles. */
  cornersOutOfRange: Finding;
  /** Triangles. */
  repeatedCorners: Finding;
  /** Vertices. */
  notFinite: Finding;
  /** Triangles. */
  flatTriangles: Finding;
  /** Triangles. */
  needles: Finding;
  /** Vertices. */
  unusedVertices: Finding;
  /** Vertices. */
  prescribedVertices: Finding;
  /** Connected components, each by its first vertex. */
  pieces: Finding;
  /** Connected components without a prescribed vertex. */
  unprescribedPieces: Finding;
  /** Edges of two or more triangles, each by its first triangle. */
  negativeWeights: Finding;
  /** Edges of one triangle. */
  obtuseBorders: Finding;
  /** Vertices. */
  isolatedPrescribed: Finding;
  /** Vertices. */
  touchingRegions: Finding;
}

export interface Faces {
  faceCount: number;
  chainCount: number;
  /** The face of each triangle. */
  faces: Int32Array;
  /** Two per feature edge: its ends, the lower vertex first. */
  edges: Int32Array;
  /** The chain of each feature edge. */
  chains: Int32Array;
}

/** Either a longest edge, with sizes or without, or a number of triangles. */
export type RefineOptions =
  | {longestEdge: number; sizes?: Reals; triangleCount?: undefined}
  | {triangleCount: number; longestEdge?: undefined; sizes?: undefined};

export interface SolverOptions {
  progress?: Progress;
  /** Whether a connected component without a prescribed vertex, or a singular matrix, is an error. */
  unprescribed?: 'throw' | 'ignore';
}

export interface WithinOptions {
  /** Values of prescribed triangles, NaN for free ones. */
  triangleValues?: Reals;
  /** Two per prescribed edge: its ends. With `edgeValues`. */
  edges?: Integers;
  edgeValues?: Reals;
  /** Values of vertices, NaN for free ones: prescribes the edges between two. */
  vertexValues?: Reals;
  /** Source densities of the triangles, per area; positive where they lower the field. */
  sources?: Reals;
  /** Face numbers of the triangles; edges between two faces stay. */
  faces?: Integers;
  /** The tolerance is a share of the field's span. */
  shareOfSpan?: boolean;
  /** The most triangles of the result; 0: 4,000,000. */
  triangleLimit?: number;
  progress?: Progress;
}

export interface Solution extends WithOrigins {
  field: Float64Array;
  /** The estimated largest error, in the unit of the field. */
  error: number;
  /** What was asked for, in the unit of the field. */
  tolerance: number;
  /** Whether the error is at most the tolerance. */
  isReached: boolean;
  /** How often it was solved. */
  rounds: number;
  /** Two per vertex: the vertices whose midpoint each was made as. */
  vertexOrigins: Int32Array;
  /** Input vertices where regions of different values meet. */
  jumps: Int32Array;
  /** No error is promised nearer to them than this. */
  jumpRadius: number;
}

/**
 * A factorized mesh, for any number of solves. It holds memory of the module until `free()`; a forgotten
 * one is freed when it is collected, at no particular time.
 */
export interface Solver {
  /** 0 if the factorization succeeded, 1 if a pivot was exactly zero. */
  readonly info: number;
  readonly vertexCount: number;
  readonly prescribedCount: number;
  /** A copy: for each place in solver order the caller's index of its vertex. */
  readonly order: Int32Array;
  /** A copy of the coordinates in solver order. */
  readonly vertices: Float64Array;
  /** A copy of the corners in solver order. */
  readonly triangles: Int32Array;
  /**
   * The field with the given values at the prescribed vertices that is harmonic at the free ones, or has
   * K x = -source there.
   */
  solve(prescribed: Reals, source?: Reals): Float64Array;
  /** Several fields at once, one after the other in each array; each has the bits of `solve`. */
  solveMany(prescribed: Reals, source?: Reals): Float64Array;
  /** Releases the memory. Every later use throws; freeing again does nothing. */
  free(): void;
  [Symbol.dispose](): void;
}

/** One instance of the module. Its memory grows and never shrinks: drop the instance to release it. */
export interface Quor {
  /** Merges points closer than a tolerance, drops collapsed and repeated triangles. */
  weld(points: Reals, triangles: Integers, tolerance: number): Welded;
  weldWithOrigins(points: Reals, triangles: Integers, tolerance: number): WeldedWithOrigins;
  /** Finds what is wrong with a mesh and its tags. */
  check(vertices: Reals, triangles: Integers, tags?: Integers): Report;
  /** As `check`, with region numbers in place of tags; vertices with a negative one are free. */
  checkRegions(vertices: Reals, triangles: Integers, regions: Integers, values?: Reals): Report;
  /** Drops degenerate triangles without opening cracks, and unused vertices. */
  clean(vertices: Reals, triangles: Integers): CleanMesh;
  /** Splits edges until none is longer than a length, or up to a number of triangles. */
  refine(vertices: Reals, triangles: Integers, options: RefineOptions): RefinedMesh;
  /** Flips edges inside flat faces until the triangles there are well shaped. */
  flip(vertices: Reals, triangles: Integers, faces?: Integers): WithOrigins;
  /** Finds faces and feature edges. `angle` is in degrees, 30 by default. */
  faces(vertices: Reals, triangles: Integers, angle?: number): Faces;
  /** A third of the areas around each vertex. */
  areas(vertices: Reals, triangles: Integers): Float64Array;
  /** The total flow through each region; positive where it feeds the surface. */
  flow(vertices: Reals, triangles: Integers, field: Reals, regions: Integers,
      regionCount?: number): Float64Array;
  /** Three components per triangle. */
  gradients(vertices: Reals, triangles: Integers, field: Reals): Float64Array;
  /** Factorizes a mesh. Vertices tagged 1, 2 or 3 are prescribed, all others free. */
  solver(vertices: Reals, triangles: Integers, tags: Integers, options?: SolverOptions): Solver;
  /** Refines until the estimated error of the field is at most a tolerance. */
  solveWithin(vertices: Reals, triangles: Integers, tolerance: number, options?: WithinOptions): Solution;
  /** Red, green, blue and alpha of each value, from dark violet at `low` to yellow at `high`. */
  colours(field: Reals, low?: number, high?: number): Uint8Array;
  /**
   * The text of an OBJ file, byte for byte what the other languages write. `name` is that of the files,
   * without ending; `margin` keeps the ends of the field away from those of the ramp, 0.001 by default.
   */
  objText(vertices: Reals, triangles: Integers, field: Reals, name: string, margin?: number): string;
  /** The text of the material file that goes with it. */
  mtlText(): string;
  /** Packs an integer in -1 .. 65534 into three coordinates. */
  encodeIntegerToSphere(value: number): Float32Array;
  decodeIntegerFromSphere(x: number, y: number, z: number): number;
  /** Runs every step on a small square, so that the first real call runs optimized code. */
  warmUp(): void;
}

/** Where the module comes from, if not from inside the package. */
export type Source = BufferSource | WebAssembly.Module | Response | Promise<Response>;

/** Loads the module. */
export declare function load(source?: Source): Promise<Quor>;
