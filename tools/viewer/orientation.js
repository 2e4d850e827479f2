// From where a part is looked at when nobody says.

import * as THREE from 'three';
import {FieldImage} from './field_image.js';

// Directions from the part to the camera in degrees, where z is up and the front is at -y.
const AZIMUTHS = [-54, -9, 36, 81, 126, 171, 216, 261];
const ELEVATIONS = [27, 50, 8, -27];
const PIXELS = 96;
// Above this many triangles every other azimuth will do: without a graphics card each view takes long.
const MANY = 300000;
// This share of the range is an end of it.
const END = 0.1;
// Bins of the range, to see how much of it is in sight.
const BINS = 20;

// A direction given where z is up, as it is where this axis is up.
export function turned(direction, up) {
  const {x, y, z} = direction;
  return up === 'y' ? new THREE.Vector3(x, z, -y) : new THREE.Vector3(x, y, z);
}

// The axis that points up, 'z' or 'y': z, which most CAD systems have, unless the part is lower along
// y and stands on a clearly larger flat base there.
export function guessUp(group) {
  const box = new THREE.Box3().setFromObject(group);
  const size = box.getSize(new THREE.Vector3());
  const near = 1e-3 * size.length();
  const base = {y: 0, z: 0};
  const triangle = new THREE.Triangle();
  forEachTriangle(group, triangle, () => {
    const {a, b, c} = triangle;
    for (const axis of ['y', 'z']) {
      if (Math.max(a[axis], b[axis], c[axis]) < box.min[axis] + near) {
        base[axis] += triangle.getArea();
      }
    }
  });
  return size.y < size.z && base.y > 1.5 * base.z ? 'y' : 'z';
}

function forEachTriangle(group, triangle, act) {
  for (const {geometry} of group.children) {
    const position = geometry.getAttribute('position');
    const index = geometry.getIndex();
    for (let i = 0; i < index.count; i += 3) {
      triangle.setFromAttributeAndIndices(position, index.getX(i), index.getX(i + 1), index.getX(i + 2));
      act();
    }
  }
}

// The direction, of those above, from which most is seen of that end of the field of which less is
// seen; then of the whole range and of the part; the usual view from the front, right and above where
// others are hardly better. ends: the least and the largest u, null where there is no field.
export function bestDirection(renderer, scene, group, up, ends) {
  const image = new FieldImage(renderer, PIXELS, PIXELS);
  const sphere = new THREE.Box3().setFromObject(group).getBoundingSphere(new THREE.Sphere());
  const r = sphere.radius;
  const camera = new THREE.OrthographicCamera(-r, r, r, -r, r, 5 * r);
  camera.up.copy(turned(new THREE.Vector3(0, 0, 1), up));
  const triangles = group.children.reduce((sum, {geometry}) => sum + geometry.getIndex().count / 3, 0);
  const azimuths = AZIMUTHS.filter((_, i) => i % 2 === 0 || triangles < MANY);
  const views = ELEVATIONS.flatMap((elevation) => azimuths.map((azimuth) => {
    const direction = turned(directionOf(azimuth, elevation), up);
    camera.position.copy(sphere.center).addScaledVector(direction, 3 * r);
    camera.lookAt(sphere.center);
    return {direction, azimuth, elevation, ...seen(image.render(scene, camera), ends)};
  }));
  const most = (name) => Math.max(1, ...views.map((view) => view[name]));
  const [hot, cold, area] = ['hot', 'cold', 'area'].map(most);
  const score = (view) => Math.sqrt(Math.min(view.hot / hot, view.cold / cold)) +
    0.4 * view.range + 0.2 * (view.area / area) + familiarity(view);
  return views.reduce((best, view) => (score(view) > score(best) ? view : best)).direction;
}

function directionOf(azimuth, elevation) {
  const [a, e] = [azimuth, elevation].map(THREE.MathUtils.degToRad);
  return new THREE.Vector3(Math.cos(e) * Math.cos(a), Math.cos(e) * Math.sin(a), Math.sin(e));
}

const familiarity = ({azimuth, elevation}) =>
  (azimuth === AZIMUTHS[0] ? 0.1 : 0) + (elevation === ELEVATIONS[0] ? 0.1 : 0) +
  (elevation > 0 ? 0.1 : 0);

// How many pixels show either end and anything at all, and which share of the range is in sight.
function seen(pixels, ends) {
  const counts = {hot: 0, cold: 0, area: 0};
  const bins = new Set();
  for (const u of pixels) {
    counts.area += u !== null;
    if (ends && u !== null && !Number.isNaN(u)) {
      const share = (u - ends[0]) / Math.max(ends[1] - ends[0], 1e-9);
      counts.hot += share < END;
      counts.cold += share > 1 - END;
      bins.add(Math.floor(share * BINS));
    }
  }
  return {...counts, range: Math.min(bins.size / BINS, 1)};
}
