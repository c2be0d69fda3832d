'use strict';
// Reports made by the command line from written replays, and a browser to look at them.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { pathToFileURL } = require('node:url');
const puppeteer = require('puppeteer-core');
const { addonPath } = require('../support/reads.js');
const { run, temporaryFolder } = require('../support/run.js');

const root = path.join(__dirname, '..', '..');
const shots = path.join(root, 'build', 'report-shots');
const axe = fs.readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');
const folder = temporaryFolder();

const FLAGS = ['--no-sandbox', '--disable-dev-shm-usage', '--disable-gpu', '--hide-scrollbars'];
const SAME_PICTURES = ['--force-color-profile=srgb', '--font-render-hinting=none'];

// The tests themselves read replays too.
process.env.CORVANE_ADDON ??= addonPath;

const inFolder = (...names) => path.join(folder, ...names);

// The file of a report that the command line writes; status: the exit status that it should have.
function report(name, args, status = 0) {
  const out = inFolder(`${name}.html`);
  const program = path.join(root, 'bin', 'corvane-replay.js');
  const env = { ...process.env, CORVANE_ADDON: addonPath };
  const ran = run(process.execPath, [program, 'report', ...args, '--out', out], { cwd: folder, env });
  assert.equal(ran.status, status, ran.stderr);
  return out;
}

const launch = () =>
  puppeteer.launch({
    executablePath: process.env.CORVANE_BROWSER ?? '/usr/bin/chromium',
    args: [...FLAGS, ...SAME_PICTURES],
  });

// Opens the file. problems: what the console, the page or the network had to say; it should stay empty.
async function open(browser, file, { width = 1280, theme = 'light', motion = 'reduce' } = {}) {
  const page = await browser.newPage();
  page.problems = [];
  page.on('console', (message) => page.problems.push(message.text()));
  page.on('pageerror', (error) => page.problems.push(String(error)));
  page.on('request', (request) => {
    if (request.url() !== pathToFileURL(file).href)
      page.problems.push(`request ${request.url().slice(0, 200)}`);
  });
  await page.setViewport({ width, height: 900 });
  await page.emulateMediaFeatures([
    { name: 'prefers-color-scheme', value: theme },
    { name: 'prefers-reduced-motion', value: motion },
  ]);
  await page.bringToFront(); // what is behind another page is not drawn
  await page.goto(pathToFileURL(file).href);
  await page.waitForSelector('main footer');
  return page;
}

// What axe finds, one line each.
async function violations(page) {
  await page.evaluate(axe);
  return page.evaluate(async () => {
    const { violations: found } = await globalThis.axe.run(document, { resultTypes: ['violations'] });
    return found.map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html.slice(0, 120)).join(' | ')}`);
  });
}

async function shoot(page, name) {
  fs.mkdirSync(shots, { recursive: true });
  await page.screenshot({ path: path.join(shots, `${name}.png`), fullPage: true });
}

const texts = (page, selector) =>
  page.$$eval(selector, (elements) => elements.map((element) => element.textContent.trim()));

module.exports = { inFolder, launch, open, report, shoot, texts, violations };
