import { useMemo, useState } from 'preact/hooks';
import { densityOf } from '../figures/density.js';
import { extentOf } from '../figures/geometry.js';
import { metres, number } from '../format.js';
import { useMapView } from '../hooks/use-map-view.js';
import { useWidth } from '../hooks/use-width.js';
import * as text from '../text.js';
import { AsTable } from './as-table.js';
import { Card } from './card.js';
import { ChosenText } from './chosen-text.js';
import { Key } from './key.js';
import { MapPicture } from './map-picture.js';

const MOST_LINES = 4000;
const HEIGHT = { least: 280, most: 620, ofWidth: 0.95 };

const words = text.map;

function Toolbar({ map, mode, onMode, children }) {
  const tool = (sign, label, onClick) => (
    <button type="button" aria-label={label} title={label} onClick={onClick}>
      {sign}
    </button>
  );
  return (
    <div class="toolbar">
      {children}
      {mode && (
        <span class="group">
          {['density', 'lines'].map((each) => (
            <button type="button" aria-pressed={mode === each} onClick={() => onMode(each)}>
              {words[each]}
            </button>
          ))}
        </span>
      )}
      <span class="group end">
        {tool('−', words.zoomOut, () => map.zoom(1 / 1.5))}
        {tool('+', words.zoomIn, () => map.zoom(1.5))}
        <button type="button" onClick={map.fit}>
          {words.fit}
        </button>
      </span>
    </div>
  );
}

function Legend({ isDensity }) {
  if (isDensity) return <Key kind="squares">{words.densityLegend}</Key>;
  return (
    <>
      <Key kind="end-line">{words.endLegend}</Key>
      <Key kind="knock-line">{words.knockLegend}</Key>
    </>
  );
}

function SquaresTable({ squares }) {
  const rows = () => squares.map(({ x, y, count }) => [metres(x), metres(y), number(count)]);
  if (squares.length === 0) return null;
  return <AsTable columns={words.columns} rows={rows} caption={words.squares(squares[0].size)} />;
}

function Drawn({ width, events, extent, modes, choices, chosen, onChoose, about }) {
  const [mode, setMode] = useState(modes ? 'density' : null);
  const height = Math.max(HEIGHT.least, Math.min(HEIGHT.most, Math.round(width * HEIGHT.ofWidth)));
  const map = useMapView(extent, { width, height }, chosen);
  const isDensity = mode === 'density';
  const squares = useMemo(() => (modes ? densityOf(events, extent) : null), [events, extent, modes]);
  const drawn = isDensity ? events : events.slice(-MOST_LINES);
  const without = events.filter(({ victimAt }) => victimAt === null).length;
  return (
    <>
      <Toolbar {...{ map, mode }} onMode={setMode}>
        {choices}
      </Toolbar>
      <MapPicture events={drawn} squares={isDensity ? squares : null} {...{ map, chosen, onChoose }} />
      <p class="about" aria-live="polite">
        {chosen ? <ChosenText event={chosen} hasLink={Boolean(modes)} /> : about}
        {!isDensity && events.length > MOST_LINES && ` ${words.onlyLast(MOST_LINES)}`}
        {without > 0 && ` ${words.without(without)}`}
      </p>
      <p class="legend">
        <Legend isDensity={isDensity} />
      </p>
      {modes && <SquaresTable squares={squares} />}
    </>
  );
}

// The map: toolbar, picture, the chosen event, legend. all: the events that decide its extent; choices: elements for
// the toolbar; modes: whether density is offered; about: the text while nothing is chosen.
export function MapCard({ note, events, all, modes = false, choices, chosen, onChoose, about }) {
  const [box, width] = useWidth();
  const extent = useMemo(() => extentOf(all), [all]);
  const isEmpty = all.every(({ victimAt }) => victimAt === null);
  return (
    <Card title={words.title} note={note} name="map">
      <div ref={box}>
        {isEmpty && <p>{words.noPositions}</p>}
        {!isEmpty && width > 0 && (
          <Drawn {...{ width, events, extent, modes, choices, chosen, onChoose, about }} />
        )}
      </div>
    </Card>
  );
}
