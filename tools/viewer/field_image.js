// Pictures whose pixels are values of u: what of the field is seen from somewhere.

import * as THREE from 'three';

// u in 24 bits, red the highest; alpha 1 where there is a value, one half where a surface has none.
const material = new THREE.ShaderMaterial({
  side: THREE.DoubleSide,
  vertexShader: `
    varying float u;
    void main() {
      u = uv.x;
      gl_Position = projectionMatrix * modelViewMatrix * vec4(position, 1.0);
    }`,
  fragmentShader: `
    varying float u;
    void main() {
      float x = min(floor(clamp(u, 0.0, 1.0) * 16777215.0 + 0.5), 16777215.0);
      vec3 bytes = vec3(floor(x / 65536.0), floor(mod(x, 65536.0) / 256.0), mod(x, 256.0));
      gl_FragColor = u < -0.5 ? vec4(0.0, 0.0, 0.0, 0.5) : vec4(bytes / 255.0, 1.0);
    }`,
});

export class FieldImage {
  #renderer;
  #target;
  #bytes;

  constructor(renderer, width, height) {
    this.#renderer = renderer;
    this.#target = new THREE.WebGLRenderTarget(width, height,
      {minFilter: THREE.NearestFilter, magFilter: THREE.NearestFilter, generateMipmaps: false});
    this.#bytes = new Uint8Array(4 * width * height);
  }

  // The u of all pixels, row by row from the lower left: NaN for a surface without a value, null
  // where there is none.
  render(scene, camera) {
    const {width, height} = this.#target;
    scene.overrideMaterial = material;
    this.#renderer.setRenderTarget(this.#target);
    this.#renderer.clear();
    this.#renderer.render(scene, camera);
    this.#renderer.readRenderTargetPixels(this.#target, 0, 0, width, height, this.#bytes);
    this.#renderer.setRenderTarget(null);
    scene.overrideMaterial = null;
    return Array.from({length: width * height}, (_, i) => this.#uOfPixel(4 * i));
  }

  #uOfPixel(at) {
    const [red, green, blue, alpha] = this.#bytes.subarray(at, at + 4);
    if (alpha < 255) {
      return alpha > 0 ? NaN : null;
    }
    return (65536 * red + 256 * green + blue) / 16777215;
  }
}
