import { clock } from '../format.js';

// Chooses an event. Shows the event's time unless it has other content. item: from useRoving, its place in a list.
export function EventButton({ event, onChoose, item, children }) {
  return (
    <button type="button" class="link" onClick={() => onChoose(event)} {...item}>
      {children ?? clock(event.timeMs)}
    </button>
  );
}
