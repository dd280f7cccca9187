// The events that a trace must have, computed from the recording alone.
'use strict';

const SAMPLED_DELTA = 0;
const SAMPLED_RESIDENCY = 1;
const SAMPLED_VALUE = 2;
const TRACED_VALUE_TRANSITION = 3;
const TRACED_EVENT = 4;
/** The code of quantities that are rates. */
const RATE = 9;

// Times are computed in single precision. Ticks since the start fit a double, so that they are
// rounded once.
const single = (ticks) => Math.fround(Number(ticks));
const microseconds = (ticks, tickScale) => BigInt(Math.trunc(Math.fround(single(ticks) * tickScale)));
const unsigned = (number) => BigInt.asUintN(64, number);

/** The text of a value, as which a state may be told; null for what has none. */
function textOf({tag, held}) {
  switch (tag) {
    case 'int':
    case 'uint':
    case 'string':
      return `${held}`;
    case 'intRange':
    case 'uintRange':
      return `${held[0]} - ${held[1]}`;
    case 'real':
    case 'realRange':
      throw new Error('a state that is told by a real number is not known to this check');
    default:
      return null;
  }
}

/** The text of the descriptor's first attribute, else its name. */
function stateOfDescriptor(descriptor) {
  const [first] = descriptor.attributes;
  const text = first !== undefined && first[0] !== null ? textOf(first[1]) : null;
  return text ?? descriptor.name;
}

function stateOf(element, isTraced) {
  const {descriptor, value} = element;
  if (!isTraced) {
    return descriptor === null ? '' : stateOfDescriptor(descriptor);
  }
  if (value.tag === 'handle') {
    return value.held?.kind === 'descriptor' ? stateOfDescriptor(value.held) : value.held?.name ?? '';
  }
  return textOf(value) ?? '';
}

/** The value as numbers: two for a range. */
function numbersOf({tag, held}) {
  switch (tag) {
    case 'int':
    case 'uint':
    case 'real':
      return [Number(held)];
    case 'intRange':
    case 'uintRange':
    case 'realRange':
      return held.map(Number);
    default:
      return [0];
  }
}

/** The state of an element, and its numbers. */
function reading(type, element, duration, tickScale) {
  const isTraced = type === TRACED_VALUE_TRANSITION || type === TRACED_EVENT;
  const state = stateOf(element, isTraced);
  const {tag, held} = element.value;
  if (isTraced) {
    return {state, numbers: [type === TRACED_EVENT ? 1 : Number(duration)]};
  }
  if (type === SAMPLED_VALUE && tag === 'string') {
    return {state: held, numbers: [Number(duration)]};
  }
  if (type === SAMPLED_VALUE && tag === 'handle' && held?.kind === 'descriptor') {
    return {state: held.name, numbers: [Number(duration)]};
  }
  const numbers = numbersOf(element.value);
  if (type === SAMPLED_RESIDENCY) {
    numbers[0] *= tickScale;
  }
  return {state, numbers};
}

/** Values of these metrics are moments, and count as one microsecond long. */
function isMoment({type, quantity}) {
  return type === SAMPLED_VALUE && quantity !== null ? quantity.code === RATE
    : type === SAMPLED_VALUE || type === TRACED_EVENT;
}

/** What comes of one sample: elements of one series in a row are one event. */
function eventsOf({metric, timestamp, elements}, start, tickScale) {
  const events = [];
  const end = microseconds(unsigned(timestamp - start), tickScale);
  let lastSeries = null;
  for (const element of elements) {
    const duration = isMoment(metric) ? 1n : microseconds(element.duration, tickScale);
    const {state, numbers} = reading(metric.type, element, duration, tickScale);
    const name = metric.type === SAMPLED_DELTA ? state : element.entity.name;
    const series = JSON.stringify([`${metric.metricId}`, `${element.entity.id}`, name]);
    const continues = series === lastSeries;
    if (!continues) {
      events.push({category: metric.name, time: unsigned(end - duration), values: new Map()});
    }
    // A range is two members of one key, of which readers keep the last; a later element of the
    // same event has its low end only.
    events.at(-1).values.set(state, continues ? numbers[0] : numbers.at(-1));
    lastSeries = series;
  }
  return events;
}

/** All events: category, time in microseconds as a BigInt, and the values by state. */
function expectedEvents({system, samples}) {
  const tickScale = Math.fround(1 / Math.fround(system.timestampFrequency));
  const start = BigInt(system.firstTimestamp ?? 0);
  return samples.flatMap((sample) => eventsOf(sample, start, tickScale));
}

module.exports = {expectedEvents};
