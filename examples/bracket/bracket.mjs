import {readFileSync, writeFileSync} from 'node:fs';
import {load} from 'quor';

const quor = await load();
const facets = new DataView(Uint8Array.from(readFileSync('bracket.stl')).buffer);  // binary STL
const count = facets.getUint32(80, true);
const points = Float64Array.from({length: 9 * count},
  (_, k) => facets.getFloat32(96 + 50 * Math.floor(k / 9) + 4 * (k % 9), true));
const soup = quor.weld(points, Array.from({length: 3 * count}, (_, k) => k), 1e-4);
const part = quor.clean(soup.vertices, soup.triangles);  // no degenerate triangles

const x = Array.from(part.triangles, (corner) => part.vertices[3 * corner]);
const low = x.reduce((a, b) => Math.min(a, b));
const high = x.reduce((a, b) => Math.max(a, b));
const triangleValues = new Float64Array(x.length / 3).fill(NaN);  // NaN: free
for (let t = 0; t < triangleValues.length; ++t) {
  const corners = x.slice(3 * t, 3 * t + 3);
  if (Math.max(...corners) < low + 0.001) {
    triangleValues[t] = 80;  // degrees, on the face at the low end of x
  } else if (Math.min(...corners) > high - 0.001) {
    triangleValues[t] = 30;
  }
}
const result = quor.solveWithin(part.vertices, part.triangles, 0.01, {shareOfSpan: true, triangleValues});
writeFileSync('bracket.obj', quor.objText(result.vertices, result.triangles, result.field, 'bracket'));
writeFileSync('bracket.mtl', quor.mtlText());
const error = result.error.toFixed(2);
writeFileSync('bracket.json',
  `{"quor": 1, "unit": "\\u00b0C", "minimum": 30, "maximum": 80, "error": ${Number(error)}}`);
console.log(`${result.triangles.length / 3} triangles, estimated error ${error} degrees`);
