#!/usr/bin/env node
// Runs the Khronos glTF validator on each file given and prints one line per file (with every
// message that is not an info); exits 1 when any file has an error or a warning, 2 when the
// validator itself is missing. Files a .gltf references are read from beside it.
'use strict';
const fs = require('fs');
const path = require('path');

let validator;
try {
  validator = require('gltf-validator');
} catch (e) {
  console.error('validate-gltf: the glTF validator is not installed (run scripts/setup-web.sh): ' + e.message);
  process.exit(2);
}

async function check(file) {
  const data = new Uint8Array(fs.readFileSync(file));
  const dir = path.dirname(file);
  const report = await validator.validateBytes(data, {
    uri: path.basename(file),
    maxIssues: 0,
    externalResourceFunction: (uri) =>
      new Promise((resolve, reject) => {
        fs.readFile(path.join(dir, decodeURIComponent(uri)), (err, bytes) =>
          err ? reject(err.toString()) : resolve(new Uint8Array(bytes)));
      }),
  });
  const issues = report.issues;
  console.log(`${file}: ${issues.numErrors} errors, ${issues.numWarnings} warnings, ${issues.numInfos} infos, ` +
              `${issues.numHints} hints`);
  for (const m of issues.messages)
    if (m.severity < 2) console.log(`  ${m.severity === 0 ? 'error' : 'warning'} ${m.code} ${m.pointer || ''}: ${m.message}`);
  return issues.numErrors === 0 && issues.numWarnings === 0;
}

(async () => {
  const files = process.argv.slice(2);
  if (files.length === 0) {
    console.error('usage: validate-gltf.js FILE.glb|FILE.gltf...');
    process.exit(2);
  }
  let ok = true;
  for (const f of files) ok = (await check(f)) && ok;
  process.exit(ok ? 0 : 1);
})().catch((e) => {
  console.error('validate-gltf: ' + e);
  process.exit(2);
});
