// Compiled against the installed package, not run: an event's name tells its fields, what may be absent is known to be,
// and wrong arguments do not compile.
import { ReadCorvaneDemo, StartCorvaneWatcher, StopCorvaneWatcher } from 'corvane_napi';
import type { EliminationEvent, ReplayDocument, ReplayEvent, WatcherPayload } from 'corvane_napi';

const text: string = ReadCorvaneDemo('match.replay');
const document: ReplayDocument = JSON.parse(text);
StartCorvaneWatcher((payload: string) => payload.length, new ArrayBuffer(16), 500);
export const stopped: void = StopCorvaneWatcher();
// @ts-expect-error the path is required
ReadCorvaneDemo();
// @ts-expect-error a typed array is refused at run time
StartCorvaneWatcher(() => {}, Buffer.alloc(16));
// @ts-expect-error the key is required
StartCorvaneWatcher(() => {});

export const timestamp: number = document.Creation.timestamp;
// @ts-expect-error a file that is no replay has none
document.ReplayFileMeta.FriendlyName;
export const levels: string[] = document.header?.levels ?? [];

export function describe(event: ReplayEvent): string | number {
  switch (event.evtName) {
    case 'playerElim':
      // Exactly one id stands for each of the two.
      return event.killed !== undefined ? event.killed : event.killedBot;
    case 'AthenaMatchStats':
      // @ts-expect-error a float may be no number
      return event.accuracy.toFixed(2);
    case 'AthenaMatchTeamStats':
      // @ts-expect-error of the other statistics
      event.kills;
      return event.finalRanking / event.totalPlayers;
  }
}

export function clash(bot: Extract<EliminationEvent, { killedBot: string }>): EliminationEvent {
  // @ts-expect-error both ids of the eliminated
  return { ...bot, killed: 'cd', killedBot: 'Unnamed Bot' };
}

// What the watcher hands over: an error that stands alone, or a replay of which each part may be absent.
export function watched(payload: WatcherPayload): string | 1 | undefined {
  if (payload.err !== undefined) return payload.err;
  // @ts-expect-error only the first payload of a file has it
  payload.Creation.fileName;
  return payload.GameAlive ?? payload.PlayerStateEncryptionKey ?? payload.Creation?.fileName;
}
