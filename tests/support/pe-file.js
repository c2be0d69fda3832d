'use strict';
// Reads what the tests check of a Windows program file (PE, 32 or 64 bits): machine, flags, and which DLLs it needs.

const MACHINES = { 0x14c: 'ia32', 0x8664: 'x64' };
const IMPORT_DIRECTORY = 1;
const DYNAMIC_BASE = 0x40;
const NX_COMPAT = 0x100;

class PeFile {
  constructor(bytes) {
    this.bytes = bytes;
    this.coff = bytes.readUInt32LE(0x3c) + 4;
    this.optional = this.coff + 20;
    this.wide = bytes.readUInt16LE(this.optional) === 0x20b;
  }
  get machine() {
    return MACHINES[this.bytes.readUInt16LE(this.coff)];
  }
  get dllFlags() {
    return this.bytes.readUInt16LE(this.optional + 70);
  }
  // The DLLs of the import table, in lower case. Its entries have 20 bytes, with the name's address at 12; one without
  // a name ends them.
  get imports() {
    const directories = this.optional + (this.wide ? 112 : 96);
    const table = this.fileOffset(this.bytes.readUInt32LE(directories + 8 * IMPORT_DIRECTORY));
    const names = [];
    for (let at = table + 12, name; (name = this.bytes.readUInt32LE(at)) !== 0; at += 20) {
      const from = this.fileOffset(name);
      names.push(this.bytes.toString('latin1', from, this.bytes.indexOf(0, from)).toLowerCase());
    }
    return names;
  }
  // Where the byte lies in the file that is loaded at this address, relative to the image.
  fileOffset(address) {
    const sections = this.optional + this.bytes.readUInt16LE(this.coff + 16);
    const count = this.bytes.readUInt16LE(this.coff + 2);
    for (let at = sections; at < sections + 40 * count; at += 40) {
      const offset = address - this.bytes.readUInt32LE(at + 12);
      if (offset >= 0 && offset < this.bytes.readUInt32LE(at + 16))
        return this.bytes.readUInt32LE(at + 20) + offset;
    }
    throw new Error(`no section holds the address ${address}`);
  }
}

module.exports = { PeFile, DYNAMIC_BASE, NX_COMPAT };
