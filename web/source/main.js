// The page: the list, the view and what a person does with both. What fails is said in words on the
// page, and the thumbnails remain.
import { readContents, readScene, shownDate } from './data.js';
import { List } from './list.js';
import { StateScene } from './scene.js';
import { View } from './view.js';

const part = (id) => document.getElementById(id);
const page = part('page');
const root = document.documentElement;

function sayProblem(title, text) {
  part('loading').hidden = true;
  part('message').hidden = false;
  part('message').querySelector('h2').textContent = title;
  part('message').querySelector('p').textContent = text;
  root.dataset.page = 'error';
}

class Page {
  constructor({ title, states }) {
    this.states = states;
    this.at = 0;
    this.other = -1;
    document.title = title;
    part('title').textContent = title;
    this.list = new List(states, (index) => this.show(index));
    for (const side of ['left', 'right']) {
      for (const state of states) part(side).add(new Option(state.name, state.index));
    }
    part('compare').hidden = states.length < 2;
    for (const way of ['previous', 'next']) part(way).hidden = states.length < 2;
    this.setTheme(matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light');
    this.listen();
    this.readAddress();
    this.tell();
  }

  // The view, which comes later than the list: a scene takes a moment.
  async open() {
    try {
      this.view = new View(part('view'), () => this.tellView());
    } catch {
      throw new Error(
        'This browser shows no 3D graphics (WebGL). Switch on hardware acceleration in its ' +
          'settings, or open the page in another browser. Below is a picture of the state.',
      );
    }
    part('view').addEventListener('webglcontextlost', (event) => this.lose(event));
    part('view').addEventListener('webglcontextrestored', () => location.reload());
    this.view.setTheme(root.dataset.theme);
    this.view.state = this.at;
    const scene = await StateScene.read(readScene());
    if (scene.states.length !== this.states.length)
      throw new Error('The scene in this page belongs to another list of states.');
    this.view.state = this.at;
    await this.view.put(scene);
    this.scene = scene;
    part('loading').hidden = true;
    this.tell();
    if (this.other >= 0) this.compare(this.other);
    root.dataset.page = 'ready';
  }

  lose(event) {
    event.preventDefault();
    this.view.lost = true;
    sayProblem(
      'The picture was lost',
      'The graphics of this device were reset. The page loads again as soon as they are back.',
    );
  }

  // States

  show(index) {
    this.at = index;
    if (this.scene) this.view.go(index);
    this.tell();
  }

  compare(other) {
    this.other = other;
    if (this.scene) this.view.compare(other);
    this.tell();
  }

  toggleComparing() {
    this.compare(this.other >= 0 ? -1 : this.list.neighbor(this.at, 1));
    if (this.other >= 0) part('wipe').focus();
  }

  tell() {
    const state = this.states[this.at];
    this.list.mark(this.at);
    part('name').textContent = state.name;
    part('date').textContent = shownDate(state.date);
    part('view').ariaLabel = '3D view of the state ' + state.name;
    const isComparing = this.other >= 0;
    part('status').textContent =
      state.name + (isComparing ? ' beside ' + this.states[this.other].name : '');
    part('picture').hidden = !!this.scene || !state.thumbnail;
    if (!this.scene && state.thumbnail) part('picture').src = state.thumbnail;
    part('caption').hidden = isComparing;
    part('compare').ariaPressed = String(isComparing);
    for (const id of ['sides', 'wipe']) part(id).hidden = !isComparing;
    part('left').value = this.at;
    if (isComparing) part('right').value = this.other;
    this.writeAddress();
  }

  tellView() {
    part('reset').disabled = !this.view.isFree;
  }

  // The address names what is shown, so that it can be handed on.

  readAddress() {
    const wanted = { state: -1, compare: -1 };
    for (const entry of location.hash.slice(1).split('&')) {
      const [key, value = ''] = entry.split(/=(.*)/s);
      let name = value;
      try {
        name = decodeURIComponent(value);
      } catch {
        // A name with a lone "%", typed by hand.
      }
      if (key in wanted) wanted[key] = this.states.findIndex((state) => state.name === name);
    }
    if (wanted.state >= 0) this.at = wanted.state;
    this.other = wanted.compare;
  }

  writeAddress() {
    let address = '#state=' + encodeURIComponent(this.states[this.at].name);
    if (this.other >= 0) address += '&compare=' + encodeURIComponent(this.states[this.other].name);
    if (address === location.hash || (!location.hash && this.at === 0 && this.other < 0)) return;
    try {
      history.replaceState(null, '', address);
    } catch {
      // Where a page may not change its address it is shown all the same.
    }
  }

  // What a person does

  listen() {
    const click = (id, work) => part(id).addEventListener('click', work);
    click('previous', () => this.show(this.list.neighbor(this.at, -1)));
    click('next', () => this.show(this.list.neighbor(this.at, 1)));
    click('compare', () => this.toggleComparing());
    click('reset', () => this.view.go(this.at));
    click('theme', () => this.setTheme(root.dataset.theme === 'dark' ? 'light' : 'dark'));
    click('list', () => this.setList(page.dataset.list === 'closed'));
    click('full', () => this.toggleFull());
    click('keys', () => part('help').showModal());
    part('left').addEventListener('change', (event) => this.show(Number(event.target.value)));
    part('right').addEventListener('change', (event) => this.compare(Number(event.target.value)));
    part('full').hidden = !document.fullscreenEnabled;
    document.addEventListener('fullscreenchange', () => {
      part('full').ariaPressed = String(!!document.fullscreenElement);
    });
    addEventListener('hashchange', () => {
      this.readAddress();
      this.show(this.at);
      this.compare(this.other);
    });
    addEventListener('keydown', (event) => this.press(event));
    this.listenToWipe();
  }

  listenToWipe() {
    const wipe = part('wipe');
    const moveTo = (share) => {
      const boundary = Math.min(1, Math.max(0, share));
      wipe.style.left = boundary * 100 + '%';
      wipe.ariaValueNow = String(Math.round(boundary * 100));
      this.view?.setBoundary(boundary);
    };
    wipe.addEventListener('pointerdown', (event) => {
      wipe.setPointerCapture(event.pointerId);
      wipe.focus();
      event.preventDefault();
    });
    wipe.addEventListener('pointermove', (event) => {
      if (!wipe.hasPointerCapture(event.pointerId)) return;
      const box = part('stage').getBoundingClientRect();
      moveTo((event.clientX - box.left) / box.width);
    });
    const steps = {
      ArrowLeft: -0.02,
      ArrowDown: -0.02,
      ArrowRight: 0.02,
      ArrowUp: 0.02,
      PageDown: -0.1,
      PageUp: 0.1,
      Home: -1,
      End: 1,
    };
    wipe.addEventListener('keydown', (event) => {
      if (!(event.key in steps) || event.ctrlKey || event.metaKey || event.altKey) return;
      event.preventDefault();
      event.stopPropagation();
      moveTo(Number(wipe.ariaValueNow) / 100 + steps[event.key]);
    });
  }

  press(event) {
    const isTyping = event.target.closest?.('input, select, dialog[open]');
    if (isTyping || event.ctrlKey || event.metaKey || event.altKey) return;
    const work = event.shiftKey ? this.shiftedKey(event.key) : this.plainKey(event.key);
    const any = work ?? this.anyKey(event.key);
    if (!any) return;
    event.preventDefault();
    any();
  }

  plainKey(key) {
    if (/^[1-9]$/.test(key)) return this.states[key - 1] && (() => this.show(key - 1));
    const step = (way) => () => this.show(this.list.neighbor(this.at, way));
    return {
      ArrowLeft: step(-1),
      ArrowUp: step(-1),
      PageUp: step(-1),
      ArrowRight: step(1),
      ArrowDown: step(1),
      PageDown: step(1),
      Home: () => this.show(this.list.shown[0] ?? this.at),
      End: () => this.show(this.list.shown.at(-1) ?? this.at),
      Escape: this.other >= 0 && (() => this.compare(-1)),
    }[key];
  }

  shiftedKey(key) {
    const turn = (across, up) => this.scene && (() => this.view.orbit(across, up));
    return {
      ArrowLeft: turn(-0.02, 0),
      ArrowRight: turn(0.02, 0),
      ArrowUp: turn(0, 0.02),
      ArrowDown: turn(0, -0.02),
    }[key];
  }

  anyKey(key) {
    const click = (id) => () => part(id).click();
    return {
      '+': this.scene && (() => this.view.orbit(0, 0, 1.1)),
      '-': this.scene && (() => this.view.orbit(0, 0, 1 / 1.1)),
      '/': () => {
        this.setList(true);
        part('find').focus();
      },
      '?': click('keys'),
      c: click('compare'),
      r: click('reset'),
      t: click('theme'),
      l: click('list'),
      f: click('full'),
    }[key.toLowerCase()];
  }

  setTheme(theme) {
    root.dataset.theme = theme;
    this.view?.setTheme(theme);
  }

  setList(isOpen) {
    page.dataset.list = isOpen ? 'open' : 'closed';
    part('list').ariaPressed = String(isOpen);
  }

  toggleFull() {
    if (document.fullscreenElement) document.exitFullscreen();
    else page.requestFullscreen().catch(() => {});
  }
}

// For whoever embeds or checks the page: what it shows, as it is in the scene's file.
function describe(shown) {
  const camera = () => shown.view.camera;
  return Object.freeze({
    state: () => shown.states[shown.at].name,
    names: () => shown.states.map((state) => state.name),
    show: (name) => shown.show(shown.states.findIndex((state) => state.name === name)),
    settled: () => shown.view.settled(),
    visible: () => shown.scene.shownNames(),
    variant: () => shown.scene.states[shown.scene.current].variant ?? null,
    shownMaterials: () => shown.scene.shownMaterials(),
    camera: () => ({
      position: camera().position.toArray(),
      direction: camera().getWorldDirection(camera().position.clone()).toArray(),
      isParallel: camera().isOrthographicCamera === true,
    }),
    brightness: () => shown.scene.lights.map((light) => light.intensity / Math.PI),
  });
}

async function start() {
  try {
    const shown = new Page(readContents());
    window.stagemarks = describe(shown);
    await shown.open();
  } catch (error) {
    sayProblem('The scene cannot be shown', error.message);
  }
}

start();
