// The scene with its states. A state is which nodes show and which material each surface has; going
// from one to another touches what differs between the two and nothing else.
import { Box3, Vector3 } from 'three';
import { GLTFLoader } from 'three/addons/loaders/GLTFLoader.js';

const VARIANTS = 'KHR_materials_variants';

// Members of two sorted lists that are in one of them only.
function differing(a, b) {
  const only = { first: [], second: [] };
  let i = 0;
  let j = 0;
  while (i < a.length || j < b.length) {
    if (j >= b.length || a[i] < b[j]) only.first.push(a[i++]);
    else if (i >= a.length || b[j] < a[i]) only.second.push(b[j++]);
    else (++i, ++j);
  }
  return only;
}

// Whether it and all above it show.
export function isShown(object) {
  for (let up = object; up; up = up.parent) if (!up.visible) return false;
  return true;
}

export class StateScene {
  // `bytes`: of the glTF file. Rejects with an Error for a person.
  static async read(bytes) {
    let gltf;
    try {
      gltf = await new GLTFLoader().parseAsync(bytes, '');
    } catch (error) {
      throw new Error('The scene in this page is damaged: ' + error.message, { cause: error });
    }
    const scene = new StateScene(gltf);
    await scene.readVariants(gltf.parser);
    return scene;
  }

  constructor(gltf) {
    this.root = gltf.scene;
    this.json = gltf.parser.json;
    const extras = this.json.extras?.stagemarks;
    if (!Array.isArray(extras?.states) || extras.states.length === 0)
      throw new Error('The scene in this page does not say what its states are.');
    this.states = extras.states;
    for (const state of this.states) state.hidden = [...(state.hidden ?? [])].sort((a, b) => a - b);
    this.nodes = new Map(); // by index
    this.surfaces = []; // meshes with their material of each variant
    this.lights = [];
    this.current = -1;
    this.pairs = new Map(); // what differs between two states
    this.collect(gltf.parser.associations);
    this.root.updateMatrixWorld(true);
    this.bounds = new Box3().setFromObject(this.root);
    if (this.bounds.isEmpty()) this.bounds.set(new Vector3(-1, -1, -1), new Vector3(1, 1, 1));
    // Nothing moves: frames need not be multiplied again with each picture.
    this.root.traverse((object) => {
      object.matrixAutoUpdate = false;
      object.matrixWorldAutoUpdate = false;
    });
  }

  // Nodes by the loader's own account: names may be equal, and are changed while they are read.
  collect(associations) {
    this.root.traverse((object) => {
      const place = associations.get(object);
      if (place?.nodes !== undefined && !this.nodes.has(place.nodes)) {
        this.nodes.set(place.nodes, object);
        object.visible = true;
      }
      if (object.isMesh || object.isLine || object.isPoints) this.addSurface(object, place);
      if (object.isLight) this.lights.push(object);
    });
    for (const light of this.lights) light.userData.brightness = light.intensity;
    this.readBrightness();
  }

  // As the program's own pictures have it: the intensities of the file may be in candela.
  readBrightness() {
    const brightness = this.json.extras.stagemarks.brightness ?? [];
    for (const [index, object] of this.nodes) {
      const light = this.json.nodes[index].extensions?.KHR_lights_punctual?.light;
      if (brightness[light] === undefined) continue;
      for (const part of this.lightsOf(object)) part.userData.brightness = brightness[light];
    }
  }

  // The light that a node is, or has beside a mesh.
  lightsOf(object) {
    if (object.isLight) return [object];
    return object.children.filter((child) => child.isLight && !this.isNode(child));
  }

  addSurface(object, place) {
    object.castShadow = object.receiveShadow = true;
    object.material.shadowSide = object.material.side;
    const primitive = this.json.meshes?.[place?.meshes]?.primitives?.[place?.primitives ?? 0];
    const mappings = primitive?.extensions?.[VARIANTS]?.mappings ?? [];
    this.surfaces.push({ object, mappings, own: object.material, of: [] });
  }

  async readVariants(parser) {
    const reading = [];
    for (const surface of this.surfaces) {
      for (const { material, variants } of surface.mappings) {
        reading.push(this.readMaterial(parser, surface, material, variants));
      }
    }
    await Promise.all(reading);
    this.changing = this.surfaces.filter((surface) => surface.of.length > 0);
  }

  async readMaterial(parser, surface, index, variants) {
    const material = await parser.getDependency('material', index);
    const { object, own } = surface;
    object.material = material;
    parser.assignFinalMaterial(object); // as the mesh wants it: with its colors or without normals
    object.material.shadowSide = object.material.side;
    for (const variant of variants) surface.of[variant] = object.material;
    object.material = own;
  }

  materialIn(surface, state) {
    return surface.of[this.states[state].variant] ?? surface.own;
  }

  // What has to be done to go from one state to another.
  difference(from, to) {
    const key = from * this.states.length + to;
    let pair = this.pairs.get(key);
    if (!pair) {
      const { first, second } = differing(this.states[from].hidden, this.states[to].hidden);
      const surfaces = this.changing.filter(
        (s) => this.materialIn(s, from) !== this.materialIn(s, to),
      );
      pair = { appearing: first, hiding: second, surfaces };
      this.pairs.set(key, pair);
    }
    return pair;
  }

  // Brings the scene into a state. Whether there was anything to do.
  show(state) {
    if (state === this.current) return false;
    if (this.current < 0) {
      for (const node of this.states[state].hidden) this.setVisible(node, false);
      for (const surface of this.changing)
        surface.object.material = this.materialIn(surface, state);
    } else {
      const pair = this.difference(this.current, state);
      for (const node of pair.appearing) this.setVisible(node, true);
      for (const node of pair.hiding) this.setVisible(node, false);
      for (const surface of pair.surfaces)
        surface.object.material = this.materialIn(surface, state);
    }
    this.current = state;
    return true;
  }

  // A light that is off stays in the scene with no brightness: shaders are made for a number of
  // lights, and making them anew would halt the picture.
  setVisible(node, visible) {
    const object = this.nodes.get(node);
    if (!object) return;
    for (const light of this.lightsOf(object)) {
      light.intensity = visible ? light.userData.brightness : 0;
    }
    if (!object.isLight) object.visible = visible;
  }

  isNode(object) {
    this.objects ??= new Set(this.nodes.values());
    return this.objects.has(object);
  }

  // The camera of a state as the file has it, null where it has none; and its picture's shape.
  cameraOf(state) {
    const node = this.nodes.get(this.states[state].camera);
    let camera = null;
    node?.traverse((object) => {
      if (object.isCamera && !camera) camera = object;
    });
    return camera;
  }

  shapeOf(state) {
    const [width, height] = this.states[state].size ?? [];
    return width > 0 && height > 0 ? width / height : 16 / 9;
  }

  // Names of the nodes with a surface that shows, as the file has them, and of their materials.

  shownNames() {
    const names = new Set();
    for (const [index, object] of this.nodes) {
      const node = this.json.nodes[index];
      if (node.mesh !== undefined && isShown(object)) names.add(node.name);
    }
    return [...names].sort();
  }

  shownMaterials() {
    const shown = this.surfaces.filter(({ object }) => isShown(object));
    return [...new Set(shown.map(({ object }) => object.material.name))].sort();
  }
}
