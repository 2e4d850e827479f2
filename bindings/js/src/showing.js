// What shows a field: colours, the text of OBJ and MTL; and labels in directions.

import {mesh, number, reals} from './arrays.js';
import {QuorError, Status} from './errors.js';

const kMostLabel = 65534;

export function colours(core, field, low, high) {
  const values = reals('field', field);
  const from = low ?? least(values);
  const to = high ?? most(values);
  return core.frame((frame) => {
    const out = frame.room(4 * values.length);
    frame.require(frame.library.quorkitColours(values.length, frame.put(values), number('low', from),
        number('high', to), out), `low, high: ${from} and ${to} must be finite`);
    return frame.take(Uint8Array, out, 4 * values.length);
  });
}

export function objText(core, vertices, triangles, field, name, margin = 0.001) {
  const given = mesh(vertices, triangles);
  const values = reals('field', field, given.n);
  if (given.n === 0) {
    throw new RangeError('vertices: a mesh to write has at least one');
  }
  for (const [what, array] of [['vertices', given.vertices], ['field', values]]) {
    const bad = array.findIndex((value) => !Number.isFinite(value));
    if (bad >= 0) {
      throw new RangeError(`${what}[${bad}]: ${array[bad]} is not finite`);
    }
  }
  if (!(margin >= 0 && margin <= 1)) {
    throw new RangeError(`margin: ${margin} is not in 0 .. 1`);
  }
  return core.frame((frame) => {
    const out = frame.room(8);
    frame.require(frame.library.quorjsObjText(given.n, frame.put(given.vertices), given.m,
        frame.put(given.triangles), frame.put(values), frame.putText(`${name}.mtl`), margin, out, out + 4));
    const [text, size] = frame.take(Uint32Array, out, 2);
    try {
      return new TextDecoder().decode(frame.take(Uint8Array, text, size));
    } finally {
      frame.library.free(text);
    }
  });
}

export function encodeIntegerToSphere(core, value) {
  if (!Number.isInteger(value) || value < -1 || value > kMostLabel) {
    throw new RangeError(`value: ${String(value)} is not a whole number in -1 .. ${kMostLabel}`);
  }
  return core.frame((frame) => {
    const out = frame.room(12);
    frame.require(frame.library.quorkitEncodeToSphere(value, out, out + 4, out + 8));
    return frame.take(Float32Array, out, 3);
  });
}

export function decodeIntegerFromSphere(core, point) {
  if (point?.length !== 3) {
    throw new QuorError(Status.BAD_ARGUMENT, 'point: three coordinates are expected');
  }
  return core.frame((frame) => frame.library.quorkitDecodeFromSphere(...point));
}

function least(values) {
  return values.reduce((a, b) => (b < a ? b : a), Infinity);
}

function most(values) {
  return values.reduce((a, b) => (b > a ? b : a), -Infinity);
}
