// The picture: renderer, the camera with its flights from state to state, looking around by mouse,
// touch and keys, and two states with a boundary between them. Drawn when something has changed.
import {
  CustomToneMapping,
  HalfFloatType,
  MathUtils,
  Matrix4,
  OrthographicCamera,
  PCFShadowMap,
  PerspectiveCamera,
  Quaternion,
  Raycaster,
  Scene,
  Sphere,
  Spherical,
  UnsignedByteType,
  Vector2,
  Vector3,
  WebGLRenderer,
} from 'three';
import { OrbitControls } from 'three/addons/controls/OrbitControls.js';
import { Backdrop, Lighting } from './light.js';
import { isShown } from './scene.js';

const FLIGHT = 750; // milliseconds
const UP = new Vector3(0, 1, 0);
const MOST_TRIANGLES_TO_SEARCH = 400000; // for what stands in the middle of the picture
const MOST_PIXELS = 2.6e6; // beyond that a screen's own pixels are not all drawn

const ease = (t) => (t < 0.5 ? 4 * t * t * t : 1 - (2 - 2 * t) ** 3 / 2);

// Where one looks from and through what. `half`: half the width of what is seen, of a parallel view
// by itself, else per distance; cameras keep it whatever the shape of the picture is.
function poseOf(camera, shape) {
  const [position, turn, scale] = [new Vector3(), new Quaternion(), new Vector3()];
  camera.matrixWorld.decompose(position, turn, scale);
  const isParallel = camera.isOrthographicCamera === true;
  const half = isParallel
    ? camera.right
    : Math.tan(MathUtils.degToRad(camera.fov) / 2) * camera.aspect;
  return { position, turn, shape, near: camera.near, isParallel, half };
}

// A pose that shows the whole scene, for a state that has no camera.
function framing(bounds, shape) {
  const sphere = bounds.getBoundingSphere(new Sphere());
  const angle = 0.65;
  const distance = (sphere.radius * 1.1) / Math.sin(angle / 2) / Math.min(1, shape);
  const direction = new Vector3(Math.sin(0.65), 0.45, Math.cos(0.65)).normalize();
  const position = sphere.center.clone().addScaledVector(direction, distance);
  const turn = new Quaternion().setFromRotationMatrix(
    new Matrix4().lookAt(position, sphere.center, UP),
  );
  return { position, turn, shape, near: 0, isParallel: false, half: Math.tan(angle / 2) * shape };
}

// An axis to turn around that leaves the picture upright as it is: that of the world, unless the
// camera is tilted sideways or looks straight up or down.
function axisOf(turn) {
  const right = new Vector3(1, 0, 0).applyQuaternion(turn);
  const forward = new Vector3(0, 0, -1).applyQuaternion(turn);
  const axis = UP.clone().addScaledVector(right, -right.dot(UP)).normalize();
  const isStraight = Math.abs(forward.dot(axis)) > 0.998 || axis.lengthSq() < 0.5;
  return isStraight ? new Vector3(0, 1, 0).applyQuaternion(turn) : axis;
}

// What is seen through glass has to be added as light, before it becomes shades of a screen. That
// takes a picture of larger numbers, which some old devices do not have.
function pictureType() {
  const context = document.createElement('canvas').getContext('webgl2');
  return context?.getExtension('EXT_color_buffer_float') ? HalfFloatType : UnsignedByteType;
}

export class View {
  // Throws where the browser can draw no 3D. `changed`: told when a person looks around or is back.
  constructor(canvas, changed) {
    this.canvas = canvas;
    this.changed = changed;
    this.renderer = new WebGLRenderer({
      canvas,
      antialias: true,
      outputBufferType: pictureType(),
      powerPreference: 'high-performance',
    });
    this.renderer.toneMapping = CustomToneMapping;
    this.renderer.shadowMap.enabled = true;
    this.renderer.shadowMap.type = PCFShadowMap;
    this.renderer.shadowMap.autoUpdate = false;
    this.stage = new Scene();
    this.stage.matrixWorldAutoUpdate = false;
    this.backdrop = new Backdrop();
    this.stage.add(this.backdrop.mesh);
    this.perspective = new PerspectiveCamera();
    this.parallel = new OrthographicCamera();
    this.camera = this.perspective;
    this.state = 0;
    this.other = -1; // on the right of the boundary; none
    this.boundary = 0.5;
    this.isFree = false; // a person has looked around
    this.flight = null;
    this.waiting = []; // for the picture to come to rest
    this.stillness = matchMedia('(prefers-reduced-motion: reduce)');
    new ResizeObserver(() => this.resize()).observe(canvas);
  }

