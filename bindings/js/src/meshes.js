// Operations on meshes that need no solver: weld, check, clean, refine, flip, faces, areas, flow.

import {integer, integers, mesh, number, putMesh, reals, someIntegers, someReals} from './arrays.js';
import {kReportBytes, readCleaning, readFaces, readMesh, readRefinement, readReport} from './layout.js';

const kMostTriangles = 0x7fffffff;

export function weld(core, points, triangles, tolerance) {
  const {vertices, triangles: kept, pointMap} = weldWithOrigins(core, points, triangles, tolerance);
  return {vertices, triangles: kept, pointMap};
}

export function weldWithOrigins(core, points, triangles, tolerance) {
  const soup = mesh(points, triangles, 'points');
  number('tolerance', tolerance);
  return core.frame((frame) => {
    const given = putMesh(frame, soup);
    const [, vertices, , corners] = given;  // the results may take the place of the inputs
    const map = frame.room(4 * soup.n);
    const origins = frame.room(4 * soup.m);
    const counts = frame.room(8);
    frame.call('quorkitWeldOrigins', ...given, vertices, corners, map, origins, counts, counts + 4, tolerance);
    const [n, m] = frame.take(Int32Array, counts, 2);
    return {
      vertices: frame.take(Float64Array, vertices, 3 * n),
      triangles: frame.take(Int32Array, corners, 3 * m),
      pointMap: frame.take(Int32Array, map, soup.n),
      triangleOrigins: frame.take(Int32Array, origins, m),
    };
  });
}

export function check(core, vertices, triangles, tags) {
  const given = mesh(vertices, triangles);
  const marks = someIntegers('tags', tags, given.n);
  return core.frame((frame) => {
    const out = frame.room(kReportBytes);
    frame.call('quorkitCheck', ...putMesh(frame, given), frame.put(marks), out);
    return readReport(frame, out);
  });
}

export function checkRegions(core, vertices, triangles, regions, values) {
  const given = mesh(vertices, triangles);
  const numbers = integers('regions', regions, given.n);
  const prescribed = someReals('values', values, given.n);
  return core.frame((frame) => {
    const out = frame.room(kReportBytes);
    frame.call('quorkitCheckRegions', ...putMesh(frame, given), frame.put(numbers), frame.put(prescribed), out);
    return readReport(frame, out);
  });
}

export function clean(core, vertices, triangles) {
  const given = mesh(vertices, triangles);
  return core.frame((frame) => frame.made('quorkitFreeMesh',
      (address) => ({...readMesh(frame, address), ...readCleaning(frame, address)}),
      'quorkitClean', ...putMesh(frame, given)));
}

export function refine(core, vertices, triangles, {longestEdge, triangleCount, sizes} = {}) {
  if ((longestEdge === undefined) === (triangleCount === undefined)) {
    throw new TypeError('refine: give either longestEdge or triangleCount');
  }
  if (sizes !== undefined && longestEdge === undefined) {
    throw new TypeError('refine: sizes go with longestEdge');
  }
  const given = mesh(vertices, triangles);
  const lengths = someReals('sizes', sizes, given.n);
  return core.frame((frame) => {
    const read = (address) => ({...readMesh(frame, address), ...readRefinement(frame, address)});
    const arrays = putMesh(frame, given);
    if (triangleCount !== undefined) {
      return frame.made('quorkitFreeMesh', read, 'quorkitRefineTo', ...arrays,
          Math.min(Math.max(integer('triangleCount', triangleCount, -Infinity, Infinity), 0), kMostTriangles));
    }
    number('longestEdge', longestEdge);
    return lengths === null ?
      frame.made('quorkitFreeMesh', read, 'quorkitRefine', ...arrays, longestEdge) :
      frame.made('quorkitFreeMesh', read, 'quorkitRefineGraded', ...arrays, longestEdge, frame.put(lengths));
  });
}

export function flip(core, vertices, triangles, faces) {
  const given = mesh(vertices, triangles);
  const labels = someIntegers('faces', faces, given.m);
  return core.frame((frame) => frame.made('quorkitFreeMesh', (address) => readMesh(frame, address),
      'quorkitFlip', ...putMesh(frame, given), frame.put(labels)));
}

export function faces(core, vertices, triangles, angle = 30) {
  const given = mesh(vertices, triangles);
  number('angle', angle);
  return core.frame((frame) => frame.made('quorkitFreeFaces',
      (address) => readFaces(frame, address, given.m), 'quorkitFaces', ...putMesh(frame, given), angle));
}

export function areas(core, vertices, triangles) {
  const given = mesh(vertices, triangles);
  return core.frame((frame) => {
    const out = frame.room(8 * given.n);
    frame.call('quorkitAreas', ...putMesh(frame, given), out);
    return frame.take(Float64Array, out, given.n);
  });
}

export function flow(core, vertices, triangles, field, regions, regionCount) {
  const given = mesh(vertices, triangles);
  const values = reals('field', field, given.n);
  const numbers = integers('regions', regions, given.n);
  const count = integer('regionCount',
      regionCount ?? numbers.reduce((largest, region) => Math.max(largest, region), -1) + 1);
  return core.frame((frame) => {
    const out = frame.room(8 * count);
    frame.call('quorkitFlow', ...putMesh(frame, given), frame.put(values), frame.put(numbers), count, out);
    return frame.take(Float64Array, out, count);
  });
}

export function gradients(core, vertices, triangles, field) {
  const given = mesh(vertices, triangles);
  const values = reals('field', field, given.n);
  return core.frame((frame) => {
    const out = frame.room(24 * given.m);
    frame.call('quorkitGradients', ...putMesh(frame, given), frame.put(values), out);
    return frame.take(Float64Array, out, 3 * given.m);
  });
}
