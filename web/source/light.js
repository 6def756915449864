// How the page lights a scene, by the rules of the pictures that the program itself renders: lights
// do not grow weaker with distance, a white surface that faces one of brightness 1 is as bright as
// that, something of the sky and the ground reaches everything, and a scene without lights has one
// behind the shoulder of whoever looks. Metals mirror a soft room, and what is no metal the backdrop.
import {
  BackSide,
  BoxGeometry,
  Color,
  DirectionalLight,
  HemisphereLight,
  Mesh,
  PMREMGenerator,
  Scene,
  ShaderChunk,
  ShaderMaterial,
  SphereGeometry,
  Vector3,
} from 'three';

const MOST_SHADOWS = 3; // each costs a texture in every surface
const SKY = [0.3, 0.335, 0.385];
const GROUND = [0.15, 0.14, 0.128];
const FILL_BESIDE_LIGHTS = 0.7;
const USUALLY_OPEN = 0.85; // of what surrounds a point, the share that nothing stands in front of

const colorOf = ([red, green, blue]) => new Color().setRGB(red, green, blue);

// What is seen where nothing of the scene is: a quiet gradient from ground to sky.
const BACKDROPS = {
  dark: {
    ground: [0.066, 0.075, 0.09],
    distant: [0.211, 0.236, 0.267],
    horizon: [0.34, 0.38, 0.43],
    zenith: [0.055, 0.085, 0.14],
  },
  light: {
    ground: [0.66, 0.66, 0.65],
    distant: [0.84, 0.84, 0.83],
    horizon: [0.93, 0.93, 0.92],
    zenith: [0.79, 0.82, 0.85],
  },
};
const BACKDROP = `
  vec3 backdrop( const in float up, const in vec3 ground, const in vec3 distant,
                 const in vec3 horizon, const in vec3 zenith ) {
    if ( up < 0.0 ) return mix( distant, ground, smoothstep( 0.0, 0.55, - up ) );
    return mix( mix( distant, horizon, smoothstep( 0.0, 0.035, up ) ), zenith, pow( up, 0.55 ) );
  }`;

// The room that metals mirror: a formula, as in the program's own pictures. It is as bright as the
// light from around.
const vectorOf = (numbers) => 'vec3( ' + numbers.map((n) => n.toFixed(6)).join(', ') + ' )';
const ROOM = `
  varying vec3 direction;
  uniform float fill;
  void main() {
    vec3 d = normalize( direction );
    vec3 around = mix( ${vectorOf(GROUND)}, ${vectorOf(SKY)}, d.y * 0.5 + 0.5 ) * fill;
    float key = dot( d, vec3( -0.497, 0.746, 0.443 ) );
    float rim = dot( d, vec3( 0.793, 0.397, -0.463 ) );
    float shape = 0.45 + 0.45 * smoothstep( -0.3, 0.35, d.y )
      + 2.4 * smoothstep( 0.7, 0.94, key ) + 1.3 * smoothstep( 0.75, 0.95, rim );
    gl_FragColor = vec4( vec3( ( around.x + around.y + around.z ) / 3.0 * shape ), 1.0 );
  }`;

// Exchanges a part of the library's shaders, all of which are made of these chunks.
function rewrite(chunk, part, otherPart) {
  if (!ShaderChunk[chunk].includes(part)) throw new Error('No such part of ' + chunk + ': ' + part);
  ShaderChunk[chunk] = ShaderChunk[chunk].replace(part, otherPart);
}

// Light with a range fades evenly on the way to its end.
rewrite(
  'lights_pars_begin',
  'pow2( saturate( 1.0 - pow4( lightDistance / cutoffDistance ) ) )',
  '( 1.0 - smoothstep( 0.0, cutoffDistance, lightDistance ) )',
);
// The brightest light bends toward white, and all below is left alone.
rewrite(
  'tonemapping_pars_fragment',
  'vec3 CustomToneMapping( vec3 color ) { return color; }',
  `vec3 CustomToneMapping( vec3 color ) {
    return mix( color, 1.0 - 0.2 * exp( ( 0.8 - color ) / 0.2 ), step( 0.8, color ) );
  }`,
);
// Of what surrounds them, surfaces that are no metal mirror the backdrop as far as they are smooth,
// and the light from around as far as they are rough. That light is all that reaches them besides.
const { ground, distant, horizon, zenith } = BACKDROPS.dark;
rewrite(
  'envmap_physical_pars_fragment',
  '#ifdef USE_ENVMAP',
  `#ifdef USE_ENVMAP
  ${BACKDROP}
  vec3 mirroredByDielectric( const in vec3 toEye, const in vec3 normal, const in vec3 around,
                             const in float roughness ) {
    vec3 way = transformDirectionByInverseViewMatrix( reflect( - toEye, normal ), viewMatrix );
    vec3 behind = backdrop( way.y, ${[ground, distant, horizon, zenith].map(vectorOf).join(', ')} );
    return mix( around, behind, pow2( 1.0 - roughness ) );
  }`,
);
rewrite(
  'lights_fragment_maps',
  'radiance += iblRadiance;',
  `radiance += mix( mirroredByDielectric( geometryViewDir, geometryNormal,
                     irradiance * RECIPROCAL_PI, material.roughness ),
                   iblRadiance, material.metalness );`,
);
rewrite(
  'lights_physical_pars_fragment',
  'vec3 indirectDiffuse = diffuse * cosineWeightedIrradiance;',
  'vec3 indirectDiffuse = vec3( 0.0 );',
);

