// Pages as a browser shows them. Real scenes are made by the built program, and what a page shows
// is held against other ways of saying the same: the files that `publish` writes of each state, and
// the pictures that `render` makes.
//   node browser.mjs BUILD SOURCE   (status 77: no browser here)
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { after, before, describe, test } from 'node:test';
import { compare, similarity } from './pictures.mjs';
import { METALS, NAMES, SIZE, circles, makeSpheres } from './spheres.mjs';

const [build, source] = process.argv.slice(2);
const browserNames = ['chromium', 'chromium-browser', 'google-chrome'];
const program = browserNames
  .map((name) =>
    spawnSync('/bin/sh', ['-c', 'command -v ' + name], { encoding: 'utf8' }).stdout.trim(),
  )
  .find(Boolean);
if (!program) {
  console.log('No browser here: none of ' + browserNames.join(', ') + ' is installed.');
  process.exit(process.env.CI === 'true' ? 1 : 77);
}
// The packages are in the folder in which this runs.
const { chromium } = createRequire(join(process.cwd(), 'package.json'))('playwright-core');

const STATES = ['Overview', 'Emptier', 'Clay'];
const HOSTILE = [
  '</script><img src=x onerror="alert(1)">',
  '"double" \'single\' `back` & &lt; \\ ${1}',
  '\u202Eright to left',
  'a word of two hundred letters '.padEnd(200, 'x'),
  '100%',
];
const SOFTWARE = ['--no-sandbox', '--use-angle=swiftshader', '--enable-unsafe-swiftshader'];
const SIZES = { Overview: [640, 360], Emptier: [640, 360], Clay: [480, 480] };
// A page and a ray-traced picture of the same state differ in soft shadows, reflections and the
// smoothing of edges: 0.95 to 0.97 was seen. Another state in its place, with much of the same
// background, comes to 0.60 to 0.86.
const ALIKE = 0.89;
// Least likeness of one surface, and by how many of 255 shades its mean color may differ. A surface
// that is no metal comes to 0.93 and more, and no other one does in its place: the nearest, with
// another roughness, comes to 0.91. Metals mirror their neighbors in the ray-traced picture and not
// in a page; others of their color come to 0.56.
const SURFACE_ALIKE = 0.92;
const METAL_ALIKE = 0.7;
const SURFACE_COLOR = 10;

let folder;
let browser;

function stagemarks(...call) {
  const environment = {
    ...process.env,
    XDG_CONFIG_HOME: join(folder, 'config'),
    XDG_STATE_HOME: join(folder, 'state'),
  };
  const done = spawnSync(join(build, 'bin/stagemarks'), call, {
    cwd: folder,
    env: environment,
    encoding: 'utf8',
  });
  assert.equal(done.status, 0, call.join(' ') + '\n' + done.stdout + done.stderr);
  return done.stdout;
}

// A page in a tab of its own; `seen` gathers what must not happen.
async function open(path, { hash = '', ...how } = {}) {
  const context = await browser.newContext({
    viewport: { width: 1100, height: 700 },
    reducedMotion: 'reduce',
    colorScheme: 'dark',
    ...how,
  });
  const page = await context.newPage();
  const address = pathToFileURL(path).href;
  const seen = [];
  page.on('console', (message) => message.type() === 'error' && seen.push(message.text()));
  page.on('pageerror', (error) => seen.push(error.message));
  page.on('dialog', (dialog) => {
    seen.push('a box: ' + dialog.message());
    dialog.dismiss();
  });
  page.on('request', (request) => {
    const isOwn = request.url().split('#')[0] === address || /^(data|blob):/.test(request.url());
    if (!isOwn) seen.push('a request: ' + request.url());
  });
  await page.goto(address + hash);
  await page.waitForSelector('html:not([data-page=loading])', { timeout: 120000 });
  return { page, seen, close: () => context.close() };
}

const ask = (page, question) => page.evaluate(question);
const settled = (page) => page.evaluate(() => stagemarks.settled());
const isReady = (page) => page.evaluate(() => document.documentElement.dataset.page === 'ready');

