// Reads message recordings (docs/recordings.md) as far as the check of traces needs them.
'use strict';

const fs = require('fs');
const exactJson = require('./exact_json');

const DEFINITIONS = ['quantity', 'attribute', 'entity', 'descriptor', 'nameValuePair', 'process', 'thread',
  'handle'];

/**
 * The metadata of the system, and the samples in their order. References in samples are replaced by
 * the objects that they name, each with its `kind`, as these are when the sample comes.
 */
function readRecording(file) {
  const objects = new Map();
  const metrics = new Map();
  const recording = {system: null, samples: []};
  for (const line of exactJson.parseLines(fs.readFileSync(file, 'utf8'))) {
    const [[kind, members]] = Object.entries(line);
    if (DEFINITIONS.includes(kind)) {
      objects.set(members.ref, {kind, name: '', attributes: [], ...members});
    } else if (kind === 'metric') {
      metrics.set(members.ref, {name: '', type: 0, ...members});
    } else if (kind === 'attributes') {
      objects.set(members.of, {...objects.get(members.of), attributes: members.attributes});
    } else if (kind === 'system') {
      recording.system = members.metadata;
    } else if (kind === 'sample') {
      recording.samples.push(resolveSample(members, metrics, objects));
    }
  }
  return recording;
}

function resolveSample(sample, metrics, objects) {
  const metric = metrics.get(sample.metric);
  return {
    metric: {...metric, quantity: objects.get(metric.quantity) ?? null},
    timestamp: BigInt(sample.timestamp ?? 0),
    elements: (sample.elements ?? []).map((element) => ({
      entity: objects.get(element.entity),
      descriptor: resolveDescriptor(objects.get(element.descriptor), objects),
      value: resolveValue(element.value, objects),
      duration: BigInt(element.duration ?? 0),
    })),
  };
}

function resolveDescriptor(descriptor, objects) {
  if (descriptor?.kind !== 'descriptor') {
    return descriptor ?? null;
  }
  const attributes = descriptor.attributes.map(
    ([attribute, value]) => [objects.get(attribute) ?? null, resolveValue(value, objects)]);
  return {...descriptor, attributes};
}

/** A value as its tag and what it holds; a handle holds an object. */
function resolveValue(value, objects) {
  const [[tag, held]] = Object.entries(value ?? {none: null});
  return tag === 'handle'
    ? {tag, held: resolveDescriptor(objects.get(held), objects)}
    : {tag, held};
}

module.exports = {readRecording};
