// The report's page: takes the data that stand in it, and draws them.

import { render } from 'preact';
import { unpack } from '../client/report-columns.js';
import { App } from './components/app.js';
import { page } from './text.js';
import './style/page.css';

// Many matches come deflated and as base64; the browser itself expands them.
async function inflate(base64) {
  const characters = atob(base64);
  const bytes = new Uint8Array(characters.length);
  for (let i = 0; i < bytes.length; i += 1) bytes[i] = characters.charCodeAt(i);
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('deflate'));
  return new Response(stream).json();
}

async function readData() {
  const given = JSON.parse(document.getElementById('data').textContent);
  const data = given.deflated === undefined ? given : await inflate(given.deflated);
  const matches = unpack(data);
  const { id, isGuess } = data.recording;
  const isRecording = (player) => player.kind === 'account' && player.id === id;
  const mentioned = matches.flatMap(({ events }) =>
    events.flatMap(({ attacker, victim }) => [attacker, victim]),
  );
  const player = id === null ? null : (mentioned.find(isRecording) ?? { kind: 'account', id, name: null });
  return { ...data, matches, recording: { player, isGuess }, damageNames: new Map(data.damageNames) };
}

const element = document.getElementById('page');
element.textContent = page.reading;
readData().then(
  (report) => {
    element.textContent = '';
    render(<App report={report} />, element);
  },
  () => {
    element.textContent = page.broken;
  },
);
