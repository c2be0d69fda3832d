'use strict';
// node report.js RESULTS DOCUMENT PART...: prints the tables of these parts of scripts/bench and puts them into the
// document, each between the comments that name it.

const { execFileSync } = require('node:child_process');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { median } = require('./child.js');

const [results, document, ...parts] = process.argv.slice(2);
const load = (name) => JSON.parse(fs.readFileSync(path.join(results, name), 'utf8'));

const fixed = (digits) => (value) => (Number.isFinite(value) ? value.toFixed(digits) : '-');
const ms = fixed(2);
const ratio = fixed(2);
const mega = (bytesPerSecond) => (bytesPerSecond / 1e6).toFixed(0);
const percent = fixed(1);
const binary = (bytes) => (bytes < 1 << 20 ? `${bytes / 1024} KiB` : `${bytes / (1 << 20)} MiB`);
const decimal = (bytes) => (bytes < 1e9 ? `${bytes / 1e6} MB` : `${bytes / 1e9} GB`);

function table(head, rows) {
  const lines = [head, head.map((_, i) => (i === 0 ? '---' : '--:')), ...rows];
  return lines.map((cells) => `| ${cells.join(' | ')} |`).join('\n');
}

// The medians of Google Benchmark's rows GROUP/NAME[/REST] as an object: of('GROUP', 'NAME', 'REST').
function googleMedians(file) {
  const rows = load(file).benchmarks.filter((row) => row.aggregate_name === 'median');
  const byName = new Map(rows.map((row) => [row.run_name, row]));
  return (...names) => byName.get(names.filter(Boolean).join('/'));
}

const KEYS = [128, 192, 256];
const AES_SIZES = [64, 256, 1024, 4096, 16384, 131072, 1048576];

function aes() {
  const [fast, slow] = ['aes.json', 'aes-table.json'].map(googleMedians);
  const beside = (of, own, bits, size) => {
    const [ours, theirs] = [own, 'openssl'].map(
      (name) => of(`aes-${bits}`, name, String(size)).bytes_per_second,
    );
    return `${ratio(ours / theirs)} (${mega(ours)})`;
  };
  const rows = AES_SIZES.map((size) => [
    size < 1024 ? `${size} bytes` : binary(size),
    ...KEYS.map((bits) => beside(fast, 'aes-ni', bits, size)),
    ...KEYS.map((bits) => beside(slow, 'table', bits, size)),
  ]);
  return table(['', ...KEYS.map((bits) => `AES-NI, ${bits}`), ...KEYS.map((bits) => `table, ${bits}`)], rows);
}

const SETS = ['text', 'records', 'samples', 'mixed'];
const ZSTD = ['zstd-3', 'zstd-9', 'zstd-19'];
const PEERS = [...ZSTD, 'lz4', 'zlib', 'libdeflate'];

function lz() {
  const of = googleMedians('lz.json');
  const rows = SETS.flatMap((set) =>
    [64 << 10, 1 << 20, 8 << 20, 64 << 20].map((size) => {
      const row = (codec) => of(`${set}-${size}`, codec);
      const cell = (codec) =>
        row(codec)
          ? `${mega(row(codec).bytes_per_second)} (${percent((100 * row(codec).compressed) / size)} %)`
          : '-';
      const fastest = Math.max(...ZSTD.map((codec) => row(codec)?.bytes_per_second ?? 0));
      return [
        `${set}, ${binary(size)}`,
        ratio(row('own').bytes_per_second / fastest),
        ratio(row('own').compressed / row('zstd-9').compressed),
        ...['own', ...PEERS].map(cell),
      ];
    }),
  );
  return table(['', 'speed / fastest zstd', 'size / zstd-9', 'this decoder', ...PEERS], rows);
}

function lzTargets() {
  const lines = fs.readFileSync(path.join(results, 'lz-targets.jsonl'), 'utf8').trim().split('\n');
  const runs = lines.map((line) => JSON.parse(line));
  const rows = SETS.flatMap((set) =>
    [64 << 10, 1 << 20, 8 << 20].map((size) => {
      const [x64, x86] = [64, 32].map((bits) =>
        median(
          runs
            .filter((run) => run.set === set && run.size === size && run.bits === bits)
            .map((run) => parseFloat(run.speed)),
        ),
      );
      return [`${set}, ${binary(size)}`, x64.toFixed(0), x86.toFixed(0), ratio(x86 / x64)];
    }),
  );
  return table(['', '64-bit, MB/s', '32-bit, MB/s', '32-bit / 64-bit'], rows);
}

function watcher() {
  const rows = ['linux', 'windows'].flatMap((system) =>
    load(`watcher-${system}.json`).map(({ files, cycle, listing, queries }) => [
      `${system}, ${files} files`,
      ...[cycle, listing, queries].map((micros) => ms(micros / 1000)),
      ratio(cycle / listing),
      ratio(cycle / queries),
    ]),
  );
  const head = [
    '',
    'cycle, ms',
    'cheapest listing, ms',
    'times by path, ms',
    'cycle / listing',
    'cycle / times by path',
  ];
  return table(head, rows);
}

const hosts = () => ['addon-linux.json', 'addon-windows.json'].map(load);
const eachHost = (make) =>
  hosts()
    .map((host) => `${host.node}:\n\n${make(host)}`)
    .join('\n\n');
const plainOrEncrypted = ({ encrypted }) => (encrypted ? 'encrypted' : 'plain');

