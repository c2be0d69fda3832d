import { createContext } from 'preact';

// What every part of the page may need: { recording: { player, isGuess }, damageNames }.
export const ReportContext = createContext(null);
