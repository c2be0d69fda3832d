// Compiled against the installed package, not run: results are told apart by `error`, documents are typed, and wrong
// arguments do not compile.
import {
  ReplayClient,
  ReplayError,
  readMatch,
  readReplay,
  readReplays,
  watchMatches,
  watchReplays,
} from 'corvane_napi/client';

const { ReplayFileMeta } = await readReplay(new URL('file:///match.replay'), {
  key: Buffer.alloc(16),
  signal: AbortSignal.timeout(1000),
  timeout: 500,
});
// A document of the client always has it.
const length: number = ReplayFileMeta.LegthInMs;
// @ts-expect-error a Promise, not a document
readReplay('match.replay').events;
// @ts-expect-error a key is bytes
readReplay('match.replay', { key: '00ff' });

for await (const result of readReplays(['match.replay'], { concurrency: 2 })) {
  const path: string = result.path;
  if (result.error) console.log(path, result.error.code === 'ERR_CORRUPT', result.error.reason);
  else console.log(result.document.events?.length);
}
// @ts-expect-error one path is no list of paths
readReplays('match.replay');
// @ts-expect-error no such code
new Set<ReplayError['code']>(['ERR_BROKEN']);

const { own, eliminations } = await readMatch('match.replay', { salvage: true });
const attackers: (string | null)[] = eliminations.map(({ attacker }) => attacker.name ?? attacker.id ?? null);
// @ts-expect-error a replay need not have them
own.kills;

const watch = watchReplays({ key: new ArrayBuffer(32) });
watch
  .on('replay', ({ Creation }, path) => Creation?.fileName ?? path.length)
  .once('error', (error) => error.path?.length);
// @ts-expect-error no such event
watch.on('data', () => {});
for await (const { document, error } of watch) console.log(document?.GameAlive, error?.code);

for await (const { type, match, error } of watchMatches({ folder: '.', endAfterMs: 1000 }))
  console.log(type, match?.players.length, error?.code);

const client: ReplayClient = new ReplayClient({ execPath: process.execPath, concurrency: 1 });
const closed: Promise<void> = client.close();
// @ts-expect-error errors come from the client only
new ReplayError('ERR_CORRUPT');

export { attackers, closed, length };
