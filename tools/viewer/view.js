// The 3D view: camera, light, what is drawn and when.

import * as THREE from 'three';
import {OrbitControls} from 'three/addons/controls/OrbitControls.js';
import {FieldImage} from './field_image.js';
import {isolines} from './material.js';
import {bestDirection, turned} from './orientation.js';

// Shares of full brightness. A surface that faces the light shows the colours of the ramp as they
// are, one that turns away is darker.
const AMBIENT = 0.6;
const HEADLIGHT = 0.4;
// How much larger than the model the view is.
const MARGIN = 1.12;

export class View {
  #renderer;
  #scene = new THREE.Scene();
  #camera = new THREE.PerspectiveCamera(28, 1, 0.01, 100);
  #controls;
  #ambient = new THREE.AmbientLight(0xffffff);
  #headlight = new THREE.DirectionalLight(0xffffff);
  #group = null;
  #wires = new THREE.MeshBasicMaterial({color: 0x10161d, wireframe: true, transparent: true, opacity: 0.28});
  #wireframe = false;
  #pixel;
  // The direction of the last fit while nobody has turned the view since.
  #fitted = null;
  // Of the next picture, if one is asked for.
  #picture = null;

  constructor(canvas) {
    this.#renderer = new THREE.WebGLRenderer({canvas, antialias: true, alpha: true});
    this.#pixel = new FieldImage(this.#renderer, 1, 1);
    this.#headlight.position.set(-0.35, 0.5, 1);
    this.#camera.add(this.#headlight, this.#headlight.target);
    this.#headlight.target.position.set(0, 0, 0);
    this.#scene.add(this.#camera, this.#ambient);
    this.setShading(true);
    this.setUp('z');
    new ResizeObserver(() => this.#resize()).observe(canvas);
    this.#resize();
  }

  // Shows this group in place of the one before, or nothing for null.
  show(group) {
    if (this.#group) {
      this.#scene.remove(this.#group);
      this.#group.traverse(release);
    }
    this.#group = group;
    if (group) {
      this.#scene.add(group);
      this.setWireframe(this.#wireframe);
    }
    this.render();
  }

  // The axis around which dragging turns the model, 'y' or 'z'. Fit afterwards.
  setUp(axis) {
    this.#controls?.dispose();
    this.#camera.up.copy(turned(new THREE.Vector3(0, 0, 1), axis));
    this.#controls = new OrbitControls(this.#camera, this.#renderer.domElement);
    this.#controls.addEventListener('change', () => this.render());
    this.#controls.addEventListener('start', () => {
      this.#fitted = null;
    });
  }

