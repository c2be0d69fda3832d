import * as text from '../text.js';
import { Card } from './card.js';

// Files that could not be read, and why.
export function Failures({ failures }) {
  if (failures.length === 0) return null;
  return (
    <Card title={text.failures.title(failures.length)} name="warnings">
      <details>
        <summary>{text.failures.show}</summary>
        <ul>
          {failures.map(({ file, reason }) => (
            <li>
              <bdi>{file}</bdi>: <bdi>{reason}</bdi>
            </li>
          ))}
        </ul>
      </details>
    </Card>
  );
}
