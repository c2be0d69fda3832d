import { useLayoutEffect, useRef } from 'preact/hooks';
import { metres } from '../format.js';
import { useRoving } from '../hooks/use-roving.js';
import * as text from '../text.js';
import { Card } from './card.js';
import { EventButton } from './event-button.js';
import { EventSentence } from './event-sentence.js';

// Scrolls the box, never the page, until the row is in it.
function reveal(box, row) {
  if (!box || !row) return;
  const [outer, inner] = [box.getBoundingClientRect(), row.getBoundingClientRect()];
  const head = box.querySelector('thead').offsetHeight;
  if (inner.top < outer.top + head) box.scrollTop -= outer.top + head - inner.top;
  if (inner.bottom > outer.bottom) box.scrollTop += inner.bottom - outer.bottom;
}

// The events as sentences. Arrow keys choose one after the other.
export function EventList({ events, all, chosen, onChoose }) {
  const box = useRef(null);
  const row = useRef(null);
  const roving = useRoving(events.length, (i) => onChoose(events[i]));
  useLayoutEffect(() => {
    if (chosen !== null) roving.setAt(events.indexOf(chosen));
    reveal(box.current, row.current);
  }, [chosen]);
  const empty = all.length === 0 ? text.events.none : text.events.noneHere;
  return (
    <Card title={text.events.title} note={text.events.countOf(events.length, all.length)} name="events">
      {events.length === 0 ? (
        <p>{empty}</p>
      ) : (
        <div class="scroll tall" ref={box}>
          <table {...roving.group}>
            <thead>
              <tr>
                {text.events.columns.map((name) => (
                  <th scope="col">{name}</th>
                ))}
              </tr>
            </thead>
            <tbody>
              {events.map((event, i) => (
                <tr
                  ref={event === chosen ? row : undefined}
                  aria-current={event === chosen ? 'true' : undefined}
                  onClick={() => onChoose(event)}
                >
                  <td>
                    <EventButton event={event} onChoose={onChoose} item={roving.item(i)} />
                  </td>
                  <td>
                    <EventSentence event={event} />
                  </td>
                  <td>{metres(event.distanceM)}</td>
                </tr>
              ))}
            </tbody>
          </table>
        </div>
      )}
    </Card>
  );
}
