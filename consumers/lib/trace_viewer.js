// The model of the trace viewer, without a browser.
'use strict';

const path = require('path');

const root = path.dirname(require.resolve('traceviewer/package.json'));
const thirdParty = path.join(root, 'tracing', 'third_party');

// The package asks a script of another language for the places of its sources; here they are.
const bootstrap = require(path.join(root, 'catapult_build', 'node_bootstrap.js'));
bootstrap.getSourcePathsForProject = () => [
  path.join(root, 'tracing'),
  thirdParty,
  path.join(thirdParty, 'jszip'),
  path.join(thirdParty, 'gl-matrix', 'dist'),
  path.join(thirdParty, 'd3'),
];
const tr = require('traceviewer');

/** Loads the text of a trace with its times as they stand. */
function loadTrace(text) {
  const model = new tr.Model();
  const options = new tr.importer.ImportOptions();
  options.shiftWorldToZero = false;
  options.pruneEmptyContainers = false;
  new tr.importer.Import(model, options).importTraces([text]);
  return model;
}

module.exports = {loadTrace};
