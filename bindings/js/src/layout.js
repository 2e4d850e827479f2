// Structures of quorkit.h in the module's memory: pointers have 4 bytes. module.cpp asserts the offsets.

export const kErrorBytes = 532;
export const kErrorText = 20;
export const kReportBytes = 128;
export const kProblemBytes = 64;
export const kInfoBytes = 28;

/** The findings of a QuorkitReport in their order, behind three lengths. */
export const kFindings = ['cornersOutOfRange', 'repeatedCorners', 'notFinite', 'flatTriangles', 'needles',
  'unusedVertices', 'prescribedVertices', 'pieces', 'unprescribedPieces', 'negativeWeights',
  'obtuseBorders', 'isolatedPrescribed', 'touchingRegions'];

/** Vertices, triangles and origins: what every QuorkitMesh has. */
export function readMesh(frame, address) {
  const [n, m, vertices, triangles, origins] = frame.take(Uint32Array, address, 5);
  return {
    vertices: frame.take(Float64Array, vertices, 3 * n),
    triangles: frame.take(Int32Array, triangles, 3 * m),
    triangleOrigins: frame.take(Int32Array, origins, m),
  };
}

/** The rest of a mesh that was cleaned. */
export function readCleaning(frame, address) {
  const [map, count] = frame.take(Uint32Array, address + 24, 2);
  return {
    vertexMap: frame.take(Int32Array, map, count),
    degenerateCount: frame.word(address + 40),
  };
}

/** The rest of a mesh that was refined. */
export function readRefinement(frame, address) {
  const n = frame.word(address);
  return {
    vertexOrigins: frame.take(Int32Array, frame.word(address + 20), 2 * n),
    longestEdge: frame.take(Float64Array, address + 32, 1)[0],
  };
}

export function readFaces(frame, address, m) {
  const [faceCount, chainCount, e, faces, edges, chains] = frame.take(Uint32Array, address, 6);
  return {
    faceCount,
    chainCount,
    faces: frame.take(Int32Array, faces, m),
    edges: frame.take(Int32Array, edges, 2 * e),
    chains: frame.take(Int32Array, chains, e),
  };
}

export function readReport(frame, address) {
  const [longestEdge, area, diagonal] = frame.take(Float64Array, address, 3);
  const report = {longestEdge, area, diagonal};
  const numbers = frame.take(Int32Array, address + 24, 2 * kFindings.length);
  kFindings.forEach((name, k) => {
    report[name] = {count: numbers[2 * k], first: numbers[2 * k + 1]};
  });
  return report;
}

/** Fills in a QuorkitProblem. Members that are missing are null or 0. */
export function putProblem(frame, problem) {
  const {mesh} = problem;
  const words = new Int32Array(kProblemBytes / 4);
  words.set([mesh.n, frame.put(mesh.vertices), mesh.m, frame.put(mesh.triangles),
    frame.put(problem.triangleValues), (problem.edges?.length ?? 0) / 2, frame.put(problem.edges),
    frame.put(problem.edgeValues), frame.put(problem.vertexValues), frame.put(problem.sources),
    frame.put(problem.faces)]);
  new Float64Array(words.buffer)[6] = problem.tolerance;
  words[14] = problem.shareOfSpan ? 1 : 0;
  words[15] = problem.triangleLimit;
  return frame.put(words);
}

/** Why there is no field, or the solution. */
export function readSolution(frame, address) {
  const [outcome, vertex] = frame.take(Int32Array, address, 2);
  if (outcome !== 0) {
    return {outcome, vertex};
  }
  const words = frame.take(Uint32Array, address, 18);
  const [, , n, m, vertices, triangles, origins, vertexOrigins, field] = words;
  const reals = frame.take(Float64Array, address, 10);
  return {
    outcome,
    solution: {
      vertices: frame.take(Float64Array, vertices, 3 * n),
      triangles: frame.take(Int32Array, triangles, 3 * m),
      field: frame.take(Float64Array, field, n),
      error: reals[5],
      tolerance: reals[6],
      isReached: words[14] !== 0,
      rounds: words[15],
      triangleOrigins: frame.take(Int32Array, origins, m),
      vertexOrigins: frame.take(Int32Array, vertexOrigins, 2 * n),
      jumps: frame.take(Int32Array, words[17], words[16]),
      jumpRadius: reals[9],
    },
  };
}
