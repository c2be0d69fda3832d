'use strict';
// Reads what the tests check of a Linux program file (ELF, 64 bits): its segments and its dynamic flags.

const PROGRAM_HEADER_BYTES = 56;
const SEGMENTS = { 2: 'dynamic', 0x6474e551: 'stack', 0x6474e552: 'relro' };
const EXECUTABLE = 1;
const DT_FLAGS = 30n;
const DF_BIND_NOW = 8n;

class ElfFile {
  constructor(bytes) {
    this.bytes = bytes;
    this.segments = {};
    const table = Number(bytes.readBigUInt64LE(32));
    for (let i = 0; i < bytes.readUInt16LE(56); i++) {
      const at = table + i * PROGRAM_HEADER_BYTES;
      const name = SEGMENTS[bytes.readUInt32LE(at)];
      if (name) {
        const [offset, size] = [at + 8, at + 32].map((field) => Number(bytes.readBigUInt64LE(field)));
        this.segments[name] = { flags: bytes.readUInt32LE(at + 4), offset, size };
      }
    }
  }
  get stackIsExecutable() {
    return !this.segments.stack || (this.segments.stack.flags & EXECUTABLE) !== 0;
  }
  // Relocated data that is made read-only, and everything relocated before that.
  get hasFullRelro() {
    const { offset, size } = this.segments.dynamic;
    let flags = 0n;
    for (let at = offset; at < offset + size; at += 16) {
      if (this.bytes.readBigInt64LE(at) === DT_FLAGS) flags = this.bytes.readBigUInt64LE(at + 8);
    }
    return 'relro' in this.segments && (flags & DF_BIND_NOW) !== 0n;
  }
  // Whether a name stands anywhere in its string tables.
  names(name) {
    return this.bytes.includes(`\0${name}\0`);
  }
}

module.exports = { ElfFile };
