// Reads the named glTF files with the format's own validator, whose package lies in the folder named
// first, and prints what it finds: a line for each error and warning, and one with the sum. Ends with
// status 1 where there is any.
'use strict';

const fs = require('fs');
const path = require('path');

const [modules, ...files] = process.argv.slice(2);
const validator = require(path.join(modules, 'gltf-validator'));

// Errors in the visibility of nodes, for which the validator has no rules.
function checkVisibility(file, bytes) {
  const text = bytes.subarray(0, 4).toString() === 'glTF'
    ? bytes.subarray(20, 20 + bytes.readUInt32LE(12)) : bytes;
  const json = JSON.parse(text);
  const found = [];
  const used = (json.extensionsUsed || []).includes('KHR_node_visibility');
  const marked = (json.nodes || []).filter((node) => node.extensions?.KHR_node_visibility);
  if (used !== marked.length > 0) found.push('KHR_node_visibility is used and not named, or named and not used');
  for (const node of marked) {
    const keys = Object.keys(node.extensions.KHR_node_visibility);
    if (keys.join() !== 'visible' || typeof node.extensions.KHR_node_visibility.visible !== 'boolean')
      found.push('KHR_node_visibility has other members than "visible"');
  }
  return found.map((message) => `${file}: ${message}`);
}

async function check(file) {
  const bytes = fs.readFileSync(file);
  const report = await validator.validateBytes(new Uint8Array(bytes), {
    uri: path.basename(file),
    maxIssues: 0,
    externalResourceFunction: async (uri) =>
      new Uint8Array(fs.readFileSync(path.join(path.dirname(file), decodeURIComponent(uri)))),
  });
  const severe = report.issues.messages.filter((issue) => issue.severity < 2);
  return severe.map((issue) => `${file}: ${issue.code} ${issue.pointer}: ${issue.message}`)
    .concat(checkVisibility(file, bytes));
}

async function run() {
  let found = [];
  for (const file of files) found = found.concat(await check(file).catch((why) => [`${file}: ${why}`]));
  for (const line of found) console.log(line);
  console.log(`${files.length} files, ${found.length} errors and warnings`);
  process.exitCode = found.length === 0 ? 0 : 1;
}

run();
