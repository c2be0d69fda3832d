import { number } from '../format.js';
import { useRoving } from '../hooks/use-roving.js';
import * as text from '../text.js';
import { Card } from './card.js';
import { FollowButton } from './follow-button.js';

const SHOWN = 14;
const words = text.accounts;

// The accounts that were in the most matches, and how the recording player fared against them.
export function AccountsTable({ accounts, recording, followed, onFollow }) {
  const shown = accounts.slice(0, SHOWN);
  const roving = useRoving(shown.length);
  const columns = Object.keys(words.columns).filter(
    (key) => recording || !['beaten', 'lostTo'].includes(key),
  );
  const cell = (record, key) =>
    record.player === recording && ['beaten', 'lostTo'].includes(key) ? '' : number(record[key]);
  return (
    <Card title={words.title} note={recording && words.note} name="accounts">
      {shown.length === 0 && <p>{words.none}</p>}
      {shown.length > 0 && (
        <table {...roving.group}>
          <thead>
            <tr>
              {columns.map((key) => (
                <th scope="col">{words.columns[key]}</th>
              ))}
            </tr>
          </thead>
          <tbody>
            {shown.map((record, i) => (
              <tr aria-current={record.player === followed ? 'true' : undefined}>
                <th scope="row">
                  <FollowButton player={record.player} {...{ followed, onFollow }} item={roving.item(i)} />
                </th>
                {columns.slice(1).map((key) => (
                  <td>{cell(record, key)}</td>
                ))}
              </tr>
            ))}
          </tbody>
        </table>
      )}
    </Card>
  );
}
