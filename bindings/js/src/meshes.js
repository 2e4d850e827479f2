// Meshes: weld, check, clean, refine, areas.

import {integers, mesh, number, reals, requireTriples} from './arrays.js';
import {QuorError, Status} from './errors.js';

/** What quorkitCheck finds, in the order of QuorkitReport behind its three lengths. */
const kFindings = ['cornersOutOfRange', 'repeatedCorners', 'notFinite', 'flatTriangles', 'needles',
  'unusedVertices', 'prescribedVertices', 'pieces', 'unprescribedPieces'];
const kReportBytes = 512;  // room for more than the report has

export function weld(core, points, triangles, tolerance) {
  const soup = mesh(points, triangles);
  number('tolerance', tolerance);
  return core.frame((frame) => {
    const vertices = frame.put(soup.vertices);
    const corners = frame.put(soup.triangles);
    const map = frame.room(4 * soup.n);
    const counts = frame.room(8);
    frame.require(
        frame.library.quorkitWeld(soup.n, vertices, soup.m, corners, vertices, corners, map, counts,
            counts + 4, tolerance),
        `tolerance: ${tolerance} is negative`);
    const [n, m] = frame.take(Int32Array, counts, 2);
    return {
      vertices: frame.take(Float64Array, vertices, 3 * n),
      triangles: frame.take(Int32Array, corners, 3 * m),
      pointMap: frame.take(Int32Array, map, soup.n),
    };
  });
}

export function check(core, vertices, triangles, tags) {
  const v = reals('vertices', vertices);
  requireTriples('vertices', v);
  const t = integers('triangles', triangles);
  requireTriples('triangles', t);
  const given = tags === undefined ? null : integers('tags', tags, v.length / 3);
  return core.frame((frame) => {
    const out = frame.room(kReportBytes);
    frame.require(frame.library.quorkitCheck(v.length / 3, frame.put(v), t.length / 3, frame.put(t),
        frame.put(given), out));
    const [longestEdge, area, diagonal] = frame.take(Float64Array, out, 3);
    const report = {longestEdge, area, diagonal};
    const numbers = frame.take(Int32Array, out + 24, 2 * kFindings.length);
    kFindings.forEach((name, k) => {
      report[name] = {count: numbers[2 * k], first: numbers[2 * k + 1]};
    });
    return report;
  });
}

export function clean(core, vertices, triangles) {
  const given = mesh(vertices, triangles);
  return core.frame((frame) => derived(frame, (out) => frame.library.quorkitClean(
      given.n, frame.put(given.vertices), given.m, frame.put(given.triangles), out),
  'vertices: a coordinate that a triangle uses is not finite'));
}

export function refine(core, vertices, triangles, {longestEdge, triangleCount, sizes} = {}) {
  if ((longestEdge === undefined) === (triangleCount === undefined)) {
    throw new TypeError('refine: give either longestEdge or triangleCount');
  }
  if (sizes !== undefined && longestEdge === undefined) {
    throw new TypeError('refine: sizes go with longestEdge');
  }
  const given = mesh(vertices, triangles);
  const lengths = sizes === undefined ? null : reals('sizes', sizes, given.n);
  return core.frame((frame) => {
    const arrays = [given.n, frame.put(given.vertices), given.m, frame.put(given.triangles)];
    const {library} = frame;
    return derived(frame, (out) => {
      if (triangleCount !== undefined) {
        return library.quorkitRefineTo(...arrays, number('triangleCount', triangleCount), out);
      }
      number('longestEdge', longestEdge);
      return lengths === null ? library.quorkitRefine(...arrays, longestEdge, out) :
        library.quorkitRefineGraded(...arrays, longestEdge, frame.put(lengths), out);
    }, 'refine: coordinates must be finite, the corners of a triangle different, and lengths above 0');
  });
}

export function areas(core, vertices, triangles) {
  const given = mesh(vertices, triangles);
  return core.frame((frame) => {
    const out = frame.room(8 * given.n);
    frame.require(frame.library.quorkitAreas(given.n, frame.put(given.vertices), given.m,
        frame.put(given.triangles), out));
    return frame.take(Float64Array, out, given.n);
  });
}

/** A copy of a QuorkitMesh that `make` writes the address of; the mesh is released. */
export function derived(frame, make, text) {
  const out = frame.room(4);
  frame.require(make(out), text);
  const address = frame.word(out);
  try {
    const [n, m, vertices, triangles, origins, vertexOrigins, map, mapCount] =
      frame.take(Uint32Array, address, 8);
    return {
      vertices: frame.take(Float64Array, vertices, 3 * n),
      triangles: frame.take(Int32Array, triangles, 3 * m),
      triangleOrigins: frame.take(Int32Array, origins, m),
      vertexOrigins: frame.take(Int32Array, vertexOrigins, 2 * n),
      vertexMap: map === 0 ? null : frame.take(Int32Array, map, mapCount),
      longestEdge: frame.take(Float64Array, address + 32, 1)[0],
    };
  } finally {
    frame.library.quorkitFreeMesh(address);
  }
}

/** Refuses pieces without a prescribed vertex, whose field nothing defines. */
export function requirePrescribed(report) {
  const {count, first} = report.unprescribedPieces;
  if (count > 0) {
    throw new QuorError(Status.BAD_ARGUMENT,
        `tags: ${count} pieces of the mesh have no prescribed vertex; the first has vertex ${first}: ` +
        'prescribe one in each, or pass unprescribed: "ignore"');
  }
}
