'use strict';
// Reports in use: what the page says and draws is compared with the match model, which is read here once more.

const assert = require('node:assert/strict');
const { after, before, test } = require('node:test');
const { readMatch, readMatches } = require('../../client');
const { OWN } = require('../../samples/make-season.js');
const { launch, open, shoot, texts } = require('./browser.js');
const { middle, reports, season } = require('./report-cases.js');

let browser, match, matches;
before(async () => {
  browser = await launch();
  match = await readMatch(middle);
  matches = [];
  for await (const result of readMatches(season.map(({ file }) => file))) matches.push(result.match);
});
after(() => browser.close());

// pageTest(name, report, use(page))
function pageTest(name, report, use, options) {
  test(name, async () => {
    const page = await open(browser, reports[report], options);
    try {
      await use(page);
      assert.deepEqual(page.problems, []);
    } finally {
      await page.close();
    }
  });
}

const clock = (ms) => {
  const seconds = Math.floor(Math.round(ms / 100) / 10);
  return `${Math.floor(seconds / 60)}:${String(seconds % 60).padStart(2, '0')}`;
};
const ends = ({ eliminations }) => eliminations.filter(({ kind }) => kind === 'elimination');
const shortId = ({ id }) => id.slice(0, 8);
const noteNumber = async (page, card) =>
  parseInt(await page.$eval(`.${card} .note`, (note) => note.textContent.replace(/,/g, '')));
const chosenRow = (page) =>
  page.$$eval('.events tbody tr', (rows) => rows.findIndex((row) => row.ariaCurrent === 'true'));

async function selectByText(select, beginning) {
  const find = (options, words) => options.find(({ text }) => text.startsWith(words)).value;
  await select.select(await select.$$eval('option', find, beginning));
}

// From pixels to metres on both axes, from the grid lines and their numbers.
function mapScale(page) {
  return page.$eval('.map-picture', (svg) => {
    const axis = (name, pixel) => {
      const [a, b] = [...svg.querySelectorAll(`[data-${name}]`)].slice(0, 2).map((group) => ({
        metres: Number(group.dataset[name]),
        pixel: Number(group.querySelector('line').getAttribute(pixel)),
      }));
      const scale = (b.metres - a.metres) / (b.pixel - a.pixel);
      return { scale, zero: a.metres - a.pixel * scale };
    };
    return { x: axis('x', 'x1'), y: axis('y', 'y1') };
  });
}

const atMetres = ({ x, y }, [px, py]) => ({ x: x.zero + px * x.scale, y: y.zero + py * y.scale });
const isNear = (a, b, metres) => Math.hypot(a.x - b.x, a.y - b.y) <= metres;

pageTest(
  'a victim’s dot stands where its metres say, and its line begins at the attacker',
  'one',
  async (page) => {
    const scale = await mapScale(page);
    assert.ok(Math.abs(scale.x.scale - scale.y.scale) < 1e-6, 'the axes have different scales');
    const pairs = async (selector) =>
      [
        ...(await page.$eval(selector, (path) => path.getAttribute('d'))).matchAll(/(-?[\d.]+),(-?[\d.]+)/g),
      ].map(([, x, y]) => [Number(x), Number(y)]);
    const dots = await pairs('.elimination.dot');
    const expected = ends(match);
    assert.equal(dots.length, expected.length);
    const tolerance = 0.1 + 0.02 * scale.x.scale;
    expected.forEach(({ victimAt }, i) =>
      assert.ok(isNear(atMetres(scale, dots[i]), victimAt, tolerance), `dot ${i}`),
    );
    const lines = await pairs('.elimination.line');
    expected.forEach(({ attackerAt }, i) =>
      assert.ok(isNear(atMetres(scale, lines[2 * i]), attackerAt, tolerance), `line ${i}`),
    );
  },
);

pageTest('the figures and the sentences answer what people ask first', 'one', async (page) => {
  const [brief] = await texts(page, '.brief');
  const { own, team } = match;
  const longest = ends(match).reduce((a, b) => (b.distanceM > a.distanceM ? b : a));
  assert.match(
    brief,
    team.place === 1 ? /team won/ : new RegExp(`came ${team.place}[a-z]+ of ${team.of} players`),
  );
  assert.ok(brief.includes(`at ${clock(longest.timeMs)}`), brief);
  assert.match(brief, new RegExp(`Longest elimination: ${Math.round(longest.distanceM)} m`));
  const record = match.players.find(({ player }) => player.id === OWN);
  const out = record.endedBy === null ? 'is not seen to go out' : `at ${clock(record.endedAtMs)}`;
  assert.match(brief, new RegExp(`${OWN.slice(0, 8)}.*${out}`));
  const exits = [...match.players.map(({ endedAtMs }) => endedAtMs)]
    .filter((ms) => ms !== null)
    .sort((a, b) => a - b);
  const half = exits[Math.ceil(team.of / 2) - 1];
  assert.ok(brief.includes(`were out by ${clock(half)}`), `${brief} ${clock(half)}`);
  const figures = await texts(page, '.figures dd');
  assert.equal(figures[0], `${team.place} of ${team.of}`);
  assert.equal(figures[1], String(own.eliminations));
  assert.equal(figures[4], `${Math.round(own.accuracy * 100)} %`);
});

