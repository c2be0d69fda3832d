// Compiled against the installed package, not run: every field has its type, and what the document cannot hold is an
// error.
import { ReadCorvaneDemo, StartCorvaneWatcher, StopCorvaneWatcher } from 'corvane_napi';
import type { EliminationEvent, ReplayDocument, ReplayEvent, WatcherPayload } from 'corvane_napi';

const text: string = ReadCorvaneDemo('match.replay');
const document: ReplayDocument = JSON.parse(text);
const stopped: void = StopCorvaneWatcher();
StartCorvaneWatcher((payload: string) => payload.length, new ArrayBuffer(16), 500);
// @ts-expect-error the path is required
ReadCorvaneDemo();
// @ts-expect-error a typed array is refused at run time
StartCorvaneWatcher(() => {}, Buffer.alloc(16));
// @ts-expect-error the key is required
StartCorvaneWatcher(() => {});

const { fileName, timestamp }: { fileName: string; timestamp: number } = document.Creation;
// @ts-expect-error a file that is no replay has none
document.ReplayFileMeta.FriendlyName;
const lengthInMs: number | undefined = document.ReplayFileMeta?.LegthInMs;
const never: false | undefined = document.ReplayFileMeta?.bIsValid;
const guid: string = document.header?.guid ?? '';
const branch: string | undefined = document.header?.EngineVersion.branch;
const levels: string[] = document.header?.levels ?? [];

// The name of an event tells its fields; each of the three must be handled.
function describe(event: ReplayEvent): string | number | null {
  const at: number = event.eventMeta.time1;
  switch (event.evtName) {
    case 'playerElim':
      return event.killed ?? event.killedBot ?? at;
    case 'AthenaMatchStats':
      // @ts-expect-error a float may be no number
      event.accuracy.toFixed(2);
      return event.total_traveled + event.damage_to_structures;
    case 'AthenaMatchTeamStats':
      // @ts-expect-error of the other statistics
      event.kills;
      return event.finalRanking / event.totalPlayers;
    default: {
      const none: never = event;
      return none;
    }
  }
}

// Exactly one id stands for each of the two.
function victim(event: EliminationEvent): string {
  return event.killed !== undefined ? event.killed : event.killedBot;
}
const place = { killedX: 0, killedY: 0, killedZ: null, killerX: 0, killerY: 0, killerZ: 0 };
const rest = {
  evtName: 'playerElim',
  eventMeta: { time1: 0, time2: 0 },
  damageType: 0,
  knocked: true,
  ...place,
} as const;
const bot: EliminationEvent = { ...rest, killedBot: 'Unnamed Bot', killer: 'ab' };
// @ts-expect-error both ids of the eliminated
const both: EliminationEvent = { ...rest, killed: 'cd', killedBot: 'Unnamed Bot', killer: 'ab' };

// What the watcher hands over: an error that stands alone, or a replay of which each part may be absent.
function watched(payload: WatcherPayload): string | 1 | undefined {
  if (payload.err !== undefined) return payload.err;
  // @ts-expect-error only the first payload of a file has it
  payload.Creation.fileName;
  const alive: 1 | undefined = payload.GameAlive;
  return alive ?? payload.PlayerStateEncryptionKey ?? payload.Creation?.fileName;
}

export {
  bot,
  both,
  branch,
  describe,
  fileName,
  guid,
  lengthInMs,
  levels,
  never,
  stopped,
  timestamp,
  victim,
  watched,
};
