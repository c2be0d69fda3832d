'use strict';
// Where the game keeps its replays, for messages: the native watcher finds the folder itself and does not say which.

const os = require('node:os');
const path = require('node:path');

function demoFolder() {
  const { LOCALAPPDATA, XDG_DATA_HOME } = process.env;
  const inHome = process.platform === 'win32' ? ['AppData', 'Local'] : ['.local', 'share'];
  const local = LOCALAPPDATA || XDG_DATA_HOME || path.join(os.homedir(), ...inHome);
  return path.join(local, 'CorvaneGame', 'Saved', 'Demos');
}

module.exports = { demoFolder };
