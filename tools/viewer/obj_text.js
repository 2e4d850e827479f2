// What can be said of the text of an OBJ file before it is parsed, so that a user reads what is wrong
// with it and not what a parser stumbled over.

// The longest text that browsers hold.
const LONGEST = 2 ** 29 - 32;
const OTHER_MESHES = /\.(stl|ply|off|3mf|glb|gltf|step|stp|iges|igs|vtk|vtp)$/i;

// Why a file of this name is not for this page, or null if nothing speaks against it.
export function whyNotObj(name) {
  const [, kind] = name.match(OTHER_MESHES) ?? [];
  return kind
    ? `${name} is a mesh without a field (${kind.toUpperCase()}), and this page shows fields. Compute ` +
      `one, for instance with the example program: heatmap ${name} --out DIR. Then drop the OBJ file ` +
      'that it writes.'
    : null;
}

// The text of an OBJ file up to its last whole line, and notes for the user. Throws an Error in the
// user's words if there is nothing to draw in it.
export async function readObjText(file, name) {
  const unfit = whyNotObj(name);
  if (unfit) {
    throw new Error(unfit);
  }
  if (file.size > LONGEST) {
    throw new Error(`${name} has ${Math.round(file.size / 1e6).toLocaleString('en')} MB, and a browser ` +
      `reads ${Math.floor(LONGEST / 1e6)} MB at most.`);
  }
  const text = await file.text();
  requireFaces(text, name);
  if (text.endsWith('\n')) {
    return {text, notes: []};
  }
  // The last number may lack digits and then names another vertex.
  return {
    text: text.slice(0, text.lastIndexOf('\n') + 1),
    notes: [`${name} ends in the middle of a line: it was cut short, and triangles are missing. ` +
      'Was the disk full, or does it arrive still?'],
  };
}

function requireFaces(text, name) {
  if (/^f\s/m.test(text)) {
    return;
  }
  if (text.trim() === '') {
    throw new Error(`${name} is empty.`);
  }
  throw new Error(/^v\s/m.test(text) && !text.includes('\0')
    ? `${name} has points but no triangle: it was cut short, or it is a cloud of points.`
    : `${name} holds no triangle: is it an OBJ file?`);
}

// How many points the text of an OBJ file lists.
export function countVertices(text) {
  let count = 0;
  for (let at = text.startsWith('v ') ? 0 : text.indexOf('\nv '); at >= 0;) {
    ++count;
    at = text.indexOf('\nv ', at + 1);
  }
  return count;
}
