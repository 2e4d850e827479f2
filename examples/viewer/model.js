// From an OBJ with its MTL and ramp to meshes that three.js draws.

import * as THREE from 'three';
import {MTLLoader} from 'three/addons/loaders/MTLLoader.js';
import {OBJLoader} from 'three/addons/loaders/OBJLoader.js';

// Reads the OBJ of this name and what it refers to. Returns the group of meshes, the ramp image
// (null if there is none), the counts, and notes for the user about what is missing. Throws an
// Error in the user's words if there is nothing to show.
export async function loadModel(source, objName) {
  const file = await source.read(objName);
  if (!file) {
    throw new Error(`${objName} is not there.`);
  }
  const text = await file.text();
  const group = parseObj(text, objName);
  const notes = [];
  const ramp = await loadRamp(source, objName, group, notes);
  const materials = {ramp: ramp && rampMaterial(ramp), blank: blankMaterial()};
  let triangles = 0;
  let blank = 0;
  for (const mesh of group.children) {
    mesh.geometry.deleteAttribute('color');
    triangles += mesh.geometry.getAttribute('position').count / 3;
    blank += dress(mesh, materials);
  }
  if (ramp && blank > 0) {
    notes.push(blank === triangles
      ? 'There is no field to show: all of its values are equal, or none was written.'
      : `${blank.toLocaleString('en')} triangles have no value and are grey.`);
  }
  return {group, ramp, notes, triangles, vertices: countVertices(text)};
}

// Lines and points are left out: a field lives on triangles.
function parseObj(text, objName) {
  // A file of another kind would be reported line by line.
  if (!/^f\s/m.test(text)) {
    throw new Error(`${objName} holds no triangle: is it an OBJ file?`);
  }
  const group = new OBJLoader().parse(text);
  group.remove(...group.children.filter((object) => !object.isMesh));
  const box = new THREE.Box3().setFromObject(group);
  if (!Number.isFinite(box.min.length() + box.max.length())) {
    throw new Error(`${objName} is damaged: a triangle has a corner that is no finite point.`);
  }
  return group;
}

function countVertices(text) {
  let count = 0;
  for (let at = text.startsWith('v ') ? 0 : text.indexOf('\nv '); at >= 0;) {
    ++count;
    at = text.indexOf('\nv ', at + 1);
  }
  return count;
}

// The image that the first material maps over the mesh, or null and a note why not.
async function loadRamp(source, objName, group, notes) {
  const missing = (what, name) => {
    notes.push(`The ${what} ${name} is missing: put it beside ${objName}, or drop both together.`);
    return null;
  };
  const [mtlName] = group.materialLibraries;
  if (!mtlName) {
    notes.push(`${objName} names no material file.`);
    return null;
  }
  const mtl = await source.read(mtlName);
  if (!mtl) {
    return missing('material file', mtlName);
  }
  const creator = new MTLLoader().parse(await mtl.text(), '');
  const materialName = [group.children[0].material].flat()[0].name;
  const material = creator.materialsInfo[materialName];
  if (!material?.map_kd) {
    notes.push(`${mtlName} has no material "${materialName}" with an image.`);
    return null;
  }
  const rampName = creator.getTextureParams(material.map_kd, {}).url;
  const image = await source.read(rampName);
  if (!image) {
    return missing('colour ramp', rampName);
  }
  try {
    return await createImageBitmap(image, {colorSpaceConversion: 'none'});
  } catch {
    notes.push(`The colour ramp ${rampName} is not an image.`);
    return null;
  }
}

// The ends of the ramp are the ends of the field: nothing may wrap around from one to the other,
// and no coarser mipmap may mix them.
function rampMaterial(image) {
  const map = new THREE.Texture(image);
  map.wrapS = map.wrapT = THREE.ClampToEdgeWrapping;
  map.minFilter = map.magFilter = THREE.LinearFilter;
  map.generateMipmaps = false;
  map.flipY = false;
  map.colorSpace = THREE.SRGBColorSpace;
  map.needsUpdate = true;
  return surface({map});
}

function blankMaterial() {
  return surface({color: 0xaab2bc});
}

// Pushed back a little, so that lines drawn on the surface are seen.
function surface(look) {
  return new THREE.MeshLambertMaterial({
    ...look,
    side: THREE.DoubleSide,
    polygonOffset: true,
    polygonOffsetFactor: 1,
    polygonOffsetUnits: 1,
  });
}

// Gives the mesh its material, and the blank one to triangles with a corner whose u is missing or
// NaN. Returns how many those are.
function dress(mesh, {ramp, blank}) {
  const count = mesh.geometry.getAttribute('position').count;
  const uv = mesh.geometry.getAttribute('uv');
  mesh.geometry.clearGroups();
  if (!ramp || !uv) {
    mesh.material = blank;
    return count / 3;
  }
  const coloured = [];
  const grey = [];
  for (let i = 0; i < count; i += 3) {
    const hasValue = Number.isFinite(uv.getX(i) + uv.getX(i + 1) + uv.getX(i + 2));
    (hasValue ? coloured : grey).push(i, i + 1, i + 2);
  }
  if (grey.length === 0) {
    mesh.material = ramp;
    return 0;
  }
  mesh.geometry.setIndex(new THREE.BufferAttribute(Uint32Array.from(coloured.concat(grey)), 1));
  mesh.geometry.addGroup(0, coloured.length, 0);
  mesh.geometry.addGroup(coloured.length, grey.length, 1);
  mesh.material = [ramp, blank];
  return grey.length / 3;
}
