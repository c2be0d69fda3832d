'use strict';
// Every kind of report, light and dark, narrow and wide: nothing is said on the console, nothing is fetched, nothing is wider
// than the window, and axe finds nothing. The pictures are for people.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const { after, before, test } = require('node:test');
const { launch, open, shoot, violations } = require('./browser.js');
const { HOSTILE_NAMES, reports, season } = require('./report-cases.js');

let browser;
before(async () => (browser = await launch()));
after(() => browser.close());

const overflow = (page) => page.evaluate(() => document.documentElement.scrollWidth - innerWidth);

for (const [name, file] of Object.entries(reports)) {
  for (const [theme, width] of [
    ['light', 360],
    ['dark', 400],
    ['light', 1600],
    ['dark', 1280],
  ]) {
    test(`${name}, ${theme}, ${width} pixels`, async () => {
      const page = await open(browser, file, { width, theme });
      await shoot(page, `${name}-${theme}-${width}`);
      assert.deepEqual(page.problems, []);
      assert.ok((await overflow(page)) <= 0, 'the page is wider than its window');
      assert.deepEqual(await violations(page), []);
      await page.close();
    });
  }
}

test('a report is small: 120 KB for the page, 3 KB for each match', () => {
  const [one, many] = [reports.one, reports.many].map((file) => fs.readFileSync(file, 'utf8'));
  const data = /<script type="application\/json"[^]*?<\/script>/;
  assert.ok(one.replace(data, '').length < 120 * 1024, `${one.replace(data, '').length} bytes`);
  const perMatch = data.exec(many)[0].length / (season.length + 1);
  assert.ok(perMatch < 3 * 1024, `${perMatch} bytes a match`);
});

test('hostile names are text that can be seen, and nothing else', async () => {
  const page = await open(browser, reports.hostile);
  const body = await page.evaluate(() => document.body.innerText);
  for (const name of HOSTILE_NAMES) {
    // What cannot be seen is replaced; long names are cut.
    const plain = name.replace(/[\u202A-\u202E\u200B\x1b\u2028]/g, '\uFFFD');
    const shown = Array.from(plain).slice(0, 20).join('');
    assert.ok(body.includes(shown), `${JSON.stringify(name)} does not stand as ${shown}`);
  }
  assert.equal(await page.$$eval('main :is(script, img, iframe, object, b b)', (list) => list.length), 0);
  assert.equal(await page.title(), '</title><script>alert(7)</script>');
  assert.doesNotMatch(body, /[\u202A-\u202E\u2066-\u2069\x1b]/);
  await page.close();
});

test('the policy of the page stops a script that gets into it all the same', async () => {
  const page = await open(browser, reports.one);
  const ran = await page.evaluate(() => {
    document.body.insertAdjacentHTML('beforeend', '<img src="data:," onerror="document.title=\'ran\'">');
    const script = document.createElement('script');
    script.textContent = "document.title = 'ran'";
    document.body.append(script);
    return new Promise((resolve) => setTimeout(() => resolve(document.title === 'ran'), 200));
  });
  assert.equal(ran, false);
  await page.close();
});

test('on paper nothing is cut off, and what can only be pressed is left out', async () => {
  const page = await open(browser, reports.one, { theme: 'dark' });
  await page.emulateMediaType('print');
  const hidden = await page.$$eval(
    '.scroll',
    (boxes) => boxes.filter((box) => box.scrollHeight > box.clientHeight + 1).length,
  );
  assert.equal(hidden, 0);
  assert.equal(await page.$eval('.toolbar', (element) => getComputedStyle(element).display), 'none');
  assert.equal(await page.evaluate(() => getComputedStyle(document.documentElement).colorScheme), 'light');
  await page.close();
});
