// What surfaces look like.

import * as THREE from 'three';

// Isolines: drawn where (u - origin) * frequency is an integer, dark on light colours and light on
// dark ones, in thin lines of the same width everywhere. Left out: where u does not change, for a
// plateau would become one large line; the levels at or beyond the ends of the field, which are
// plateaus as a rule; and where lines would run into each other.
const ISOLINES = `
  #include <map_fragment>
  if (isolines) {
    float level = (vMapUv.x - isolineOrigin) * isolineFrequency;
    float change = fwidth(level);
    float distance = abs(fract(level - 0.5) - 0.5) / max(change, 1e-6);
    float nearest = floor(level + 0.5);
    bool between = nearest > isolineEnds.x && nearest < isolineEnds.y;
    float ink = between && change > 1e-5
      ? (1.0 - smoothstep(0.4, 1.3, distance)) * (1.0 - smoothstep(0.25, 0.6, change)) : 0.0;
    float brightness = dot(diffuseColor.rgb, vec3(0.2126, 0.7152, 0.0722));
    diffuseColor.rgb = mix(diffuseColor.rgb, vec3(brightness > 0.12 ? 0.0 : 1.0), 0.55 * ink);
  }`;

// What all ramp materials share: set at any time, seen at the next rendering.
export const isolines = {
  isolines: {value: false},
  isolineOrigin: {value: 0},
  isolineFrequency: {value: 10},
  isolineEnds: {value: new THREE.Vector2()},
};

// The ends of the ramp are the ends of the field: nothing may wrap around from one to the other,
// and no coarser mipmap may mix them.
export function rampMaterial(image) {
  const map = new THREE.Texture(image);
  map.wrapS = map.wrapT = THREE.ClampToEdgeWrapping;
  map.minFilter = map.magFilter = THREE.LinearFilter;
  map.generateMipmaps = false;
  map.flipY = false;
  map.colorSpace = THREE.SRGBColorSpace;
  map.needsUpdate = true;
  const material = surface({map});
  material.onBeforeCompile = (shader) => {
    Object.assign(shader.uniforms, isolines);
    shader.fragmentShader = `
      uniform bool isolines;
      uniform float isolineOrigin;
      uniform float isolineFrequency;
      uniform vec2 isolineEnds;
      ${shader.fragmentShader.replace('#include <map_fragment>', ISOLINES)}`;
  };
  return material;
}

// For what has no value.
export function blankMaterial() {
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
