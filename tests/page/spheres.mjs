// A scene for looking at surfaces: rows of spheres under a sun, each of another material, as one
// glTF file.
import { deflateSync } from 'node:zlib';

const COLUMNS = 4;
const ROWS = 3;
const STEP = 4; // between the middles of spheres with a radius of 1: metals mirror little of others
const FAR = 60; // of the camera from them
const [ACROSS, AROUND] = [32, 64]; // faces of a sphere

export const SIZE = [960, 720];

// By what is told of a material: the rest of it is plain.
const SURFACES = {
  Mirror: { color: [0.95, 0.93, 0.9], metallic: 1, roughness: 0.05 },
  'Brushed gold': { color: [1, 0.77, 0.34], metallic: 1, roughness: 0.5 },
  'Hammered copper': { color: [0.95, 0.5, 0.35], metallic: 1, roughness: 0.25, bumps: true },
  'Inlaid wood': { color: [0.8, 0.45, 0.15], metallic: 1, roughness: 1, inlay: true },
  'Polished plastic': { color: [0.6, 0.06, 0.05], roughness: 0.1 },
  Chalk: { color: [0.6, 0.06, 0.05], roughness: 1 },
  Clay: { color: [0.5, 0.5, 0.5], roughness: 0.6 },
  'Embossed clay': { color: [0.5, 0.5, 0.5], roughness: 0.6, bumps: true },
  Lamp: { color: [0, 0, 0], roughness: 1, emissive: [0.15, 0.6, 0.75] },
  Fence: { color: [0.1, 0.5, 0.15], roughness: 0.8, cut: true },
  Glass: { color: [0.1, 0.2, 0.8], roughness: 0.6, alpha: 0.4 },
  'Blue paint': { color: [0.1, 0.2, 0.8], roughness: 0.6 },
};
export const NAMES = Object.keys(SURFACES);
export const METALS = NAMES.filter((name) => SURFACES[name].metallic === 1);

const placeOf = (index) => [
  ((index % COLUMNS) - (COLUMNS - 1) / 2) * STEP,
  ((ROWS - 1) / 2 - Math.floor(index / COLUMNS)) * STEP,
];

// Where each sphere is in a picture of SIZE: its middle and its radius, in pixels.
export function circles() {
  const unit = SIZE[1] / (ROWS * STEP);
  return NAMES.map((_, index) => {
    const [x, y] = placeOf(index);
    return { x: SIZE[0] / 2 + x * unit, y: SIZE[1] / 2 - y * unit, radius: unit };
  });
}

// The sum that ends a part of a PNG file (ISO 3309).
function sumOf(bytes) {
  let sum = 0xffffffff;
  for (const byte of bytes) {
    sum ^= byte;
    for (let bit = 0; bit < 8; ++bit) sum = (sum >>> 1) ^ (sum & 1 ? 0xedb88320 : 0);
  }
  return ~sum >>> 0;
}

function partOf(name, contents) {
  const part = Buffer.alloc(12 + contents.length);
  part.writeUInt32BE(contents.length, 0);
  part.write(name, 4, 'latin1');
  contents.copy(part, 8);
  part.writeUInt32BE(sumOf(part.subarray(4, 8 + contents.length)), 8 + contents.length);
  return part;
}

// A PNG file of what `pixelAt` says of places of 0..1: red, green, blue and opacity.
function pngOf(width, height, pixelAt) {
  const rows = [];
  for (let y = 0; y < height; ++y) {
    rows.push(0); // not filtered
    for (let x = 0; x < width; ++x) {
      const pixel = pixelAt((x + 0.5) / width, (y + 0.5) / height);
      rows.push(...pixel.map((share) => Math.round(255 * share)));
    }
  }
  const head = Buffer.alloc(13);
  head.writeUInt32BE(width, 0);
  head.writeUInt32BE(height, 4);
  head.set([8, 6], 8); // 8 bits of each of four channels
  return Buffer.concat([
    Buffer.from('\x89PNG\r\n\x1a\n', 'latin1'),
    partOf('IHDR', head),
    partOf('IDAT', deflateSync(Buffer.from(rows))),
    partOf('IEND', Buffer.alloc(0)),
  ]);
}

const isStriped = (u) => (u * 8) % 1 < 0.5;

// Rows of humps: the slopes of sin(16 pi u) sin(8 pi v), turned into a direction.
function bumpAt(u, v) {
  const [a, b] = [16 * Math.PI * u, 8 * Math.PI * v];
  const direction = [-0.6 * Math.cos(a) * Math.sin(b), 0.6 * Math.sin(a) * Math.cos(b), 1];
  const length = Math.hypot(...direction);
  return [...direction.map((part) => (part / length + 1) / 2), 1];
}

