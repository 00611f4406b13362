// Serves the repository on a loopback port, opens the page in headless Chromium and saves a PNG.
// usage: node scripts/render/render.mjs IN.glb OUT.png [SECONDS]
import http from 'node:http';
import fs from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import puppeteer from 'puppeteer-core';

const [input, output, seconds = '0.5'] = process.argv.slice(2);
if (!input || !output) {
  console.error('usage: render.mjs IN.glb OUT.png [SECONDS]');
  process.exit(2);
}
const root = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '../..');
const types = { '.html': 'text/html', '.js': 'text/javascript', '.mjs': 'text/javascript',
                '.glb': 'model/gltf-binary', '.gltf': 'model/gltf+json', '.png': 'image/png' };
const server = http.createServer((req, res) => {
  const url = decodeURIComponent(new URL(req.url, 'http://localhost').pathname);
  const file = url === '/model' + path.extname(input) ? path.resolve(input)
             : url.startsWith('/model/') ? path.join(path.dirname(path.resolve(input)), url.slice(7))
             : path.join(root, url);
  fs.readFile(file, (err, data) => {
    if (err) { res.writeHead(404); res.end(); return; }
    res.writeHead(200, { 'Content-Type': types[path.extname(file)] || 'application/octet-stream' });
    res.end(data);
  });
});
await new Promise((r) => server.listen(0, '127.0.0.1', r));
const port = server.address().port;
const browser = await puppeteer.launch({
  executablePath: process.env.CHROMIUM || '/usr/bin/chromium',
  headless: true,
  args: ['--no-sandbox', '--use-angle=swiftshader', '--enable-unsafe-swiftshader', '--ignore-gpu-blocklist'],
});
try {
  const page = await browser.newPage();
  await page.setViewport({ width: 1200, height: 700 });
  page.on('pageerror', (e) => console.error('page: ' + e.message));
  await page.goto(`http://127.0.0.1:${port}/scripts/render/index.html?file=/model${path.extname(input)}&seconds=${seconds}`);
  await page.waitForFunction('window.renderDone || window.renderError', { timeout: 60000 });
  const error = await page.evaluate('window.renderError');
  if (error) throw new Error(error);
  await (await page.$('canvas')).screenshot({ path: output });
  console.log(`render: wrote ${output}`);
} finally {
  await browser.close();
  server.close();
}
