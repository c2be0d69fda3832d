// The figures that matter, large. items: { value, unit, label }.
export function Figures({ title, items }) {
  return (
    <section class="card figures" aria-label={title}>
      <dl>
        {items.map(({ value, unit, label }) => (
          <div>
            <dt>{label}</dt>
            <dd>
              {value}
              {unit && <small> {unit}</small>}
            </dd>
          </div>
        ))}
      </dl>
    </section>
  );
}
