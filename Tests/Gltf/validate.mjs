// Runs the Khronos glTF validator on each file named on the command line and prints what it found, one line per
// issue. Exits 1 when a file has an error or cannot be read at all; warnings and notes are printed, not fatal.
//   node validate.mjs FILE.glb|FILE.gltf...
import { readFile } from 'node:fs/promises';
import { createRequire } from 'node:module';
import { dirname, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const require = createRequire(import.meta.url);
const here = dirname(fileURLToPath(import.meta.url));
const validator = require(resolve(here, '../../Tools/Web/node_modules/gltf-validator'));
const severities = ['error', 'warning', 'info', 'hint'];

let failed = false;
for (const file of process.argv.slice(2)) {
	try {
		const bytes = new Uint8Array(await readFile(file));
		const report = await validator.validateBytes(bytes, {
			uri: file,
			maxIssues: 0,
			writeTimestamp: false,
			externalResourceFunction: (uri) => readFile(resolve(dirname(file), decodeURIComponent(uri))).then((data) => new Uint8Array(data)),
		});
		const { numErrors, numWarnings, numInfos, numHints, messages } = report.issues;
		console.log(`${file}: ${numErrors} errors, ${numWarnings} warnings, ${numInfos} infos, ${numHints} hints`);
		for (const message of messages) {
			console.log(`  ${severities[message.severity]} ${message.code} ${message.pointer ?? ''}: ${message.message}`);
		}
		failed ||= numErrors > 0;
	} catch (error) {
		console.log(`${file}: cannot be validated: ${error}`);
		failed = true;
	}
}
process.exit(failed ? 1 : 0);
