// JSON whose integers keep all their digits.
'use strict';

const TEXTS_AND_NUMBERS = /"(?:[^"\\]|\\.)*"|-?\d+(?:\.\d+)?(?:[eE][-+]?\d+)?/g;
const MARK = '$integer';

/** Parses a document; an integer that a double cannot hold for sure becomes a BigInt. */
function parse(text) {
  const marked = text.replace(TEXTS_AND_NUMBERS, (token) => {
    const fits = !/^-?\d+$/.test(token) || Number.isSafeInteger(Number(token));
    return fits ? token : `{"${MARK}":"${token}"}`;
  });
  return JSON.parse(marked, (key, value) =>
    value !== null && typeof value === 'object' && MARK in value ? BigInt(value[MARK]) : value);
}

/** Parses a document per line. */
function parseLines(text) {
  return text.split('\n').filter((line) => line !== '').map(parse);
}

module.exports = {parse, parseLines};
