// A sentence with parts that are elements: fill('{a} met {b}', { a: <…/>, b: <…/> }).
export function fill(sentence, parts) {
  return sentence.split(/\{(\w+)\}/).map((piece, i) => (i % 2 ? parts[piece] : piece));
}
