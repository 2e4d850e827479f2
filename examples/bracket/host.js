import {load} from 'quor';

const quor = await load();

// points: nine coordinates for each triangle of a tessellated part. valueOf(a, b, c), of the coordinates of a
// triangle's corners, says what is prescribed there; NaN for free. Gives arrays for a 3D view, and the error.
export function heatMap(points, valueOf) {
  const soup = quor.weld(points, Int32Array.from({length: points.length / 3}, (_, k) => k), 1e-4);
  const part = quor.clean(soup.vertices, soup.triangles);  // no degenerate triangles
  const corner = (k) => part.vertices.subarray(3 * part.triangles[k], 3 * part.triangles[k] + 3);
  const triangleValues = Float64Array.from({length: part.triangles.length / 3},
    (_, t) => valueOf(corner(3 * t), corner(3 * t + 1), corner(3 * t + 2)));
  const result = quor.solveWithin(part.vertices, part.triangles, 0.01, {shareOfSpan: true, triangleValues});
  return {
    positions: Float32Array.from(result.vertices),
    index: Uint32Array.from(result.triangles),
    colours: quor.colours(result.field),  // red, green, blue and alpha of each vertex
    field: result.field,
    error: result.error,
    jumps: result.jumps,  // vertices of the part where different values meet
    jumpRadius: result.jumpRadius,
  };
}
