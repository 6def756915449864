// How the page lights a scene, by the rules of the pictures that the program itself renders: lights
// do not grow weaker with distance, a white surface that faces one of brightness 1 is as bright as
// that, something of the sky and the ground reaches everything, and a scene without lights has one
// behind the shoulder of whoever looks. On top of it comes a room that metals mirror.
import {
  BackSide,
  Color,
  DirectionalLight,
  HemisphereLight,
  Mesh,
  PMREMGenerator,
  ShaderChunk,
  ShaderMaterial,
  SphereGeometry,
  Vector3,
} from 'three';
import { RoomEnvironment } from 'three/addons/environments/RoomEnvironment.js';

const MOST_SHADOWS = 3; // each costs a texture in every surface
const SKY = [0.3, 0.335, 0.385];
const GROUND = [0.15, 0.14, 0.128];
const FILL_BESIDE_LIGHTS = 0.7;
const USUALLY_OPEN = 0.7; // of what surrounds a point, the share that nothing stands in front of
const ROOM = 0.35; // of the room's brightness, which metals mirror

// Light with a range fades evenly on the way to its end, as in the program's own pictures.
const FADING = 'pow2( saturate( 1.0 - pow4( lightDistance / cutoffDistance ) ) )';
ShaderChunk.lights_pars_begin = ShaderChunk.lights_pars_begin.replace(
  FADING,
  '( 1.0 - smoothstep( 0.0, cutoffDistance, lightDistance ) )',
);

const colorOf = ([red, green, blue]) => new Color().setRGB(red, green, blue);

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

export class Lighting {
  constructor(stage, renderer, { lights, bounds }) {
    this.bounds = bounds;
    const generator = new PMREMGenerator(renderer);
    const room = new RoomEnvironment();
    stage.environment = generator.fromScene(room, 0.04).texture;
    stage.environmentIntensity = ROOM;
    room.dispose?.();
    generator.dispose();
    takeOver(lights, bounds);
    this.shoulder = null;
    if (lights.length === 0) {
      this.shoulder = makeShoulderLight(bounds);
      stage.add(this.shoulder, this.shoulder.target);
    }
    const fill = lights.length > 0 ? FILL_BESIDE_LIGHTS : 1;
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
        void main() {
          float up = normalize(direction).y;
          vec3 color = up < 0.0 ? mix(distant, ground, smoothstep(0.0, 0.55, -up))
            : mix(mix(distant, horizon, smoothstep(0.0, 0.035, up)), zenith, pow(up, 0.55));
          gl_FragColor = vec4(color, 1.0);
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
