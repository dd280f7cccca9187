// The import stream, read by its description, against `qumetra dump`.
'use strict';

const {requireSameLists} = require('./lib/compare');
const {fieldsOf, load, read} = require('./lib/description');

// These follow from the rest, and the tool does not tell them.
const NOT_TOLD = /^((len|num)[A-Z].*|firstWord|endOfText)$/;
// Fields that hold the rest of a record.
const INNER = ['payload', 'content'];

const SAMPLES = ['sample', 'kernel_wakelock', 'user_wakelock'];

const camelCase = (name) => name.replace(/_(\w)/g, (match, letter) => letter.toUpperCase());
const snakeCase = (name) => name.replace(/\B[A-Z]/g, (letter) => `_${letter}`).toLowerCase();

/** The same with names as the generated code spells them. */
function withCamelCase(value) {
  if (Array.isArray(value)) {
    return value.map(withCamelCase);
  }
  if (value === null || typeof value !== 'object') {
    return value;
  }
  return Object.fromEntries(
    Object.entries(value).map(([name, item]) => [camelCase(name), withCamelCase(item)]));
}

function bitsOf(real) {
  const bytes = Buffer.alloc(8);
  bytes.writeDoubleLE(real);
  return bytes.readBigUInt64LE();
}

function attribute({id, value}, names) {
  const told = {id, name: (names[id] ?? 'unknown').toLowerCase(), value};
  return typeof value === 'number' ? {...told, bits: bitsOf(value)} : told;
}

/** A record as the tool tells it: the fields of frame, payload and content side by side. */
function flat({offset, record}, Pwr) {
  const result = {};
  let part = record.body;
  let kind;
  while (part !== undefined) {
    kind = snakeCase(part.constructor.name);
    Object.assign(result, fieldsOf(part));
    part = INNER.map((name) => part[name]).find((inner) => inner !== undefined);
  }
  for (const name of Object.keys(result)) {
    if (NOT_TOLD.test(name) || INNER.includes(name)) {
      delete result[name];
    }
  }
  if (result.threads !== undefined) {
    result.threads = result.threads.map(fieldsOf);
  }
  if (result.attributes !== undefined) {
    result.attributes = result.attributes.map((item) => attribute(item, Pwr.AttributeId));
  }
  if (result.constant14 !== undefined) {
    result.constant14 = Buffer.from(result.constant14).toString('hex');
  }
  return {offset, type: null, kind, ...result};
}

async function check({formats, generated, base, dump}) {
  const Pwr = await load(`${formats}/pwr.ksy`, generated);
  const records = read(Pwr, `${base}.pwr`).map((record) => flat(record, Pwr));
  requireSameLists('record', records, dump(`${base}.pwr`).map(withCamelCase));
  const samples = records.filter(({kind}) => SAMPLES.includes(kind)).length;
  if (samples === 0) {
    throw new Error('there are no samples');
  }
  return `${records.length} records, ${samples} of them samples`;
}

module.exports = {check};
