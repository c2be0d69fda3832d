import * as text from '../text.js';
import { Card } from './card.js';

// What is missing, or odd, about a replay.
export function Warnings({ match }) {
  const { state, own, warnings, events } = match;
  const lastMs = events.at(-1)?.timeMs ?? null;
  const sentences = [
    state === 'recording' && text.states.recording,
    state === 'truncated' && text.states.truncated(lastMs),
    events.length === 0 && text.events.none,
    own === null && text.figures.none,
    !match.team?.place && text.figures.noPlace,
  ].filter(Boolean);
  if (sentences.length + warnings.length === 0) return null;
  return (
    <Card title={text.facts.warnings} name="warnings">
      <ul>
        {sentences.map((sentence) => (
          <li>{sentence}</li>
        ))}
      </ul>
      {warnings.length > 0 && (
        <details>
          <summary>{text.facts.details}</summary>
          <ul>
            {warnings.map((warning) => (
              <li>
                <bdi>{warning}</bdi>
              </li>
            ))}
          </ul>
        </details>
      )}
    </Card>
  );
}
