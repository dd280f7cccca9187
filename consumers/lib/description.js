// Readers of binary formats, made from their descriptions in Kaitai Struct's language.
'use strict';

const fs = require('fs');
const path = require('path');
const {execFileSync} = require('child_process');
const compiler = require('kaitai-struct-compiler');
const KaitaiStream = require('kaitai-struct/KaitaiStream');

const YAML_TO_JSON = 'import json, sys, yaml; json.dump(yaml.safe_load(sys.stdin), sys.stdout)';

// The runtime makes doubles of 64-bit numbers, which would hide wrong low digits.
KaitaiStream.prototype.readU8le = function () {
  return Buffer.from(this.readBytes(8)).readBigUInt64LE();
};
KaitaiStream.prototype.readS8le = function () {
  return Buffer.from(this.readBytes(8)).readBigInt64LE();
};

/**
 * Compiles a .ksy file to JavaScript in `directory` and loads it. The class that comes of it notes
 * where in the file each of its fields stands.
 */
async function load(ksy, directory) {
  const yaml = execFileSync('python3', ['-c', YAML_TO_JSON], {input: fs.readFileSync(ksy)});
  const files = await compiler.compile('javascript', JSON.parse(yaml), null, true);
  const [name] = Object.keys(files);
  const file = path.join(directory, name);
  fs.writeFileSync(file, files[name]);
  return Object.values(require(file))[0];
}

/** Reads a file. Each record has its offset beside what the description says of it. */
function read(Format, file) {
  const result = new Format(new KaitaiStream(fs.readFileSync(file)));
  result._read();
  return result.records.map((record, i) => ({offset: result._debug.records.arr[i].start, record}));
}

/** The fields of an object that was read, by name. */
function fieldsOf(object) {
  return Object.fromEntries(Object.entries(object).filter(([name]) => !name.startsWith('_')));
}

module.exports = {fieldsOf, load, read};
