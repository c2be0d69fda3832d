import { clock } from '../format.js';

// Chooses an event; it reads as the event's time unless it has other words. item: from useRoving, where it stands in a list.
export function EventButton({ event, onChoose, item, children }) {
  return (
    <button type="button" class="link" onClick={() => onChoose(event)} {...item}>
      {children ?? clock(event.timeMs)}
    </button>
  );
}
