import { clock, NONE, number, percent } from '../format.js';
import * as text from '../text.js';
import { Figures } from './figures.js';

const words = text.season;

// The recording player's figures over all matches.
export function SeasonFigures({ totals }) {
  const items = [
    totals.placed > 0
      ? { value: number(totals.won), unit: text.figures.of(totals.placed), label: words.won }
      : { value: NONE, label: words.won },
    { value: number(totals.place, totals.place % 1 ? 1 : 0), label: words.place },
    { value: number(totals.eliminations, 1), label: words.eliminations },
    { value: number(totals.most), label: words.most },
    { value: number(totals.damage), label: words.damage },
    { value: percent(totals.accuracy), label: words.accuracy },
    { value: clock(totals.length), label: words.length },
  ];
  return <Figures title={text.figures.title} items={items} />;
}
