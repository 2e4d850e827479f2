// From an OBJ with its MTL and ramp to meshes that three.js draws.

import * as THREE from 'three';
import {MTLLoader} from 'three/addons/loaders/MTLLoader.js';
import {OBJLoader} from 'three/addons/loaders/OBJLoader.js';
import usualRamp from '../../assets/viridis.PNG';
import {blankMaterial, rampMaterial} from './material.js';
import {countVertices, readObjText} from './obj_text.js';
import {isPlainName} from './sources.js';

// What stands for u in triangles without a value: outside the ramp, unlike NaN the same everywhere.
export const NO_VALUE = -1;

// Writers keep the colours off the ends of the ramp by up to this share of the range, for viewers that
// repeat textures.
const MARGIN = 0.0025;

// Reads the OBJ of this name and what it refers to. Returns the group of meshes, the ramp image
// (null if there is none), the least and the largest u of its surface as ends and those that stand for
// the ends of the colours as rampEnds (null likewise), the counts, and notes for the user about what
// is missing. Throws an Error in the user's words if there is nothing to show.
export async function loadModel(source, objName) {
  const file = await source.read(objName);
  if (!file) {
    throw new Error(`${objName} is not there.`);
  }
  const {text, notes} = await readObjText(file, objName);
  const group = parseObj(text, objName);
  const ramp = await loadRamp(source, objName, group, notes);
  const materials = {ramp: ramp && rampMaterial(ramp), blank: blankMaterial()};
  const ends = [Infinity, -Infinity];
  const linesEnds = [Infinity, -Infinity];
  let triangles = 0;
  let blank = 0;
  for (const mesh of group.children) {
    mesh.geometry.deleteAttribute('color');
    const counts = dress(mesh, materials, ends, linesEnds);
    triangles += counts.triangles;
    blank += counts.blank;
  }
  if (ramp && blank > 0) {
    notes.push(blank === triangles
      ? 'There is no field to show: all of its values are equal, or none was written.'
      : `${blank.toLocaleString('en')} triangles have no value and are grey.`);
  }
  const hasField = blank < triangles;
  return {group, ramp, ends: hasField ? ends : null, rampEnds: hasField ? rampEndsOf(ends, linesEnds) : null,
    notes, triangles, vertices: countVertices(text)};
}

// Where a result shares its range with others, triangles without area have the ends of the range; where
// they are only a margin away, that is what they are.
function rampEndsOf([first, last], [outerFirst, outerLast]) {
  const margin = MARGIN * (Math.max(last, outerLast) - Math.min(first, outerFirst));
  return [outerFirst < first - margin ? outerFirst : first, outerLast > last + margin ? outerLast : last];
}

// Lines and points are left out: a field lives on triangles.
function parseObj(text, objName) {
  const group = new OBJLoader().parse(text);
  group.remove(...group.children.filter((object) => !object.isMesh));
  const corners = group.children.map(({geometry}) => geometry.getAttribute('position').array);
  if (!corners.every((array) => array.every(Number.isFinite))) {
    throw new Error(`${objName} is damaged: a triangle has a corner that is no finite point.`);
  }
  const [first] = corners.filter((array) => array.length > 0);
  if (!first) {
    throw new Error(`${objName} holds no triangle: its faces have fewer than three corners.`);
  }
  if (corners.every((array) => array.every((value, k) => value === first[k % 3]))) {
    throw new Error(`${objName} shows nothing: all corners of its triangles are at one point.`);
  }
  return group;
}

// The image that the first material maps over the mesh. Files that are missing or no image are
// replaced by the usual ramp and noted; null and a note if the files mean no field.
async function loadRamp(source, objName, group, notes) {
  const replace = (problem) => {
    notes.push(`${problem}; the colours are those of the usual ramp. To see others, put the file ` +
      `beside ${objName}, or drop all of them together.`);
    return fetch(usualRamp).then((response) => response.blob()).then(imageOf);
  };
  const refuse = (problem) => {
    notes.push(problem);
    return null;
  };
  if (!group.children.some(({geometry}) => geometry.getAttribute('uv'))) {
    return refuse(`${objName} holds no field: it has no texture coordinates.`);
  }
  const [mtlName] = group.materialLibraries;
  if (!mtlName) {
    return refuse(`${objName} names no material file.`);
  }
  const mtl = await source.read(mtlName);
  if (!mtl) {
    return replace(`The material file ${missing(mtlName)}`);
  }
  const creator = new MTLLoader().parse(await mtl.text(), '');
  const materialName = [group.children[0].material].flat()[0].name;
  const material = creator.materialsInfo[materialName];
  if (!material?.map_kd) {
    return refuse(`${mtlName} has no material "${materialName}" with an image.`);
  }
  const rampName = creator.getTextureParams(material.map_kd, {}).url;
  const image = await source.read(rampName);
  if (!image) {
    return replace(`The colour ramp ${missing(rampName)}`);
  }
  return imageOf(image).catch(() => replace(`The colour ramp ${rampName} is not an image`));
}

const missing = (name) => (isPlainName(name) ? `${name} is missing`
  : `${name} is not read, because that is not the plain name of a file`);

const imageOf = (blob) => createImageBitmap(blob, {colorSpaceConversion: 'none'});

// Gives the mesh its material, and the blank one to triangles with a corner whose u is missing or
// not finite; leaves triangles out that are only a line, for they show nothing and may have values
// of no surface. Widens ends to the u of what is coloured, linesEnds to those of what is left out.
// Returns how many triangles there are.
function dress(mesh, {ramp, blank}, ends, linesEnds) {
  const {geometry} = mesh;
  const position = geometry.getAttribute('position');
  const uv = (ramp && geometry.getAttribute('uv')) ||
    new THREE.BufferAttribute(new Float32Array(2 * position.count).fill(NaN), 2);
  geometry.setAttribute('uv', uv);
  const coloured = [];
  const grey = [];
  for (let i = 0; i < position.count; i += 3) {
    const corners = [i, i + 1, i + 2];
    const values = corners.map((k) => uv.getX(k));
    const hasValue = values.every(Number.isFinite);
    if (isLine(position, i)) {
      if (hasValue) {
        widen(linesEnds, values);
      }
    } else if (hasValue) {
      coloured.push(...corners);
      widen(ends, values);
    } else {
      grey.push(...corners);
      corners.forEach((k) => uv.setX(k, NO_VALUE));
    }
  }
  geometry.setIndex(new THREE.BufferAttribute(Uint32Array.from(coloured.concat(grey)), 1));
  geometry.clearGroups();
  geometry.addGroup(0, coloured.length, 0);
  geometry.addGroup(coloured.length, grey.length, 1);
  mesh.material = [ramp ?? blank, blank];
  return {triangles: (coloured.length + grey.length) / 3, blank: grey.length / 3};
}

function widen(ends, values) {
  ends[0] = Math.min(ends[0], ...values);
  ends[1] = Math.max(ends[1], ...values);
}

// Whether two corners of the triangle that starts here are the same point.
function isLine(position, first) {
  const same = (a, b) => position.getX(a) === position.getX(b) &&
    position.getY(a) === position.getY(b) && position.getZ(a) === position.getZ(b);
  return same(first, first + 1) || same(first + 1, first + 2) || same(first, first + 2);
}