  async put(scene) {
    this.scene = scene;
    this.stage.add(scene.root);
    this.lighting = new Lighting(this.stage, this.renderer, scene);
    scene.show(this.state);
    this.triangles = 0;
    for (const { object } of scene.surfaces) {
      const geometry = object.geometry;
      this.triangles += (geometry.index ?? geometry.attributes.position).count / 3;
    }
    this.resize();
    this.take(this.poseFor(this.state));
    this.makeControls();
    await this.renderer.compileAsync(this.stage, this.camera);
    this.draw();
  }

  resize() {
    const { clientWidth: width, clientHeight: height } = this.canvas;
    if (!width || !height) return;
    const ratio = Math.min(devicePixelRatio, 2, Math.sqrt(MOST_PIXELS / (width * height)));
    this.renderer.setPixelRatio(Math.max(ratio, Math.min(1, devicePixelRatio)));
    this.renderer.setSize(width, height, false);
    if (!this.scene) return;
    if (this.pose) this.fit(this.camera, this.pose);
    this.draw(); // at once: a canvas is empty after its size has changed
  }

  setTheme(theme) {
    this.backdrop.setTheme(theme);
    this.invalidate();
  }

  // Poses

  poseFor(state) {
    const camera = this.scene.cameraOf(state);
    const shape = this.scene.shapeOf(state);
    return camera ? poseOf(camera, shape) : framing(this.scene.bounds, shape);
  }

  // Stands there, looking through the lens of the pose.
  take(pose) {
    this.pose = pose;
    this.camera = pose.isParallel ? this.parallel : this.perspective;
    this.place(this.camera, pose);
  }

  place(camera, pose) {
    camera.position.copy(pose.position);
    camera.quaternion.copy(pose.turn);
    camera.zoom = 1;
    this.fit(camera, pose);
    camera.updateMatrixWorld();
  }

  // The whole picture of the state is in view, whatever shape the window has.
  fit(camera, pose) {
    const shape = this.canvas.clientWidth / Math.max(1, this.canvas.clientHeight);
    const high = (pose.half / pose.shape) * Math.max(1, pose.shape / shape);
    if (camera.isPerspectiveCamera) {
      camera.fov = MathUtils.radToDeg(2 * Math.atan(Math.min(20, high)));
      camera.aspect = shape;
    } else {
      Object.assign(camera, { top: high, bottom: -high, left: -high * shape, right: high * shape });
    }
    this.setLimits(camera, pose.near);
  }

  // Near and far as the scene needs them from there: the depth of the picture is finer so.
  setLimits(camera, near) {
    const sphere = this.scene.bounds.getBoundingSphere(new Sphere());
    const distance = sphere.center.distanceTo(camera.position);
    const far = (distance + sphere.radius) * 1.02;
    camera.far = far;
    camera.near = camera.isOrthographicCamera
      ? -far
      : Math.max(near, (distance - sphere.radius) * 0.9, far * 2e-4);
    if (camera.isOrthographicCamera) camera.near = Math.max(0, near);
    camera.updateProjectionMatrix();
  }

  // Shows a state; flies to its camera, unless it is stood there already or motion is unwanted.
  go(state, { soft = true } = {}) {
    this.state = state;
    const end = this.poseFor(state);
    const start = this.here();
    this.setFree(false);
    const isStill =
      !soft || this.stillness.matches || this.other >= 0 || end.isParallel !== start.isParallel;
    const isThere =
      start.position.distanceTo(end.position) < 1e-6 && start.turn.angleTo(end.turn) < 1e-6;
    this.flight = isStill || isThere ? null : { start, end, began: null };
    if (!this.flight) this.arrive(end);
    this.invalidate();
  }

  here() {
    const pose = {
      ...this.pose,
      position: this.camera.position.clone(),
      turn: this.camera.quaternion.clone(),
    };
    return pose;
  }

  advance(time) {
    const { start, end } = this.flight;
    this.flight.began ??= time;
    const share = Math.min(1, (time - this.flight.began) / FLIGHT);
    if (share >= 1) {
      this.flight = null;
      return this.arrive(end);
    }
    const t = ease(share);
    const mix = (from, to) => MathUtils.lerp(from, to, t);
    this.take({
      ...end,
      position: start.position.clone().lerp(end.position, t),
      turn: start.turn.clone().slerp(end.turn, t),
      shape: mix(start.shape, end.shape),
      near: Math.min(start.near, end.near),
      half: mix(start.half, end.half),
    });
  }

  arrive(pose) {
    this.take(pose);
    this.makeControls();
  }

  // Looking around

