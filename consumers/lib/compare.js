// Compares what was read with what the tool tells.
'use strict';

/** The bytes of a text; lone surrogates U+DC80 to U+DCFF stand for bytes that are no UTF-8. */
function bytesOf(text) {
  return Buffer.concat(Array.from(text, (character) => {
    const code = character.codePointAt(0);
    const isByte = code >= 0xdc80 && code <= 0xdcff;
    return isByte ? Buffer.from([code - 0xdc00]) : Buffer.from(character, 'utf8');
  }));
}

const REALS_THAT_JSON_LACKS = {nan: NaN, inf: Infinity, '-inf': -Infinity};

function sameNumber(read, told) {
  if (typeof read === 'bigint') {
    return Number.isInteger(Number(told)) && read === BigInt(told);
  }
  return Object.is(read, typeof told === 'string' ? REALS_THAT_JSON_LACKS[told] : told);
}

/**
 * Where two values part, as a path and both values; null when they are equal. Texts that were read
 * may be bytes.
 */
function difference(read, told, path = '') {
  if (read instanceof Uint8Array && typeof told === 'string') {
    return bytesOf(told).equals(read) ? null : {path, read, told};
  }
  if (read !== null && told !== null && typeof read === 'object' && typeof told === 'object') {
    for (const name of new Set([...Object.keys(read), ...Object.keys(told)])) {
      const found = difference(read[name], told[name], `${path}/${name}`);
      if (found !== null) {
        return found;
      }
    }
    return null;
  }
  const areNumbers = ['bigint', 'number'].includes(typeof read) && (told ?? null) !== null;
  const isSame = areNumbers ? sameNumber(read, told) : read === told;
  return isSame ? null : {path, read, told};
}

/** Throws at the first pair that differs, or when one list is longer. */
function requireSameLists(what, read, told) {
  for (let i = 0; i < Math.max(read.length, told.length); ++i) {
    const found = difference(read[i] ?? null, told[i] ?? null);
    if (found !== null) {
      throw new Error(`${what} ${i}${found.path}: ${show(found.read)} was read, ` +
                      `${show(found.told)} is told`);
    }
  }
}

function show(value) {
  return JSON.stringify(value, (key, item) => {
    if (item instanceof Uint8Array) {
      return Buffer.from(item).toString();
    }
    return typeof item === 'bigint' ? `${item}` : item;
  });
}

module.exports = {requireSameLists};
