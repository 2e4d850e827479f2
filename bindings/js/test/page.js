// A page of a host: the field of a square in the page itself.
import {QuorError, load} from 'quor';
import {columns, gridMesh, tagEnds} from './shared.js';

async function main() {
  const quor = await load();
  quor.warmUp();
  const mesh = gridMesh(30, 30);
  const values = columns(30, 30);
  const solver = quor.solver(mesh.vertices, mesh.triangles, tagEnds(30, 30));
  const field = solver.solve(values);
  solver.free();
  const error = Math.max(...field.map((value, k) => Math.abs(value - values[k])));
  let refusal = null;
  try {
    quor.weld(mesh.vertices, mesh.triangles, -1);
  } catch (thrown) {
    refusal = thrown;
  }
  return error < 1e-9 && refusal instanceof QuorError ? 'passed' : `error ${error}, ${refusal}`;
}

main().catch((error) => `${error}\n${error.stack}`).then((text) => {
  const line = document.createElement('p');
  line.textContent = text;
  document.body.append(line);
});