// No bias along the normals: surfaces that are seen from both sides may have theirs on the wrong
// one.
function castShadows(light, bounds, size) {
  const radius = bounds.getSize(new Vector3()).length() / 2;
  light.castShadow = true;
  light.shadow.mapSize.set(size, size);
  light.shadow.radius = 2;
  light.shadow.bias = light.isDirectionalLight ? -0.002 : -0.0005;
  const camera = light.shadow.camera;
  Object.assign(camera, { near: radius * 0.002, far: radius * 4 });
  if (!light.isDirectionalLight) return;
  Object.assign(camera, {
    left: -radius,
    right: radius,
    top: radius,
    bottom: -radius,
    near: radius,
    far: radius * 3.02,
  });
}

// A directional light that shines in that direction over the whole scene, whatever it is a child
// of.
function aim(light, direction, bounds) {
  const center = bounds.getCenter(new Vector3());
  const radius = bounds.getSize(new Vector3()).length() / 2;
  light.matrixWorld.setPosition(center.clone().addScaledVector(direction, -radius * 2));
  light.target.matrixWorld.setPosition(center);
  for (const object of [light, light.target]) object.matrixWorldAutoUpdate = false;
}

// The scene's own lights, brought to the rule above.
function takeOver(lights, bounds) {
  let shadows = 0;
  const size = matchMedia('(pointer: coarse)').matches ? 1024 : 2048;
  for (const light of lights) {
    light.userData.brightness *= Math.PI;
    light.intensity = light.userData.brightness;
    if ('decay' in light) light.decay = 0;
    if (light.isDirectionalLight)
      aim(light, light.getWorldDirection(new Vector3()).negate(), bounds);
    if (shadows < MOST_SHADOWS) {
      castShadows(light, bounds, light.isPointLight ? size / 2 : size);
      shadows += 1;
    }
  }
}

function makeShoulderLight(bounds) {
  const light = new DirectionalLight(colorOf([0.92, 0.89, 0.84]), Math.PI);
  castShadows(light, bounds, 2048);
  return light;
}

function makeRoom(renderer, fill) {
  const material = new ShaderMaterial({
    uniforms: { fill: { value: fill } },
    side: BackSide,
    depthWrite: false,
    toneMapped: false,
    vertexShader: `
      varying vec3 direction;
      void main() {
        direction = position;
        gl_Position = projectionMatrix * modelViewMatrix * vec4( position, 1.0 );
      }`,
    fragmentShader: ROOM,
  });
  const walls = new Mesh(new BoxGeometry(4, 4, 4), material);
  const generator = new PMREMGenerator(renderer);
  const { texture } = generator.fromScene(new Scene().add(walls));
  walls.geometry.dispose();
  material.dispose();
  generator.dispose();
  return texture;
}

export class Lighting {
  constructor(stage, renderer, { lights, bounds }) {
    this.bounds = bounds;
    const fill = lights.length > 0 ? FILL_BESIDE_LIGHTS : 1;
    stage.environment = makeRoom(renderer, fill);
    takeOver(lights, bounds);
    this.shoulder = null;
    if (lights.length === 0) {
      this.shoulder = makeShoulderLight(bounds);
      stage.add(this.shoulder, this.shoulder.target);
    }
    const sky = new HemisphereLight(colorOf(SKY), colorOf(GROUND), Math.PI * fill * USUALLY_OPEN);
    sky.updateMatrixWorld(true);
    stage.add(sky);
  }

  // From behind the shoulder of that camera, where the scene has no lights.
  follow(camera) {
    if (!this.shoulder) return;
    const [right, up, back] = [new Vector3(), new Vector3(), new Vector3()];
    camera.matrixWorld.extractBasis(right, up, back);
    const forward = back.negate();
    const flat = new Vector3(forward.x, 0, forward.z).addScaledVector(forward, 0.05).normalize();
    const direction = flat
      .multiplyScalar(0.42)
      .addScaledVector(right, 0.72)
      .add(new Vector3(0, -1, 0));
    aim(this.shoulder, direction.normalize(), this.bounds);
  }
}

export class Backdrop {
  constructor() {
    const uniforms = {};
    for (const part of Object.keys(BACKDROPS.dark)) uniforms[part] = { value: new Color() };
    const material = new ShaderMaterial({
      uniforms,
      side: BackSide,
      depthWrite: false,
      depthTest: false,
      toneMapped: false,
      vertexShader: `
        varying vec3 direction;
        void main() {
          direction = position;
          gl_Position = projectionMatrix * vec4(mat3(viewMatrix) * position, 1.0);
          gl_Position.z = gl_Position.w * 0.999;
        }`,
      fragmentShader: `
        varying vec3 direction;
        uniform vec3 ground;
        uniform vec3 distant;
        uniform vec3 horizon;
        uniform vec3 zenith;
        ${BACKDROP}
        void main() {
          float up = normalize( direction ).y;
          gl_FragColor = vec4( backdrop( up, ground, distant, horizon, zenith ), 1.0 );
          #include <colorspace_fragment>
        }`,
    });
    this.uniforms = uniforms;
    this.mesh = new Mesh(new SphereGeometry(1, 48, 32), material);
    this.mesh.frustumCulled = false;
    this.mesh.renderOrder = -1;
    this.setTheme('dark');
  }

  setTheme(theme) {
    for (const [part, color] of Object.entries(BACKDROPS[theme]))
      this.uniforms[part].value.copy(colorOf(color));
  }
}