  // From where both ends of the field are seen: orientation.js.
  bestDirection(up, ends) {
    return bestDirection(this.#renderer, this.#scene, this.#group, up, ends);
  }

  // Looks from this direction (from the model towards the camera) so that the group just fills the
  // view and is in its middle.
  fit(direction) {
    if (!this.#group) {
      return;
    }
    this.#fitted = direction;
    this.#camera.position.copy(direction).normalize();
    this.#camera.lookAt(0, 0, 0);
    this.#camera.updateMatrix();
    const axes = [new THREE.Vector3(), new THREE.Vector3(), new THREE.Vector3()];
    this.#camera.matrix.extractBasis(...axes);
    const [right, up, back] = axes;
    const {x, y, distance, depth} = this.#frame(right, up, back);
    const target = this.#controls.target;
    target.set(0, 0, 0).addScaledVector(right, x).addScaledVector(up, y).addScaledVector(back, depth);
    this.#camera.position.copy(target).addScaledVector(back, distance - depth);
    this.#camera.near = (distance - depth) / 1000;
    this.#camera.far = (distance - depth) * 100;
    this.#camera.updateProjectionMatrix();
    this.#controls.update();
    this.render();
  }

  // Where along these axes the camera has all points in view. The edge planes of a view with
  // tangent t that touch the points meet above x at the distance d: for each point with
  // coordinates (px, pd), px - x <= t (d - pd) and x - px <= t (d - pd).
  #frame(right, up, back) {
    const vertical = Math.tan(THREE.MathUtils.degToRad(this.#camera.fov / 2)) / MARGIN;
    const horizontal = vertical * this.#camera.aspect;
    const most = {right: -Infinity, left: -Infinity, top: -Infinity, bottom: -Infinity};
    let nearest = -Infinity;
    let farthest = Infinity;
    const point = new THREE.Vector3();
    for (const {geometry} of this.#group.children) {
      const position = geometry.getAttribute('position');
      for (let i = 0; i < position.count; ++i) {
        point.fromBufferAttribute(position, i);
        const x = point.dot(right) / horizontal;
        const y = point.dot(up) / vertical;
        const depth = point.dot(back);
        most.right = Math.max(most.right, depth + x);
        most.left = Math.max(most.left, depth - x);
        most.top = Math.max(most.top, depth + y);
        most.bottom = Math.max(most.bottom, depth - y);
        nearest = Math.max(nearest, depth);
        farthest = Math.min(farthest, depth);
      }
    }
    return {
      x: (horizontal * (most.right - most.left)) / 2,
      y: (vertical * (most.top - most.bottom)) / 2,
      distance: Math.max(most.right + most.left, most.top + most.bottom) / 2,
      depth: (nearest + farthest) / 2,
    };
  }

  // The u of the surface at this point of the canvas, in pixels of the page: NaN for a surface without
  // a value, null where there is none.
  fieldAt(x, y) {
    const {clientWidth, clientHeight} = this.#renderer.domElement;
    this.#camera.setViewOffset(clientWidth, clientHeight, x, y, 1, 1);
    const [u] = this.#pixel.render(this.#scene, this.#camera);
    this.#camera.clearViewOffset();
    return u;
  }

  setWireframe(on) {
    this.#wireframe = on;
    for (const mesh of this.#group?.children ?? []) {
      mesh.clear();
      if (on) {
        mesh.add(new THREE.Mesh(mesh.geometry, this.#wires));
      }
    }
    this.render();
  }

  // Without shading every pixel has the colour of the ramp.
  setShading(on) {
    // The renderer divides what falls on a surface by pi.
    this.#ambient.intensity = (on ? AMBIENT : 1) * Math.PI;
    this.#headlight.intensity = (on ? HEADLIGHT : 0) * Math.PI;
    this.render();
  }

  // Lines at the round values of the scale, or none for null.
  setIsolines(scale) {
    const lines = scale?.isolines() ?? null;
    isolines.isolines.value = lines !== null;
    if (lines) {
      isolines.isolineOrigin.value = lines.origin;
      isolines.isolineFrequency.value = lines.frequency;
      isolines.isolineEnds.value.set(...lines.ends);
    }
    this.render();
  }

  // Draws once per picture, however much changes before it.
  render() {
    this.#picture ??= requestAnimationFrame(() => this.#draw());
  }

  #draw() {
    if (this.#picture !== null) {
      cancelAnimationFrame(this.#picture);
      this.#picture = null;
    }
    this.#renderer.render(this.#scene, this.#camera);
  }

  #resize() {
    const {clientWidth: width, clientHeight: height} = this.#renderer.domElement;
    this.#renderer.setPixelRatio(window.devicePixelRatio);
    this.#renderer.setSize(width, height, false);
    this.#camera.aspect = width / Math.max(height, 1);
    this.#camera.updateProjectionMatrix();
    if (this.#fitted) {
      this.fit(this.#fitted);
    }
    this.#draw();  // at once: the new size has emptied the picture
  }
}

function release(object) {
  object.geometry?.dispose();
  for (const material of [object.material ?? []].flat()) {
    material.map?.dispose();
    material.dispose();
  }
}
