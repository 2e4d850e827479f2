// What is checked before a call: kinds and lengths. The library checks the rest.

const kMostIndex = 0x7fffffff;

/** A Float64Array of the values, which may be any array of numbers. */
export function reals(name, values, length) {
  requireArray(name, values, length);
  if (values instanceof Float64Array) {
    return values;
  }
  const bad = Array.prototype.findIndex.call(values, (value) => typeof value !== 'number');
  if (bad >= 0) {
    throw new TypeError(`${name}[${bad}]: ${String(values[bad])} is not a number`);
  }
  return Float64Array.from(values);
}

/** An Int32Array of the values, which may be any array of integers of 32 bits. */
export function integers(name, values, length) {
  requireArray(name, values, length);
  if (values instanceof Int32Array) {
    return values;
  }
  const bad = Array.prototype.findIndex.call(values, (value) => (value | 0) !== value);
  if (bad >= 0) {
    throw new RangeError(`${name}[${bad}]: ${String(values[bad])} is not an integer of 32 bits`);
  }
  return Int32Array.from(values);
}

/** As reals, but undefined and null are no array. */
export function someReals(name, values, length) {
  return values === undefined || values === null ? null : reals(name, values, length);
}

/** As integers, but undefined and null are no array. */
export function someIntegers(name, values, length) {
  return values === undefined || values === null ? null : integers(name, values, length);
}

/** A number, which may be NaN: the library says what is wrong with it. */
export function number(name, value) {
  if (typeof value !== 'number') {
    throw new TypeError(`${name}: ${String(value)} is not a number`);
  }
  return value;
}

/** An integer in low .. high. */
export function integer(name, value, low = 0, high = kMostIndex) {
  if (!Number.isInteger(value) || value < low || value > high) {
    throw new RangeError(`${name}: ${String(value)} is not an integer in ${low} .. ${high}`);
  }
  return value;
}

/** Coordinates and corners: three per vertex, three per triangle. */
export function mesh(vertices, triangles, verticesName = 'vertices') {
  const v = reals(verticesName, vertices);
  requireMultiple(verticesName, v, 3);
  const t = integers('triangles', triangles);
  requireMultiple('triangles', t, 3);
  return {vertices: v, triangles: t, n: v.length / 3, m: t.length / 3};
}

export function requireMultiple(name, array, factor) {
  if (array.length % factor !== 0) {
    throw new RangeError(`${name}: ${array.length} entries are not a multiple of ${factor}`);
  }
}

/** The arguments of a mesh, as every function takes them. */
export function putMesh(frame, {vertices, triangles, n, m}) {
  return [n, frame.put(vertices), m, frame.put(triangles)];
}

function requireArray(name, values, length) {
  if (values === null || typeof values !== 'object' || typeof values.length !== 'number') {
    throw new TypeError(`${name}: ${String(values)} is not an array`);
  }
  if (values.length > kMostIndex) {
    throw new RangeError(`${name}: ${values.length} entries are more than ${kMostIndex}`);
  }
  if (length !== undefined && values.length !== length) {
    throw new RangeError(`${name}: ${values.length} entries, but ${length} are needed`);
  }
}
