import { useId } from 'preact/hooks';

// A part of the page: a heading, a note beside it, and what it shows.
export function Card({ title, note, name, children }) {
  const id = useId();
  return (
    <section class={`card ${name}`} aria-labelledby={id}>
      <header>
        <h2 id={id}>{title}</h2>
        {note && <p class="note">{note}</p>}
      </header>
      {children}
    </section>
  );
}
