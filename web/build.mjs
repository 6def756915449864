// Makes the page without its data: one HTML file with style and script in it, and the viewer
// library's license beside it. What may run on the page is told by the hashes of both; nothing else
// can, whatever a scene is called.
//   node build.mjs FOLDER   (writes FOLDER/page.html, FOLDER/LICENSE-three.txt)
import { createHash } from 'node:crypto';
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';

const here = dirname(fileURLToPath(import.meta.url));
const target = process.argv[2] ?? join(here, 'out');
// The libraries are in the folder in which this runs, which need not be that of the source.
const require = createRequire(join(process.cwd(), 'package.json'));
const { build } = require('esbuild');

const hashOf = (text) => 'sha256-' + createHash('sha256').update(text, 'utf8').digest('base64');

async function bundle() {
  const made = await build({
    entryPoints: [join(here, 'source/main.js')],
    bundle: true,
    minify: true,
    format: 'iife',
    target: 'es2021',
    charset: 'ascii',
    legalComments: 'none',
    nodePaths: [join(process.cwd(), 'node_modules')],
    write: false,
  });
  // Whatever ends a script element ends it in the middle of a text, too.
  return made.outputFiles[0].text
    .trim()
    .replaceAll('</script', '<\\/script')
    .replaceAll('<!--', '<\\!--');
}

async function style() {
  const made = await build({ entryPoints: [join(here, 'page.css')], minify: true, write: false });
  return made.outputFiles[0].text.trim();
}

const parts = { SCRIPT: await bundle(), STYLE: await style() };
parts.SCRIPT_HASH = hashOf(parts.SCRIPT);
parts.STYLE_HASH = hashOf(parts.STYLE);
const page = readFileSync(join(here, 'page.html'), 'utf8').replace(
  /@([A-Z_]+)@/g,
  (_, part) => parts[part],
);
mkdirSync(target, { recursive: true });
writeFileSync(join(target, 'page.html'), page);
const library = join(dirname(require.resolve('three')), '..');
writeFileSync(join(target, 'LICENSE-three.txt'), readFileSync(join(library, 'LICENSE')));