function readGlb(path) {
  const bytes = readFileSync(path);
  return JSON.parse(bytes.subarray(20, 20 + bytes.readUInt32LE(12)).toString('utf8'));
}

// Facts of a file with one state: names of nodes with a mesh, their materials, and the position of
// the first camera, which stands at the root.
function factsOf(file) {
  const nodes = file.nodes ?? [];
  const shown = nodes.filter((node) => node.mesh !== undefined);
  const materialOf = (node) => file.materials[file.meshes[node.mesh].primitives[0].material].name;
  return {
    visible: [...new Set(shown.map((node) => node.name))].sort(),
    materials: [...new Set(shown.map(materialOf))].sort(),
    camera: nodes.find((node) => node.camera === 0).matrix.slice(12, 15),
  };
}

async function checkState(page, name) {
  await settled(page);
  const facts = factsOf(readGlb(join(folder, 'published', 'dungeon ' + name + '.glb')));
  assert.equal(await ask(page, () => stagemarks.state()), name);
  assert.deepEqual(await ask(page, () => stagemarks.visible()), facts.visible, name);
  assert.deepEqual(await ask(page, () => stagemarks.shownMaterials()), facts.materials, name);
  const { position } = await ask(page, () => stagemarks.camera());
  for (const axis of [0, 1, 2])
    assert.ok(Math.abs(position[axis] - facts.camera[axis]) < 1e-3, name);
  assert.equal(await page.locator('.state[aria-current=true] .name').textContent(), name);
  assert.match(await page.locator('#status').textContent(), new RegExp(name));
}

// Only the picture, of that size: without the list and what stands over it.
async function screenshot(page, state, [width, height]) {
  await page.setViewportSize({ width, height });
  await ask(page, () => {
    document.getElementById('page').dataset.list = 'closed';
    for (const id of ['tools', 'caption']) document.getElementById(id).hidden = true;
  });
  await page.evaluate((name) => stagemarks.show(name), state);
  await settled(page);
  return page.locator('#view').screenshot();
}

function makeDungeon() {
  stagemarks('demo', '--to', join(folder, 'demo'));
  const scene = join(folder, 'demo/dungeon.c4d');
  stagemarks('publish', scene, '--to', join(folder, 'published'));
  stagemarks('page', scene, '--to', join(folder, 'dungeon'));
  for (const [name, [width, height]] of Object.entries(SIZES)) {
    stagemarks(
      'render',
      scene,
      '--only',
      name,
      '--size',
      width + 'x' + height,
      '-o',
      join(folder, name + '.png'),
    );
  }
}

function makeHostile() {
  const scene = join(folder, 'hostile.c4d');
  stagemarks('import', join(source, 'scenes/spider/spider.fbx'), scene);
  for (const name of HOSTILE) stagemarks('record', scene, name, '--write');
  stagemarks('page', scene, '--to', join(folder, 'hostile'), '--title', HOSTILE[0]);
}

before(async () => {
  folder = mkdtempSync(join(tmpdir(), 'stagemarks-page-'));
  makeDungeon();
  makeHostile();
  browser = await chromium.launch({ executablePath: program, args: SOFTWARE });
});

after(async () => {
  await browser?.close();
  rmSync(folder, { recursive: true, force: true });
});