pageTest(
  'choosing: list and map choose each other, the map comes close, Escape forgets',
  'one',
  async (page) => {
    const wide = await mapScale(page);
    const buttons = await page.$$('.events tbody button');
    await buttons[10].click();
    const event = match.eliminations[10];
    assert.equal(await chosenRow(page), 10);
    const close = await mapScale(page);
    assert.ok(close.x.scale < wide.x.scale / 4, 'the map shows it from no closer');
    const circle = await page.$eval('.chosen-event .victim', (dot) =>
      [dot.getAttribute('cx'), dot.getAttribute('cy')].map(Number),
    );
    assert.ok(isNear(atMetres(close, circle), event.victimAt, 0.2));
    const [about] = await texts(page, '.map .about');
    assert.ok(about.startsWith(clock(event.timeMs)), about);
    await shoot(page, 'one-chosen');
    await page.keyboard.press('ArrowDown');
    assert.equal(await chosenRow(page), 11, 'an arrow key chooses the next');
    // On the map: a click on the dot of the event that is chosen chooses it, after Escape has forgotten it.
    const dot = await (await page.$('.chosen-event .victim')).boundingBox();
    await page.keyboard.press('Escape');
    assert.equal(await chosenRow(page), -1);
    await page.mouse.click(dot.x + dot.width / 2, dot.y + dot.height / 2);
    const again = match.eliminations[await chosenRow(page)];
    assert.ok(isNear(again.victimAt, match.eliminations[11].victimAt, 1), 'the click chose another event');
  },
);

pageTest('filtering: the handles of the timeline decide what the whole page shows', 'one', async (page) => {
  const all = match.eliminations.length;
  assert.equal(await noteNumber(page, 'events'), all);
  const [from, to] = await page.$$('.handle');
  await from.evaluate((handle) => handle.focus());
  for (let i = 0; i < 5; i += 1) await page.keyboard.press('PageUp');
  const later = match.eliminations.filter(({ timeMs }) => timeMs >= 300_000).length;
  assert.equal(await noteNumber(page, 'events'), later);
  assert.equal(await noteNumber(page, 'map'), later);
  const box = await to.boundingBox();
  await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
  await page.mouse.down();
  await page.mouse.move(box.x - 300, box.y + 4, { steps: 4 });
  await page.mouse.up();
  const end = await to.evaluate((handle) => handle.ariaValueText);
  assert.ok((await noteNumber(page, 'events')) < later, `up to ${end}`);
  const times = await texts(page, '.events tbody button');
  assert.equal(times.length, await noteNumber(page, 'events'));
  await page.click('.timeline .part button');
  assert.equal(await noteNumber(page, 'events'), all);
});

pageTest('following a player leaves the events by or of that player', 'one', async (page) => {
  await selectByText(await page.$('.map select'), OWN.slice(0, 8));
  const own = match.eliminations.filter(({ attacker, victim }) => attacker.id === OWN || victim.id === OWN);
  assert.equal(await noteNumber(page, 'events'), own.length);
  assert.equal(
    (await texts(page, '.events tbody tr')).filter((text) => text.includes(OWN.slice(0, 8))).length,
    own.length,
  );
});

pageTest('sorting: each heading sorts, a second time the other way round', 'many', async (page) => {
  const column = async (i) =>
    (await texts(page, `.matches tbody tr > :nth-child(${i})`)).map((text) => parseFloat(text));
  const isSorted = (list, falls) =>
    list.every((value, i) => i === 0 || (falls ? list[i - 1] >= value : list[i - 1] <= value));
  const known = async (i) => (await column(i)).filter((value) => !Number.isNaN(value));
  for (const [heading, falls] of [
    [3, false],
    [6, true],
  ]) {
    const button = `.matches thead th:nth-child(${heading}) button`;
    for (const way of [falls, !falls]) {
      await page.click(button);
      const values = await known(heading);
      assert.equal(values.length, season.length);
      assert.ok(isSorted(values, way), `${heading}: ${values}`);
      assert.ok(Number.isNaN((await column(heading)).at(-1)), 'the match without the figure is not the last');
    }
  }
});

