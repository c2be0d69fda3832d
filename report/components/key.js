// A mark of a chart and what it means.
export function Key({ kind, children }) {
  return (
    <span class="key-item">
      <span class={`key ${kind}`}>{kind === 'squares' && [<i />, <i />, <i />]}</span> <span>{children}</span>
    </span>
  );
}
