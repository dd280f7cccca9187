// Reads results by foreign code and compares with what the tool and the recording say.
//
// usage: node main.js TOOL FORMATS BASE…
//
// BASE.pwr, BASE.qmbin, BASE.json are the results of BASE.qmrec. What is generated from the descriptions
// in FORMATS goes to the current directory.
'use strict';

const {execFileSync} = require('child_process');
const path = require('path');
const exactJson = require('./lib/exact_json');

const CHECKS = {
  'import stream': './check_pwr',
  'binary result': './check_qmbin',
  'trace': './check_trace',
};

async function failuresOf(base, shared) {
  let failures = 0;
  for (const [name, module] of Object.entries(CHECKS)) {
    try {
      console.log(`${path.basename(base)}, ${name}: ${await require(module).check({...shared, base})}`);
    } catch (error) {
      ++failures;
      console.error(`${path.basename(base)}, ${name}: ${error.stack ?? error}`);
    }
  }
  return failures;
}

async function main([tool, formats, ...bases]) {
  const options = {encoding: 'utf8', maxBuffer: 2 ** 30};
  const dump = (file) => exactJson.parseLines(execFileSync(tool, ['dump', file, '--json'], options));
  let failures = 0;
  for (const base of bases) {
    failures += await failuresOf(base, {formats, generated: process.cwd(), dump});
  }
  return failures === 0 ? 0 : 1;
}

main(process.argv.slice(2)).then((status) => { process.exitCode = status; });
