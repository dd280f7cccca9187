// The trace-event result, as text and in the model of a trace viewer, against the recording.
'use strict';

const fs = require('fs');
const exactJson = require('./lib/exact_json');
const {requireSameLists} = require('./lib/compare');
const {expectedEvents} = require('./lib/expected_trace');
const {readRecording} = require('./lib/recording');
const {loadTrace} = require('./lib/trace_viewer');

/** Events as lines, in an order of their own: the order of metrics and series is open. */
function inOrder(events) {
  return events.map(({category, time, values}) =>
    JSON.stringify([category, `${time}`, [...values].sort()])).sort();
}

function eventOfText({cat, ts, args}) {
  return {category: cat, time: BigInt(ts), values: new Map(Object.entries(args))};
}

function checkText(text, expected) {
  const events = exactJson.parse(text).traceEvents;
  const [{pid, tid}] = events;
  const heads = events.map((event) => ({...event, cat: null, ts: null, args: null}));
  const head = {name: '', cat: null, ph: 'C', ts: null, pid, tid, args: null};
  requireSameLists('event', heads, heads.map(() => head));
  requireSameLists('event', inOrder(events.map(eventOfText)), inOrder(expected));
}

function groupBy(events, keyOf) {
  const groups = new Map();
  for (const event of events) {
    const key = keyOf(event);
    if (!groups.has(key)) {
      groups.set(key, []);
    }
    groups.get(key).push(event);
  }
  return groups;
}

/** Times in milliseconds and values of one member, where an event without it counts 0. */
function samplesOf(events, name) {
  return events.map(({time, values}) => [Number(time) / 1000, values.get(name) ?? 0]);
}

const bySample = ([time1, value1], [time2, value2]) => time1 - time2 || value1 - value2;

/**
 * A counter has the members of the event that the viewer met first, and a sample for every event of
 * its category.
 */
function checkCounter(counter, expected) {
  const names = counter.series.map((series) => series.name).sort();
  const isOfAnEvent = expected.some(
    ({values}) => JSON.stringify([...values.keys()].sort()) === JSON.stringify(names));
  if (!isOfAnEvent) {
    throw new Error(`no event of ${counter.id} has the members ${names}`);
  }
  for (const series of counter.series) {
    const samples = series.samples.map(({timestamp, value}) => [timestamp, value]);
    requireSameLists(`${counter.id}${series.name}: sample`, samples.sort(bySample),
                     samplesOf(expected, series.name).sort(bySample));
  }
}

/** Returns how many counters the viewer shows. */
function checkModel(model, expected) {
  const [process, ...others] = model.getAllProcesses();
  if (model.importWarnings.length > 0 || others.length > 0) {
    throw new Error(`${JSON.stringify(model.importWarnings)}, ${others.length} processes too many`);
  }
  const counters = Object.values(process.counters);
  const categories = groupBy(expected, ({category}) => `${category}.`);
  requireSameLists('counter', counters.map(({id}) => id).sort(), [...categories.keys()].sort());
  for (const counter of counters) {
    checkCounter(counter, categories.get(counter.id));
  }
  return counters.length;
}

async function check({base}) {
  const text = fs.readFileSync(`${base}.json`, 'utf8');
  const expected = expectedEvents(readRecording(`${base}.qmrec`));
  if (expected.length === 0) {
    throw new Error('there are no samples');
  }
  checkText(text, expected);
  const counters = checkModel(loadTrace(text), expected);
  return `${expected.length} events, ${counters} counters in the viewer`;
}

module.exports = {check};
