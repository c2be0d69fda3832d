import { isEnd } from '../figures/match.js';
import { nameOf } from './player-name.js';

const LABEL_PIXELS = 130;

const pixels = (view, { x, y }) => `${view.px(x).toFixed(2)},${view.py(y).toFixed(2)}`;
const isPlaced = ({ victimAt }) => victimAt !== null;

// A dot is a line without length and with round ends: thousands of them are one element.
const dots = (view, events) => events.map(({ victimAt }) => `M${pixels(view, victimAt)}h0`).join('');

const lines = (view, events) =>
  events
    .filter(({ attackerAt }) => attackerAt !== null)
    .map(({ attackerAt, victimAt }) => `M${pixels(view, attackerAt)}L${pixels(view, victimAt)}`)
    .join('');

// Lines from attackers to victims; the dot is the victim.
export function EventLines({ events, view }) {
  const placed = events.filter(isPlaced);
  const [ends, knocks] = [placed.filter(isEnd), placed.filter((event) => !isEnd(event))];
  return (
    <g class="event-lines">
      <path class="knock line" d={lines(view, knocks)} />
      <path class="knock ring" d={dots(view, knocks)} />
      <path class="knock hole" d={dots(view, knocks)} />
      <path class="elimination line" d={lines(view, ends)} />
      <path class="elimination dot" d={dots(view, ends)} />
    </g>
  );
}

// Squares, darker with more victims. By the square root, so that one hot spot does not hide the rest.
export function Density({ squares, view }) {
  const most = squares[0]?.count ?? 1;
  return (
    <g class="density">
      {squares.map(({ x, y, size, count }) => {
        const side = size / view.metresPerPixel;
        const [left, top] = [view.px(x), Math.min(view.py(y), view.py(y + size))];
        const opacity = (0.15 + 0.85 * Math.sqrt(count / most)).toFixed(3);
        return (
          <rect
            x={left}
            y={top}
            width={Math.max(1, side - 1)}
            height={Math.max(1, side - 1)}
            opacity={opacity}
          />
        );
      })}
    </g>
  );
}

function Label({ view, at, player, isAbove }) {
  const [x, y] = [view.px(at.x), view.py(at.y)];
  const side = x > view.width - LABEL_PIXELS / 2 ? 'end' : x < LABEL_PIXELS / 2 ? 'start' : 'middle';
  return (
    <text x={x} y={y + (isAbove ? -14 : 24)} text-anchor={side} direction="ltr">
      {nameOf(player)}
    </text>
  );
}

// The event that is chosen, large, with both names.
export function ChosenEvent({ event, view }) {
  const { attackerAt, victimAt, attacker, victim, kind } = event;
  const [x, y] = [view.px(victimAt.x), view.py(victimAt.y)];
  const isHigher = attackerAt === null || y <= view.py(attackerAt.y);
  return (
    <g class={`chosen-event ${kind}`}>
      {attackerAt && <path class="line" d={lines(view, [event])} />}
      {attackerAt && <circle class="start" cx={view.px(attackerAt.x)} cy={view.py(attackerAt.y)} r={3.5} />}
      <circle class="victim" cx={x} cy={y} r={7} />
      <Label {...{ view }} at={victimAt} player={victim} isAbove={isHigher} />
      {attackerAt && attacker !== victim && (
        <Label {...{ view }} at={attackerAt} player={attacker} isAbove={!isHigher} />
      )}
    </g>
  );
}

const INSET = 96;

// Where on the whole map the picture is, while that shows a part.
export function Overview({ events, view, whole }) {
  if (view.metresPerPixel > whole.metresPerPixel / 1.5) return null;
  const scale = INSET / Math.max(whole.width, whole.height);
  const { x, y } = view.domains;
  const [left, right] = x.map((value) => whole.px(value) * scale);
  const edges = y.map((value) => whole.py(value) * scale);
  const [top, bottom] = [Math.min(...edges), Math.max(...edges)];
  const side = Math.max(6, right - left);
  const [width, height] = [whole.width * scale, whole.height * scale];
  return (
    <g class="overview" transform={`translate(${view.width - width - 8} 8)`} aria-hidden="true">
      <rect class="frame" width={width} height={height} />
      <g transform={`scale(${scale})`}>
        <path class="dots" d={dots(whole, events.filter(isPlaced))} />
      </g>
      <rect
        class="seen"
        x={(left + right - side) / 2}
        y={(top + bottom) / 2 - Math.max(6, bottom - top) / 2}
        width={side}
        height={Math.max(6, bottom - top)}
      />
    </g>
  );
}
