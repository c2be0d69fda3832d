import { useId } from 'preact/hooks';

// A select with a label. options: [value, text]; the values are any that === can tell apart.
export function Choice({ label, options, value, onChange }) {
  const id = useId();
  return (
    <span class="choice">
      <label for={id}>{label}</label>{' '}
      <select
        id={id}
        value={String(options.findIndex(([each]) => each === value))}
        onChange={({ currentTarget }) => onChange(options[currentTarget.value][0])}
      >
        {options.map(([, words], i) => (
          <option value={String(i)}>{words}</option>
        ))}
      </select>
    </span>
  );
}
