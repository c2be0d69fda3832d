import { isEnd } from '../figures/match.js';

const LANE_HEIGHT = 12;
const MARK_HEIGHT = 9;
const REACH_PX = 12;

// A row of marks for eliminations, one for knock-downs. A click chooses the nearest event.
export function EventLanes({ events, x, top, chosen, onChoose }) {
  const marks = (lane, y) =>
    lane.map(({ timeMs }) => `M${x(timeMs).toFixed(1)},${y}v${MARK_HEIGHT}`).join('');
  const lanes = [events.filter(isEnd), events.filter((event) => !isEnd(event))];
  const [left, right] = x.range;

  const choose = (lane, pointer) => {
    const svg = pointer.currentTarget.ownerSVGElement;
    const at =
      ((pointer.clientX - svg.getBoundingClientRect().left) * svg.viewBox.baseVal.width) / svg.clientWidth;
    const distance = (event) => Math.abs(x(event.timeMs) - at);
    const nearest = lane.reduce((a, b) => (a === null || distance(b) < distance(a) ? b : a), null);
    if (nearest !== null && distance(nearest) <= REACH_PX) onChoose(nearest);
  };
  return (
    <g class="lanes">
      {lanes.map((lane, i) => (
        <g>
          <path class={i ? 'knock' : 'elimination'} d={marks(lane, top + i * LANE_HEIGHT)} />
          {chosen && lane.includes(chosen) && (
            <path class="chosen" d={`M${x(chosen.timeMs)},${top + i * LANE_HEIGHT - 2}v${MARK_HEIGHT + 4}`} />
          )}
          <rect
            x={left}
            y={top + i * LANE_HEIGHT - 1}
            width={right - left}
            height={LANE_HEIGHT}
            onClick={(pointer) => choose(lane, pointer)}
          />
        </g>
      ))}
    </g>
  );
}