  makeControls() {
    this.controls?.dispose();
    this.camera.up.copy(axisOf(this.pose.turn));
    const controls = new OrbitControls(this.camera, this.canvas);
    controls.enableDamping = !this.stillness.matches;
    controls.dampingFactor = 0.12;
    controls.zoomToCursor = true;
    controls.rotateSpeed = 0.8;
    controls.maxDistance = this.scene.bounds.getSize(new Vector3()).length() * 6;
    const forward = new Vector3(0, 0, -1).applyQuaternion(this.pose.turn);
    controls.target
      .copy(this.pose.position)
      .addScaledVector(forward, this.distanceToMiddle(forward));
    controls.addEventListener('start', () => this.setFree(true));
    controls.addEventListener('change', () => this.invalidate());
    this.controls = controls;
  }

  // How far away that is what one looks at.
  distanceToMiddle(forward) {
    const sphere = this.scene.bounds.getBoundingSphere(new Sphere());
    if (this.triangles <= MOST_TRIANGLES_TO_SEARCH) {
      const caster = new Raycaster();
      caster.setFromCamera(new Vector2(0, 0), this.camera);
      const hit = caster
        .intersectObject(this.scene.root, true)
        .find(({ object }) => isShown(object));
      if (hit) return hit.distance;
    }
    const along = sphere.center.clone().sub(this.pose.position).dot(forward);
    return Math.max(along, sphere.radius * 0.25);
  }

  setFree(isFree) {
    if (this.flight && isFree) {
      this.flight = null;
      this.makeControls();
    }
    if (this.isFree === isFree) return;
    this.isFree = isFree;
    this.changed();
  }

  // By keys: parts of a turn around the middle, and nearer (above 1) or away.
  orbit(across, up, nearer = 1) {
    if (!this.controls) return;
    this.setFree(true);
    const { target } = this.controls;
    const toWorld = new Quaternion().setFromUnitVectors(UP, this.camera.up);
    const offset = this.camera.position
      .clone()
      .sub(target)
      .applyQuaternion(toWorld.clone().invert());
    const place = new Spherical().setFromVector3(offset);
    place.theta -= across * Math.PI * 2;
    place.phi = MathUtils.clamp(place.phi - up * Math.PI * 2, 0.01, Math.PI - 0.01);
    if (this.camera.isOrthographicCamera) this.camera.zoom *= nearer;
    else place.radius /= nearer;
    this.camera.position
      .copy(target)
      .add(new Vector3().setFromSpherical(place).applyQuaternion(toWorld));
    this.camera.updateProjectionMatrix();
    this.controls.update();
    this.invalidate();
  }

  // Two states

  compare(other) {
    this.other = other;
    this.flight = null;
    if (!this.isFree) this.arrive(this.poseFor(this.state));
    this.invalidate();
  }

  setBoundary(share) {
    this.boundary = share;
    this.invalidate();
  }

  // Drawing

  invalidate() {
    this.requested ??= requestAnimationFrame((time) => this.frame(time));
  }

  frame(time) {
    this.requested = null;
    if (!this.scene || this.lost) return this.rest();
    if (this.flight) this.advance(time);
    const moves = !this.flight && this.controls?.update();
    this.draw();
    if (this.flight || moves) this.invalidate();
    if (!this.requested) this.rest();
  }

  rest() {
    for (const done of this.waiting.splice(0)) done();
  }

  // When nothing moves any more and the picture is drawn.
  settled() {
    return new Promise((done) => {
      this.waiting.push(done);
      this.invalidate();
    });
  }

  draw() {
    if (!this.scene || !this.pose) return;
    const { renderer } = this;
    const { clientWidth: width, clientHeight: height } = this.canvas;
    renderer.setScissorTest(this.other >= 0);
    if (this.other < 0) return this.drawState(this.state, this.camera);
    const edge = Math.round(width * this.boundary);
    renderer.setScissor(0, 0, edge, height);
    this.drawState(this.state, this.camera);
    renderer.setScissor(edge, 0, width - edge, height);
    this.drawState(this.other, this.isFree ? this.camera : this.cameraFor(this.other));
  }

  // Each of two states is seen from its own camera until a person looks around.
  cameraFor(state) {
    const pose = this.poseFor(state);
    const camera = pose.isParallel ? new OrthographicCamera() : new PerspectiveCamera();
    this.place(camera, pose);
    return camera;
  }

  drawState(state, camera) {
    this.setLimits(camera, Math.min(this.pose.near, camera.near));
    const isOther = this.scene.show(state);
    this.lighting.follow(this.standing(state) ?? camera);
    if (isOther || this.shadowsOf !== state) this.renderer.shadowMap.needsUpdate = true;
    this.shadowsOf = state;
    this.renderer.render(this.stage, camera);
  }

  // The camera by which a scene without lights is lit: that of the state, also while one looks
  // around or is on the way.
  standing(state) {
    if (!this.lighting.shoulder) return null;
    this.standings ??= new Map();
    if (!this.standings.has(state)) this.standings.set(state, this.cameraFor(state));
    return this.standings.get(state);
  }
}
