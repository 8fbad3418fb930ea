// A label map as a layer to lay over the picture, and how its cells lie over the frame.

export const kCellPixels = 4;      // pixels of the network's input below a cell, in each direction
const kLayerColumns = 512;  // enough for thin outlines on the large view
const kFill = 130, kEdge = 255;

// The part of the picture that the map's cells span, in pictures: more than 1 where cells reach past its end.
export function mapExtent({netSize, segFactor, shrunkWidth, shrunkHeight}) {
  return [
    netSize * kCellPixels / Math.max(shrunkWidth, 1), segFactor * kCellPixels / Math.max(shrunkHeight, 1)
  ];
}

// The part of the picture, from its top, that is analysed at all: on some shapes the map has too few rows.
export const analysedShare = geometry => Math.min(mapExtent(geometry)[1], 1);

export function colourBytes(colour) {
  const match = /^#([0-9a-f]{2})([0-9a-f]{2})([0-9a-f]{2})$/i.exec(colour ?? '');
  return match ? match.slice(1).map(part => parseInt(part, 16)) : null;
}

// The front camera's analysis interpolates between cells and so does the drawing; the back camera's takes
// each cell as it is.
export function labelLayer(map, geometry, colours, front) {
  const grown = grow(map, geometry, front ? interpolated : repeated);
  return painted(grown, colours.map(colourBytes));
}

// Cells of 0 or 1 as one colour.
export function cellLayer(cells, geometry, colour) {
  return painted(grow(cells, geometry, repeated), [null, colourBytes(colour)]);
}

function grow(map, {netSize, segFactor}, fill) {
  const times = Math.max(Math.floor(kLayerColumns / netSize), 1);
  const width = netSize * times, height = segFactor * times;
  const labels = new Uint8Array(width * height);
  fill(map, netSize, segFactor, times, labels);
  return {labels, width, height};
}

function repeated(map, columns, rows, times, out) {
  const width = columns * times;
  for (let row = 0; row < rows; ++row) {
    const first = row * times * width;
    for (let column = 0; column < columns; ++column)
      out.fill(map[row * columns + column], first + column * times, first + (column + 1) * times);
    for (let y = 1; y < times; ++y) out.copyWithin(first + y * width, first, first + width);
  }
}

// Every pixel gets the label with the largest bilinear weight. A cell's own value lies at its upper left
// pixel, as in the library's enlargement.
function interpolated(map, columns, rows, times, out) {
  const width = columns * times, weights = new Int32Array(8);
  repeated(map, columns, rows, times, out);
  for (let row = 0; row < rows; ++row) {
    const top = row * columns, below = Math.min(row + 1, rows - 1) * columns;
    for (let left = 0; left < columns; ++left) {
      const right = Math.min(left + 1, columns - 1);
      const corners = [map[top + left], map[top + right], map[below + left], map[below + right]];
      if (corners.every(label => label === corners[0])) continue;
      for (let y = 0; y < times; ++y)
        for (let x = 0; x < times; ++x)
          out[(row * times + y) * width + left * times + x] = heaviest(corners, x, y, times, weights);
    }
  }
}

function heaviest([a, b, c, d], x, y, times, weights) {
  weights.fill(0);
  weights[a] += (times - x) * (times - y);
  weights[b] += x * (times - y);
  weights[c] += (times - x) * y;
  weights[d] += x * y;
  let best = a;
  if (weights[b] > weights[best]) best = b;
  if (weights[c] > weights[best]) best = c;
  return weights[d] > weights[best] ? d : best;
}

function painted({labels, width, height}, colours) {
  const canvas = document.createElement('canvas');
  canvas.width = Math.max(width, 1);
  canvas.height = Math.max(height, 1);
  if (labels.length === 0) return canvas;
  const image = new ImageData(width, height);
  for (let i = 0; i < labels.length; ++i) {
    const colour = colours[labels[i]];
    if (!colour) continue;
    const [red, green, blue] = colour;
    image.data[4 * i] = red;
    image.data[4 * i + 1] = green;
    image.data[4 * i + 2] = blue;
    image.data[4 * i + 3] = onEdge(labels, i, width) ? kEdge : kFill;
  }
  canvas.getContext('2d').putImageData(image, 0, 0);
  return canvas;
}

function onEdge(labels, i, width) {
  const own = labels[i], x = i % width;
  return (x > 0 && labels[i - 1] !== own) || (x < width - 1 && labels[i + 1] !== own) ||
      (i >= width && labels[i - width] !== own) || (i + width < labels.length && labels[i + width] !== own);
}