pageTest('opening a match from the table and from a trend, and going back', 'many', async (page) => {
  const newest = matches.at(-1);
  await page.$eval('.trends [role=slider]', (chart) => chart.focus());
  await page.keyboard.press('Enter');
  await page.waitForSelector('.timeline');
  assert.deepEqual(await texts(page, 'h1'), [newest.name]);
  assert.equal(await noteNumber(page, 'events'), newest.eliminations.length);
  await page.click('.ways a');
  await page.waitForSelector('.trends', { visible: true });
  await page.click('.matches thead button'); // oldest first
  await page.click('.matches tbody tr:nth-child(2) a');
  await page.waitForSelector('.timeline');
  assert.deepEqual(await texts(page, 'h1'), [matches[1].name]);
  await page.goBack();
  await page.waitForSelector('.trends', { visible: true });
  assert.deepEqual(await texts(page, 'h1'), ['Spring <b>&']);
});

pageTest('many matches: figures, trends, matrix and meetings agree with the model', 'many', async (page) => {
  const figures = await texts(page, '.figures dd');
  assert.equal(figures[0], `${matches.filter(({ team }) => team.place === 1).length} of ${matches.length}`);
  const mean = (list) =>
    Math.round((100 * list.reduce((sum, { own }) => sum + own.accuracy, 0)) / list.length);
  const notes = await texts(page, '.trend .note');
  const [change] = notes.filter((note) => note.includes('%'));
  assert.match(
    change,
    new RegExp(`first nine ${mean(matches.slice(0, 9))} %, last nine ${mean(matches.slice(-9))} %`),
  );
  const all = matches.flatMap(ends);
  const byOwn = all.filter(({ attacker, victim }) => attacker.id === OWN && victim.id !== OWN);
  const beaten = new Map();
  for (const { victim } of byOwn)
    if (victim.kind === 'account') beaten.set(shortId(victim), (beaten.get(shortId(victim)) ?? 0) + 1);
  const rows = await page.$$eval('.accounts tbody tr', (list) =>
    list.map((row) => [...row.cells].map((cell) => cell.innerText)),
  );
  for (const [name, , , , count] of rows.slice(1)) assert.equal(Number(count), beaten.get(name) ?? 0, name);
  const [mapChoice, followChoice] = await page.$$('.map select');
  await selectByText(followChoice, OWN.slice(0, 8));
  const byOrOfOwn = ({ attacker, victim }) => attacker.id === OWN || victim.id === OWN;
  for (const map of ['Saltmarsh', 'Corvane_Isle']) {
    await selectByText(mapChoice, map.replace('_', ' '));
    const expected = matches
      .filter((each) => each.map === map)
      .flatMap((each) => ends(each).filter(byOrOfOwn));
    assert.equal(await noteNumber(page, 'map'), expected.length, map);
  }
  await page.$$eval('.map .toolbar button', (buttons) =>
    buttons.find(({ textContent }) => textContent === 'Lines').click(),
  );
  await page.waitForSelector('.event-lines');
  await shoot(page, 'many-followed');
});

pageTest('files that could not be read are named, with the reason', 'many', async (page) => {
  await page.click('.warnings summary');
  assert.match((await texts(page, '.warnings li'))[0], /^text\.replay: ./);
});

pageTest('a replay that was cut says so, and from when on nothing is known', 'cut', async (page) => {
  const [warnings] = await texts(page, '.warnings ul');
  const last = await page.$$eval('.events tbody button', (buttons) => buttons.at(-1).textContent);
  assert.ok(
    warnings.includes(`The replay was cut: its end is missing. The last event that is left is at ${last}.`),
    warnings,
  );
  assert.deepEqual(await texts(page, '.cut text'), [`cut: nothing known after ${last}`]);
  assert.match(warnings, /no statistics of the recording player/);
});

pageTest('the keyboard reaches every part, in few steps', 'one', async (page) => {
  const stops = [];
  for (let i = 0; i < 60; i += 1) {
    await page.keyboard.press('Tab');
    const stop = await page.evaluate(() => {
      const { activeElement: element } = document;
      return [
        element.closest('.card, header')?.className,
        element.getAttribute('role') ?? element.localName,
      ].join(' ');
    });
    if (stop.startsWith(' ')) break; // the end of the page
    stops.push(stop);
  }
  const parts = ['brief button', 'timeline slider', 'map select', 'map application', 'events button'];
  parts.push('whom button', 'records button');
  for (const part of parts) assert.ok(stops.includes(`card ${part}`), `${part} is not reached: ${stops}`);
  assert.ok(stops.length < 30, `${stops.length} tab stops`);
});

pageTest(
  'with motion the map glides to an event and arrives',
  'one',
  async (page) => {
    await (await page.$('.events tbody button')).click();
    // Its line is a third of the picture, so that each end of it is within a fifth of the middle.
    const arrived = () => {
      const { width } = document.querySelector('.map-picture').viewBox.baseVal;
      const x = Number(document.querySelector('.chosen-event .victim')?.getAttribute('cx'));
      return Math.abs(x - width / 2) < width / 5 && document.querySelector('.overview') !== null;
    };
    await page.waitForFunction(arrived, { timeout: 10_000 });
  },
  { motion: 'no-preference' },
);