function warm() {
  const head = ['', 'events', 'chunks', '', 'add-on, ms', 'JavaScript, ms', 'JavaScript / add-on'];
  return eachHost(({ warm }) =>
    table(
      head,
      warm.map((row) => [
        decimal(row.bytes),
        row.events,
        row.chunks,
        plainOrEncrypted(row),
        ms(row.addonMs),
        ms(row.readerMs),
        fixed(1)(row.readerMs / row.addonMs),
      ]),
    ),
  );
}

function beyondAscii() {
  const rows = hosts().map(({ node, beyondAscii: [ascii, beyond] }) => [
    node,
    ms(ascii),
    ms(beyond),
    ratio(beyond / ascii),
  ]);
  return table(['10,000 eliminations', 'ASCII, ms', 'one character beyond it, ms', 'beyond / ASCII'], rows);
}

function smallest() {
  const head = ['8 MiB of', 'text, KiB', 'added peak, KiB', '3 times the text and 4 MiB, KiB'];
  return eachHost(({ smallest }) =>
    table(
      head,
      smallest.map(({ of, name, kiB, textBytes }) => {
        const text = textBytes / 1024;
        return [
          name ? `${of}, one character beyond ASCII` : of,
          text.toFixed(0),
          kiB,
          (3 * text + 4096).toFixed(0),
        ];
      }),
    ),
  );
}

function client() {
  const rows = hosts().map(({ node, client: { count, clientMs, exportMs, readerMs } }) => [
    node,
    ...[clientMs, exportMs, readerMs].map((time) => fixed(0)((1000 * count) / time)),
    ratio(readerMs / clientMs),
    ratio(clientMs / exportMs),
  ]);
  const head = ['replays a second', 'the client, all cores', '`export`', 'JavaScript, one core'];
  return table([...head, 'client / JavaScript', '`export` / client'], rows);
}

function matches() {
  const rows = hosts().map(({ node, client: { singleMs, matchMs } }) => [
    node,
    ...[singleMs, matchMs].map(fixed(3)),
    ratio(matchMs / singleMs),
  ]);
  return table(['', 'one read by the client, ms', 'the match of its document, ms', 'match / read'], rows);
}

function reading() {
  const head = ['', 'chunks', 'events', 'add-on, ms', 'JavaScript, ms', 'JavaScript / add-on'];
  return eachHost(({ reading }) =>
    table(
      head,
      reading.map((row) => [
        decimal(row.bytes),
        row.chunks,
        plainOrEncrypted(row),
        ms(row.addonMs),
        ms(row.readerMs),
        fixed(1)(row.readerMs / row.addonMs),
      ]),
    ),
  );
}

function eliminations() {
  const head = ['eliminations', '', 'add-on, ms', 'JavaScript, ms', 'JavaScript / add-on', 'add-on, µs each'];
  return eachHost(({ eliminations }) =>
    table(
      head,
      eliminations.map((row) => [
        row.events,
        plainOrEncrypted(row),
        ms(row.addonMs),
        ms(row.readerMs),
        ratio(row.readerMs / row.addonMs),
        ms((1000 * row.addonMs) / row.events),
      ]),
    ),
  );
}

function memory() {
  const head = ['', 'chunks', 'add-on, KiB', 'JavaScript, KiB'];
  return eachHost(({ memory }) =>
    table(
      head,
      memory.map((row) => [decimal(row.bytes), row.chunks, row.addonKiB, row.readerKiB ?? '-']),
    ),
  );
}

function loading() {
  const rows = hosts().flatMap(({ node, loading }) =>
    Object.entries({ require: loading.require, 'first call': loading.firstCall, both: loading.both }).map(
      ([name, [own, empty]]) => [`${node}: ${name}`, ms(own), ms(empty), ms(own - empty)],
    ),
  );
  return table(['', 'add-on, ms', 'empty add-on, ms', 'difference, ms'], rows);
}

function idle() {
  const rows = hosts().map(({ node, idle }) => [
    node,
    ...[idle.watching, idle.host].map((load) => `${ratio(load)} %`),
  ]);
  return table(['', 'watching 1,000 files', 'the host alone'], rows);
}

function machine() {
  const firstLine = (program) => execFileSync(program, ['--version'], { encoding: 'utf8' }).split('\n')[0];
  const cpu = os.cpus();
  return [
    `- ${new Date().toISOString().slice(0, 16).replace('T', ' ')} UTC`,
    `- ${cpu.length} × ${cpu[0].model}, ${Math.round(os.totalmem() / 2 ** 30)} GiB, ${os.type()} ${os.release()}`,
    ...['g++', 'i686-w64-mingw32-g++-posix', 'wine'].map((program) => `- ${firstLine(program)}`),
    ...hosts().map(({ node }) => `- ${node}`),
  ].join('\n');
}

const TABLES = {
  aes: [aes],
  lz: [lz, lzTargets],
  watcher: [watcher],
  addon: [
    ...[machine, warm, beyondAscii, smallest, client, matches],
    ...[reading, eliminations, memory, loading, idle],
  ],
};

let text = fs.readFileSync(document, 'utf8');
for (const make of parts.flatMap((part) => TABLES[part])) {
  const measured = make();
  console.log(`\n${make.name}\n\n${measured}`);
  const marked = new RegExp(`(<!-- measured: ${make.name} -->\n)[^]*?(<!-- end -->)`);
  if (!marked.test(text)) throw new Error(`${document} has no place for ${make.name}`);
  text = text.replace(marked, (_, begin, end) => `${begin}\n${measured}\n\n${end}`);
}
fs.writeFileSync(document, text);
