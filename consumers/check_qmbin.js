// The binary result, read by its description, against `qumetra dump`.
'use strict';

const {requireSameLists} = require('./lib/compare');
const {load, read} = require('./lib/description');

/** What the tool tells of a record; `text` gives the bytes of a text by its number. */
const TOLD = {
  SYSTEM: (r, text) => ({
    firstTimestamp: r.firstTimestamp,
    lastTimestamp: r.lastTimestamp,
    durationSeconds: r.durationSeconds,
    highFrequencyMHz: r.highFrequencyMhz,
    lowFrequencyMHz: r.lowFrequencyMhz,
    cpuFrequencyMHz: r.cpuFrequencyMhz,
    busFrequencyMHz: r.busFrequencyMhz,
    platformId: r.platformId,
    platformName: text(r.platformName),
    cpuCodeName: text(r.cpuCodeName),
    nativeModelName: text(r.nativeModelName),
    controllerHubs: text(r.controllerHubs),
    hostName: text(r.hostName),
    packages: r.numPackages,
    modules: r.numModules,
    cores: r.numCores,
    threads: r.numThreads,
    osType: text(r.osType),
    osName: text(r.osName),
  }),
  DESCRIPTOR: (r, text) => ({index: r.index, name: text(r.name), attribute: text(r.attribute)}),
  METRIC: (r, text) => ({
    id: r.metricId,
    name: text(r.name),
    group: text(r.group),
    type: text(r.typeName),
    ...(r.hasQuantity !== 0 && {quantity: text(r.quantity), units: text(r.units)}),
    columns: r.columns.map(({entity, descriptor}) => ({
      ...(entity !== 0 && {entity: text(entity)}),
      ...(descriptor !== 0 && {descriptor}),
    })),
    metadata: r.metadata.map(text),
  }),
  SAMPLE: (r, text) => ({
    timestamp: r.timestamp,
    metricId: r.metricId,
    name: text(r.name),
    ...(r.descriptor !== 0 && {descriptor: r.descriptor}),
    durationMicroseconds: r.durationMicroseconds,
    value: r.value,
  }),
};

/** Records in the shape of the dump, which has no texts of their own. */
function resolved(records, Qmbin) {
  const texts = new Map();
  const result = [];
  for (const {record: {type, payload}} of records) {
    if (type === Qmbin.RecordType.TEXT) {
      texts.set(payload.index, payload.bytes);
      continue;
    }
    const kind = Qmbin.RecordType[type];
    result.push({[kind.toLowerCase()]: TOLD[kind](payload, (number) => texts.get(number))});
  }
  return result;
}

/** The dump with its reals as the 32 bits that they are in the file; it tells their shortest digits. */
function narrowed(line) {
  const reals = /^(durationSeconds|durationMicroseconds|value|.*MHz)$/;
  const [[kind, members]] = Object.entries(line);
  return {[kind]: Object.fromEntries(Object.entries(members).map(
    ([name, value]) => [name, reals.test(name) ? Math.fround(value) : value]))};
}

async function check({formats, generated, base, dump}) {
  const Qmbin = await load(`${formats}/qmbin.ksy`, generated);
  const records = resolved(read(Qmbin, `${base}.qmbin`), Qmbin);
  requireSameLists('record', records, dump(`${base}.qmbin`).map(narrowed));
  const samples = records.filter((record) => record.sample !== undefined).length;
  if (samples === 0) {
    throw new Error('there are no samples');
  }
  return `${records.length} records, ${samples} of them samples`;
}

module.exports = {check};