const PICTURES = {
  bumps: pngOf(256, 128, bumpAt),
  inlay: pngOf(128, 8, (u) => (isStriped(u) ? [1, 0.3, 1, 1] : [1, 0.8, 0, 1])),
  cut: pngOf(128, 8, (u) => [1, 1, 1, isStriped(u) ? 1 : 0]),
};
const pictureOf = (name) => ({ index: Object.keys(PICTURES).indexOf(name) });

function materialOf(name) {
  const { color, roughness, metallic = 0, emissive, alpha = 1, bumps, inlay, cut } = SURFACES[name];
  const surface = { baseColorFactor: [...color, alpha], metallicFactor: metallic };
  surface.roughnessFactor = roughness;
  if (inlay) surface.metallicRoughnessTexture = pictureOf('inlay');
  if (cut) surface.baseColorTexture = pictureOf('cut');
  const material = { name, pbrMetallicRoughness: surface };
  if (bumps) material.normalTexture = pictureOf('bumps');
  if (emissive) material.emissiveFactor = emissive;
  if (cut) Object.assign(material, { alphaMode: 'MASK', doubleSided: true });
  if (alpha < 1) material.alphaMode = 'BLEND';
  return material;
}

function sphere() {
  const [places, coordinates, corners] = [[], [], []];
  for (let row = 0; row <= ACROSS; ++row) {
    for (let column = 0; column <= AROUND; ++column) {
      const [v, u] = [row / ACROSS, column / AROUND];
      const [down, round] = [Math.PI * v, 2 * Math.PI * u];
      places.push(
        Math.sin(down) * Math.sin(round),
        Math.cos(down),
        Math.sin(down) * Math.cos(round),
      );
      coordinates.push(u, v);
      if (row === ACROSS || column === AROUND) continue;
      const at = row * (AROUND + 1) + column;
      const below = at + AROUND + 1;
      if (row > 0) corners.push(at, below, at + 1);
      if (row < ACROSS - 1) corners.push(at + 1, below, below + 1);
    }
  }
  return { places, coordinates, corners };
}

const data = (type, bytes) => 'data:' + type + ';base64,' + Buffer.from(bytes).toString('base64');

function geometry() {
  const { places, coordinates, corners } = sphere();
  const parts = [new Float32Array(places), new Float32Array(coordinates), new Uint16Array(corners)];
  const bytes = Buffer.concat(parts.map((part) => Buffer.from(part.buffer)));
  let byteOffset = 0;
  const bufferViews = parts.map(({ byteLength }) => {
    byteOffset += byteLength;
    return { buffer: 0, byteOffset: byteOffset - byteLength, byteLength };
  });
  const [count, float] = [places.length / 3, 5126];
  const accessors = [
    { bufferView: 0, componentType: float, count, type: 'VEC3', min: [-1, -1, -1], max: [1, 1, 1] },
    { bufferView: 1, componentType: float, count, type: 'VEC2' },
    { bufferView: 2, componentType: 5123, count: corners.length, type: 'SCALAR' },
  ];
  const buffers = [{ uri: data('application/octet-stream', bytes), byteLength: bytes.length }];
  return { buffers, bufferViews, accessors };
}

// The whole file, as text. The sun shines from the upper left behind the camera.
export function makeSpheres() {
  const attributes = { POSITION: 0, NORMAL: 0, TEXCOORD_0: 1 };
  const nodes = NAMES.map((name, mesh) => ({ name, mesh, translation: [...placeOf(mesh), 0] }));
  const lens = {
    yfov: 2 * Math.atan((ROWS * STEP) / 2 / FAR),
    aspectRatio: SIZE[0] / SIZE[1],
    znear: 1,
    zfar: 100,
  };
  nodes.push({ name: 'Camera', camera: 0, translation: [0, 0, FAR] });
  nodes.push({
    name: 'Sun',
    rotation: [-0.353, -0.353, -0.146, 0.854],
    extensions: { KHR_lights_punctual: { light: 0 } },
  });
  return JSON.stringify({
    asset: { version: '2.0' },
    extensionsUsed: ['KHR_lights_punctual'],
    extensions: {
      KHR_lights_punctual: {
        lights: [{ type: 'directional', color: [0.9, 0.88, 0.85], intensity: 3 }],
      },
    },
    scene: 0,
    scenes: [{ nodes: nodes.map((_, index) => index) }],
    nodes,
    cameras: [{ type: 'perspective', perspective: lens }],
    materials: NAMES.map(materialOf),
    meshes: NAMES.map((name, material) => ({
      name,
      primitives: [{ attributes, indices: 2, material }],
    })),
    textures: Object.keys(PICTURES).map((_, source) => ({ source })),
    images: Object.values(PICTURES).map((bytes) => ({ uri: data('image/png', bytes) })),
    ...geometry(),
  });
}
