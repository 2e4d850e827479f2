// What is checked before a call.

const kMostIndex = 0x7fffffff;

/** A Float64Array of the values, which may be any array of numbers. */
export function reals(name, values, length) {
  const array = values instanceof Float64Array ? values : Float64Array.from(iterable(name, values));
  requireLength(name, array, length);
  return array;
}

/** An Int32Array of the values, which may be any array of whole numbers in low .. high. */
export function integers(name, values, length, low = -kMostIndex - 1, high = kMostIndex) {
  iterable(name, values);
  requireLength(name, values, length);
  for (let k = 0; k < values.length; ++k) {
    if (!Number.isInteger(values[k]) || values[k] < low || values[k] > high) {
      throw new RangeError(`${name}[${k}]: ${values[k]} is not a whole number in ${low} .. ${high}`);
    }
  }
  return values instanceof Int32Array ? values : Int32Array.from(values);
}

/** A finite number. */
export function number(name, value) {
  if (typeof value !== 'number' || Number.isNaN(value)) {
    throw new TypeError(`${name}: ${String(value)} is not a number`);
  }
  return value;
}

/** Coordinates and corners: three per vertex, three per triangle, corners in range. */
export function mesh(vertices, triangles) {
  const v = reals('vertices', vertices);
  requireTriples('vertices', v);
  const t = integers('triangles', triangles, undefined, 0, v.length / 3 - 1);
  requireTriples('triangles', t);
  return {vertices: v, triangles: t, n: v.length / 3, m: t.length / 3};
}

export function requireTriples(name, array) {
  if (array.length % 3 !== 0) {
    throw new RangeError(`${name}: ${array.length} numbers are not a multiple of 3`);
  }
}

function iterable(name, values) {
  if (values === null || typeof values !== 'object' || typeof values.length !== 'number') {
    throw new TypeError(`${name}: ${String(values)} is not an array`);
  }
  if (values.length > kMostIndex) {
    throw new RangeError(`${name}: ${values.length} entries are more than ${kMostIndex}`);
  }
  return values;
}

function requireLength(name, array, length) {
  if (length !== undefined && array.length !== length) {
    throw new RangeError(`${name}: ${array.length} entries, expected ${length}`);
  }
}