describe('The dungeon', () => {
  const file = () => join(folder, 'dungeon/index.html');

  test('shows each state by a click and by a key', async () => {
    const { page, seen, close } = await open(file());
    assert.ok(await isReady(page));
    const lights = await ask(page, () => stagemarks.brightness());
    assert.deepEqual(lights.map((light) => light.toFixed(2)).sort(), [
      '0.80',
      '0.80',
      '1.00',
      '1.00',
    ]);
    const names = await ask(page, () => stagemarks.names());
    assert.deepEqual([...names].sort(), [...STATES].sort());
    for (const name of names) {
      await page.locator('.state', { hasText: name }).click();
      await checkState(page, name);
    }
    for (const [index, name] of names.entries()) {
      await page.keyboard.press(String(index + 1));
      await checkState(page, name);
    }
    const keys = [
      ['ArrowRight', 0],
      ['ArrowRight', 1],
      ['PageDown', 2],
      ['ArrowLeft', 1],
      ['PageUp', 0],
      ['End', 2],
      ['Home', 0],
    ];
    for (const [key, index] of keys) {
      await page.keyboard.press(key);
      assert.equal(await ask(page, () => stagemarks.state()), names[index], key);
    }
    await checkState(page, names[0]);
    assert.deepEqual(seen, []);
    await close();
  });

  test('looks like the pictures of its states, and not like those of others', async () => {
    const { page, close } = await open(file());
    for (const wanted of STATES) {
      const picture = readFileSync(join(folder, wanted + '.png'));
      for (const shown of STATES) {
        const shot = await screenshot(page, shown, SIZES[wanted]);
        const value = await similarity(page, shot, picture);
        console.log(`# ${shown} beside the picture of ${wanted}: ${value.toFixed(3)}`);
        if (shown === wanted) assert.ok(value > ALIKE, shown + ' ' + value);
        else assert.ok(value < ALIKE, shown + ' for ' + wanted + ' ' + value);
      }
    }
    await close();
  });

  test('flies to the camera of a state and comes to rest there', async () => {
    const { page, seen, close } = await open(file(), {
      hash: '#state=Overview',
      reducedMotion: 'no-preference',
    });
    await checkState(page, 'Overview');
    for (const key of ['2', '3', '1']) await page.keyboard.press(key);
    await checkState(page, (await ask(page, () => stagemarks.names()))[0]);
    assert.deepEqual(seen, []);
    await close();
  });

  test('is looked around in, and goes back to the camera of the state', async () => {
    const { page, close } = await open(file());
    const place = async () => {
      await settled(page);
      const { position } = await ask(page, () => stagemarks.camera());
      return position.map((number) => number.toFixed(6)).join(' ');
    };
    const ways = {
      'the mouse': async () => {
        const { x, y } = await page.locator('#view').boundingBox();
        await page.mouse.move(x + 300, y + 300);
        await page.mouse.down();
        await page.mouse.move(x + 420, y + 320);
        await page.mouse.up();
      },
      'the wheel': async () => {
        await page.locator('#view').hover();
        await page.mouse.wheel(0, -300);
      },
      keys: () => page.keyboard.press('Shift+ArrowLeft'),
    };
    const home = await place();
    for (const [name, look] of Object.entries(ways)) {
      await look();
      assert.notEqual(await place(), home, name);
      await page.locator('#reset').click();
      assert.equal(await place(), home, name);
    }
    await close();
  });

  test('compares two states with a boundary', async () => {
    const { page, seen, close } = await open(file(), { hash: '#state=Overview&compare=Clay' });
    const left = async () => Number(await page.locator('#wipe').getAttribute('aria-valuenow'));
    assert.equal(await page.locator('#left option:checked').textContent(), 'Overview');
    assert.equal(await page.locator('#right option:checked').textContent(), 'Clay');
    assert.equal(await left(), 50);
    await page.locator('#wipe').focus();
    await page.keyboard.press('ArrowRight');
    assert.equal(await left(), 52);
    const shots = [];
    for (const key of ['Home', 'End']) {
      await page.keyboard.press(key);
      await settled(page);
      shots.push(await page.locator('#view').screenshot());
    }
    assert.deepEqual(await left(), 100);
    assert.ok((await similarity(page, shots[0], shots[1])) < 0.9, 'another state on each side');
    await page.locator('#right').selectOption('Emptier');
    assert.match(page.url(), /#state=Overview&compare=Emptier$/);
    await page.locator('#view').focus();
    await page.keyboard.press('Escape');
    assert.ok(await page.locator('#wipe').isHidden());
    await checkState(page, 'Overview');
    assert.deepEqual(seen, []);
    await close();
  });

  test('finds states by their names', async () => {
    const { page, close } = await open(file());
    const rows = () => page.locator('.state:visible .name').allTextContents();
    await page.keyboard.press('/');
    await page.keyboard.type('EMP');
    assert.deepEqual(await rows(), ['Emptier']);
    assert.equal(await page.locator('#count').textContent(), '1 of 3 states');
    await page.keyboard.press('Enter');
    await checkState(page, 'Emptier');
    await page.keyboard.type('xyz');
    assert.ok(await page.locator('#none').isVisible());
    await page.keyboard.press('Escape');
    assert.equal((await rows()).length, 3);
    await close();
  });

  test('fits a phone, and every state is a touch away', async () => {
    const { page, seen, close } = await open(file(), {
      viewport: { width: 390, height: 844 },
      hasTouch: true,
      isMobile: true,
    });
    const wide = await ask(page, () => document.documentElement.scrollWidth);
    assert.ok(wide <= 390, 'nothing stands out: ' + wide);
    const view = await page.locator('#view').boundingBox();
    assert.ok(view.width === 390 && view.height > 400, JSON.stringify(view));
    for (const button of await page.locator('button:visible').all()) {
      const box = await button.boundingBox();
      assert.ok(box.width >= 40 && box.height >= 40, await button.getAttribute('aria-label'));
    }
    for (const name of STATES) {
      await page.locator('.state', { hasText: name }).tap();
      await checkState(page, name);
    }
    assert.deepEqual(seen, []);
    await close();
  });

  test('tells what everything is', async () => {
    const { page, close } = await open(file());
    for (const part of await page
      .locator('button:visible, input:visible, canvas, [role=slider]')
      .all()) {
      const name = await part.evaluate(
        (e) => (e.ariaLabel ?? '') + (e.labels?.[0]?.textContent ?? '') + e.textContent,
      );
      assert.notEqual(name.trim(), '', await part.evaluate((e) => e.outerHTML.slice(0, 80)));
    }
    await page.keyboard.press('?');
    await page.waitForSelector('dialog[open]');
    assert.match(await page.locator('dialog').textContent(), /MIT license/);
    await page.keyboard.press('Escape');
    await page.waitForSelector('dialog:not([open])', { state: 'attached' });
    await page.keyboard.press('t');
    assert.equal(await ask(page, () => document.documentElement.dataset.theme), 'light');
    await close();
  });

  // A byte of the scene changed, a part of it gone, another list of states.
  test('says in words what is wrong with its data', async () => {
    const whole = readFileSync(file(), 'utf8');
    const scene = /(class="scene">)([^<]*)/;
    const damages = {
      'no base64': (text) => text.replace(scene, '$1#$2'),
      'cut off': (text) => text.replace(scene, (_, begin, data) => begin + data.slice(0, 40000)),
      'no glTF': (text) => text.replace(scene, (_, begin, data) => begin + 'AAAA' + data.slice(4)),
      'a state too few': (text) => text.replace('"states":[{', '"states":[{"name":"More"},{'),
    };
    for (const [name, damage] of Object.entries(damages)) {
      const damaged = damage(whole);
      assert.notEqual(damaged, whole, name);
      writeFileSync(join(folder, 'damaged.html'), damaged);
      const { page, close } = await open(join(folder, 'damaged.html'));
      assert.equal(await isReady(page), false, name);
      assert.match(await page.locator('#message').textContent(), /scene.*(damaged|belongs)/s, name);
      assert.ok(await page.locator('.state').first().isVisible(), 'the list remains');
      await close();
    }
  });
});

test('Surfaces look as in the program\'s own pictures, and not like each other', async () => {
  const [file, scene] = [join(folder, 'spheres.gltf'), join(folder, 'spheres.c4d')];
  const own = join(folder, 'spheres.png');
  writeFileSync(file, makeSpheres());
  stagemarks('import', file, scene);
  stagemarks('record', scene, 'Surfaces', '--write');
  stagemarks('page', scene, '--to', join(folder, 'spheres'));
  // Twice as large: rough metals are grainy in pictures.
  stagemarks('render', scene, '--size', SIZE.map((side) => 2 * side).join('x'), '-o', own);
  const { page, seen, close } = await open(join(folder, 'spheres/index.html'));
  const shot = await screenshot(page, 'Surfaces', SIZE);
  const boxes = circles().map(({ x, y, radius }) => ({
    left: Math.ceil(x - radius),
    top: Math.ceil(y - radius),
    width: Math.floor(2 * radius),
    height: Math.floor(2 * radius),
  }));
  const pairs = boxes.flatMap((a) => boxes.map((b) => [a, b]));
  const results = await compare(page, shot, readFileSync(own), pairs);
  for (const [i, name] of NAMES.entries()) {
    for (const [j, other] of NAMES.entries()) {
      const { structure, color } = results[i * NAMES.length + j];
      const figures = `${name} beside ${other}: ${structure.toFixed(3)}, ${color.toFixed(1)}`;
      const least = METALS.includes(name) ? METAL_ALIKE : SURFACE_ALIKE;
      const isAlike = structure > least && color < SURFACE_COLOR;
      if (i === j) console.log('# ' + figures);
      assert.equal(isAlike, i === j, figures);
    }
  }
  assert.deepEqual(seen, []);
  await close();
});

test('Names cannot break out of the page', async () => {
  const file = join(folder, 'hostile/index.html');
  const { page, seen, close } = await open(file);
  assert.ok(await isReady(page));
  assert.deepEqual(
    (await page.locator('.state .name').allTextContents()).sort(),
    [...HOSTILE].sort(),
  );
  assert.equal(await page.locator('#title').textContent(), HOSTILE[0]);
  assert.equal(await page.locator('img[src=x]').count(), 0);
  const wide = await ask(page, () => document.getElementById('panel').scrollWidth);
  assert.ok(wide <= 316, 'a long name stays in the list: ' + wide);
  for (const name of HOSTILE) {
    await page.evaluate((state) => stagemarks.show(state), name);
    assert.equal(await page.locator('#name').textContent(), name);
    assert.equal(page.url(), pathToFileURL(file).href + '#state=' + encodeURIComponent(name));
  }
  // Even if a name broke out, its handler, script and picture would be refused.
  assert.deepEqual(seen, []);
  await ask(page, () => {
    document.body.insertAdjacentHTML(
      'beforeend',
      '<img src="https://example.invalid/x" onerror="window.broken = 1">',
    );
    document.body.append(
      Object.assign(document.createElement('script'), { textContent: 'window.broken = 1' }),
    );
  });
  await settled(page);
  assert.equal(await ask(page, () => window.broken), undefined);
  const refused = seen.filter((text) => /violates.*Content Security Policy/.test(text));
  assert.equal(refused.length, 3, 'handler, script and picture: ' + seen.join('\n'));
  await close();
  const named = await open(file, { hash: '#state=' + encodeURIComponent(HOSTILE[4]) });
  assert.equal(await ask(named.page, () => stagemarks.state()), HOSTILE[4]);
  await named.close();
});

test('Without 3D the page says so and shows the pictures', async () => {
  const plain = await chromium.launch({
    executablePath: program,
    args: ['--no-sandbox', '--disable-gpu', '--disable-3d-apis'],
  });
  const page = await plain.newPage();
  await page.goto(pathToFileURL(join(folder, 'dungeon/index.html')).href);
  await page.waitForSelector('html[data-page=error]');
  assert.match(await page.locator('#message').textContent(), /WebGL/);
  await page.keyboard.press('2');
  assert.ok(await page.locator('#picture').isVisible());
  assert.equal(
    await page.locator('#picture').getAttribute('src'),
    await page.locator('.state[aria-current=true] img').getAttribute('src'),
  );
  await plain.close();
});

test('The folder of a page holds the page and a license', () => {
  assert.deepEqual(readdirSync(join(folder, 'dungeon')).sort(), [
    'LICENSE-three.txt',
    'index.html',
  ]);
});
