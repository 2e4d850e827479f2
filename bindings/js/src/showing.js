// What shows a field: colours, the text of OBJ and MTL; and integers in directions.

import {integer, mesh, number, putMesh, reals} from './arrays.js';

const kMostLabel = 65534;

export function colours(core, field, low, high) {
  const values = reals('field', field);
  const ends = range(values);
  const from = number('low', low ?? ends[0]);
  const to = number('high', high ?? ends[1]);
  return core.frame((frame) => {
    const out = frame.room(4 * values.length);
    frame.call('quorkitColours', values.length, frame.put(values), from, to, out);
    return frame.take(Uint8Array, out, 4 * values.length);
  });
}

export function objText(core, vertices, triangles, field, name, margin = 0.001) {
  const given = mesh(vertices, triangles);
  const values = reals('field', field, given.n);
  if (typeof name !== 'string' || !/^[^\0-\x1f]+$/.test(name)) {
    throw new TypeError(`name: ${JSON.stringify(name)} is not the name of a file`);
  }
  number('margin', margin);
  return core.frame((frame) => {
    const out = frame.room(8);
    frame.call('quorjsObjText', ...putMesh(frame, given), frame.put(values), frame.putText(`${name}.mtl`),
        margin, out, out + 4);
    const [text, size] = frame.take(Uint32Array, out, 2);
    try {
      return new TextDecoder().decode(frame.take(Uint8Array, text, size));
    } finally {
      frame.value('free', text);
    }
  });
}

export function mtlText(core) {
  return core.frame((frame) => frame.text(frame.value('quorjsMaterial')));
}

export function encodeIntegerToSphere(core, value) {
  integer('value', value, -1, kMostLabel);
  return core.frame((frame) => {
    const out = frame.room(12);
    frame.call('quorkitEncodeToSphere', value, out, out + 4, out + 8);
    return frame.take(Float32Array, out, 3);
  });
}

export function decodeIntegerFromSphere(core, x, y, z) {
  [x, y, z].forEach((coordinate, k) => number('xyz'[k], coordinate));
  return core.frame((frame) => frame.value('quorkitDecodeFromSphere', x, y, z));
}

/** The ends of the finite values; 0 and 1 if there are none. */
function range(values) {
  let [low, high] = [Infinity, -Infinity];
  for (const value of values) {
    if (Number.isFinite(value)) {
      low = Math.min(low, value);
      high = Math.max(high, value);
    }
  }
  return low <= high ? [low, high] : [0, 1];
}
