// A page of a host with the program of the documentation: the heat map of a part that is in the page.
import stl from './bracket.stl';
import {heatMap} from './host_program.js';

function main() {
  const facets = new DataView(stl.buffer, stl.byteOffset, stl.byteLength);
  const points = Float64Array.from({length: 9 * facets.getUint32(80, true)},
    (_, k) => facets.getFloat32(96 + 50 * Math.floor(k / 9) + 4 * (k % 9), true));
  const x = points.filter((_, k) => k % 3 === 0);
  const low = x.reduce((a, b) => Math.min(a, b));
  const high = x.reduce((a, b) => Math.max(a, b));
  const all = (corners, is) => corners.every((corner) => is(corner[0]));
  const {positions, index, colours, field, error} = heatMap(points, (...corners) =>
    (all(corners, (v) => v < low + 0.001) ? 80 : all(corners, (v) => v > high - 0.001) ? 30 : NaN));
  const n = positions.length / 3;
  const isWhole = colours.length === 4 * n && field.length === n && index.length === 3 * 103592 &&
    index.every((v) => v < n) && field.every((value) => value >= 30 && value <= 80);
  // The ends of the ramp are at the prescribed vertices.
  const isHot = field.every((value, v) => value !== 80 || colours[4 * v + 1] > 200);
  return isWhole && isHot && error.toFixed(2) === '0.17' ? 'passed' : `${n} vertices, error ${error}`;
}

const line = document.createElement('p');
try {
  line.textContent = main();
} catch (error) {
  line.textContent = `${error}\n${error.stack}`;
}
document.body.append(line);
