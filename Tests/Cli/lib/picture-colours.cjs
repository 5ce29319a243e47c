// Where each of the given colours appears in a PNG picture, for the viewer's tests:
//   node picture-colours.cjs PICTURE.png '#rrggbb'...
// prints "size WIDTH HEIGHT", "coloured N" (the pixels of any strong colour), then one line per given colour:
//   "#rrggbb COUNT CENTRE_X CENTRE_Y LEFT RIGHT TOP BOTTOM"
// where LEFT..BOTTOM leave out the outer 5% of the colour's pixels on each side (the legend's swatches, a stray
// edge pixel). A pixel counts for a colour when it has that colour's hue: the page lights a face darker or
// lighter, never in another hue.
'use strict';
const fs = require('fs');
const path = require('path');
const { PNG } = require(path.join(__dirname, '../../../Tools/Web/node_modules/pngjs'));

const MinSaturation = 0.3;
const MinValue = 0.2;
const HueTolerance = 8;

function hsv(r, g, b) {
	const max = Math.max(r, g, b);
	const min = Math.min(r, g, b);
	const delta = max - min;
	let hue = 0;
	if (delta > 0) {
		if (max === r) hue = ((g - b) / delta) % 6;
		else if (max === g) hue = (b - r) / delta + 2;
		else hue = (r - g) / delta + 4;
	}
	return { hue: (hue * 60 + 360) % 360, saturation: max === 0 ? 0 : delta / max, value: max / 255 };
}

function hueDistance(a, b) {
	const d = Math.abs(a - b) % 360;
	return Math.min(d, 360 - d);
}

function percentile(sorted, share) {
	return sorted[Math.min(sorted.length - 1, Math.floor(share * sorted.length))];
}

const [picturePath, ...colours] = process.argv.slice(2);
const picture = PNG.sync.read(fs.readFileSync(picturePath));
const targets = colours.map((colour) => {
	const value = parseInt(colour.slice(1), 16);
	return { colour, hue: hsv(value >> 16, (value >> 8) & 255, value & 255).hue, xs: [], ys: [] };
});
let coloured = 0;
for (let y = 0; y < picture.height; ++y) {
	for (let x = 0; x < picture.width; ++x) {
		const at = (y * picture.width + x) * 4;
		const pixel = hsv(picture.data[at], picture.data[at + 1], picture.data[at + 2]);
		if (pixel.saturation < MinSaturation || pixel.value < MinValue) continue;
		++coloured;
		for (const target of targets) {
			if (hueDistance(pixel.hue, target.hue) <= HueTolerance) {
				target.xs.push(x);
				target.ys.push(y);
			}
		}
	}
}
console.log(`size ${picture.width} ${picture.height}`);
console.log(`coloured ${coloured}`);
for (const { colour, xs, ys } of targets) {
	if (xs.length === 0) {
		console.log(`${colour} 0 -1 -1 -1 -1 -1 -1`);
		continue;
	}
	const mean = (values) => Math.round(values.reduce((sum, value) => sum + value, 0) / values.length);
	const sortedX = [...xs].sort((a, b) => a - b);
	const sortedY = [...ys].sort((a, b) => a - b);
	console.log([colour, xs.length, mean(xs), mean(ys), percentile(sortedX, 0.05), percentile(sortedX, 0.95), percentile(sortedY, 0.05),
		percentile(sortedY, 0.95)].join(' '));
}
