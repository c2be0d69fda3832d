import { useState } from 'preact/hooks';
import * as text from '../text.js';

// A chart's figures as a table, drawn when it is opened. rows(): lists of cells.
export function AsTable({ columns, rows, caption = text.page.asTable }) {
  const [isOpen, setOpen] = useState(false);
  return (
    <details class="as-table" onToggle={({ currentTarget }) => setOpen(currentTarget.open)}>
      <summary>{caption}</summary>
      {isOpen && (
        <div class="scroll" tabindex={0} role="region" aria-label={caption}>
          <table>
            <thead>
              <tr>
                {columns.map((name) => (
                  <th scope="col">{name}</th>
                ))}
              </tr>
            </thead>
            <tbody>
              {rows().map((cells) => (
                <tr>
                  {cells.map((cell) => (
                    <td>{cell}</td>
                  ))}
                </tr>
              ))}
            </tbody>
          </table>
        </div>
      )}
    </details>
  );
}
