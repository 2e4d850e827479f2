// Meshes and numbers for the tests, the same as those of tests/support.

/** Numbers in [0, 1), as tests/api/fingerprint.cpp makes them. */
export class Numbers {
  #state = 1n;

  next() {
    this.#state = BigInt.asUintN(64, this.#state * 6364136223846793005n + 1442695040888963407n);
    return Number(this.#state >> 33n) * 2 ** -31;
  }
}

/** A grid of nx x ny vertices; `place` gives the coordinates of u and v in 0 .. 1. */
export function gridMesh(nx, ny, place = (u, v) => [u, v, 0]) {
  const vertices = [];
  const triangles = [];
  for (let j = 0; j < ny; ++j) {
    for (let i = 0; i < nx; ++i) {
      vertices.push(...place(i / (nx - 1), j / (ny - 1)));
      const a = i + nx * j;
      if (i + 1 < nx && j + 1 < ny) {
        triangles.push(a, a + 1, a + nx + 1, a, a + nx + 1, a + nx);
      }
    }
  }
  return {vertices: Float64Array.from(vertices), triangles: Int32Array.from(triangles)};
}

/** Tags of a grid: its first and its last column are prescribed. */
export function tagEnds(nx, ny) {
  return Int32Array.from({length: nx * ny}, (_, v) => (v % nx === 0 ? 1 : v % nx === nx - 1 ? 3 : 0));
}

/** Values of a grid: its column, as a number in 0 .. 1. */
export function columns(nx, ny) {
  return Float64Array.from({length: nx * ny}, (_, v) => (v % nx) / (nx - 1));
}

/** Each triangle with points of its own. */
export function soupOf({vertices, triangles}) {
  const points = new Float64Array(3 * triangles.length);
  triangles.forEach((v, k) => points.set(vertices.subarray(3 * v, 3 * v + 3), 3 * k));
  return {vertices: points, triangles: triangles.map((_, k) => k)};
}
