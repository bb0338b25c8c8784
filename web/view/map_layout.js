// Where the areas of the map lie: pure functions on the parts of a tree (map_tree.js).

// Divides `box` ({ x, y, width, height }) into one box for each weight, in their order; the areas
// are in the ratio of the weights, which are above 0 and descend. After Bruls, Huizing, van Wijk:
// Squarified Treemaps, 2000.
export function squarify(box, weights) {
  const boxes = [];
  const scale = box.width * box.height / weights.reduce((sum, weight) => sum + weight, 0);
  let rest = box;
  for (let begin = 0, end = 0; begin < weights.length; begin = end) {
    const side = Math.min(rest.width, rest.height);
    let sum = weights[begin] * scale;
    for (end = begin + 1; end < weights.length; ++end) {
      const more = sum + weights[end] * scale;
      if (worstRatio(weights[begin] * scale, weights[end] * scale, more, side) >
          worstRatio(weights[begin] * scale, weights[end - 1] * scale, sum, side)) break;
      sum = more;
    }
    rest = fillRow(rest, weights.slice(begin, end), sum, boxes);
  }
  return boxes;
}

// The side ratio of the least square of the boxes in one row along `side`: it is the largest or the
// smallest one.
function worstRatio(largest, smallest, sum, side) {
  return Math.max(side * side * largest / (sum * sum), sum * sum / (side * side * smallest));
}

// Puts the row at the shorter side of the box, and gives what is left of this.
function fillRow(box, weights, area, boxes) {
  const whole = weights.reduce((sum, weight) => sum + weight, 0);
  const { x, y, width, height } = box;
  const isColumn = width >= height;
  const thick = isColumn ? area / height : area / width;
  let at = 0;
  for (const weight of weights) {
    const part = weight / whole;
    boxes.push(isColumn ? { x, y: y + at * height, width: thick, height: part * height }
                        : { x: x + at * width, y, width: part * width, height: thick });
    at += part;
  }
  return isColumn ? { x: x + thick, y, width: width - thick, height }
                  : { x, y: y + thick, width, height: height - thick };
}

export const HEADER_HEIGHT = 18;
const INSET = 3;
const LEAST_AREA = 500;  // pixels, for each part of an open folder

// Areas within areas, each before its parts: [{ part, box, isOpen, hasHeader }]. The root is open
// and no area itself. Of the others the largest are opened first, as long as there is room and no
// more than `most` areas are drawn. What would be too small to be seen is drawn larger than
// `weightOf(part)` says.
export function layoutAreas(root, weightOf, box, most) {
  const top = { part: root, box, isOpen: false, hasHeader: false, below: [] };
  const waiting = [top];
  let count = 1;
  while (waiting.length > 0) {
    const area = takeLargest(waiting);
    const inner = area === top ? box : innerBox(area);
    const room = inner.width * inner.height / area.part.parts.length;
    if (area !== top && (count + area.part.parts.length > most || room < LEAST_AREA ||
        Math.min(inner.width, inner.height) < 24)) continue;
    open(area, inner, weightOf);
    count += area.below.length;
    waiting.push(...area.below.filter(({ part }) => part.parts.length > 0));
  }
  return flattened(top.below);
}

function takeLargest(areas) {
  let best = 0;
  areas.forEach(({ box }, i) => {
    if (box.width * box.height > areas[best].box.width * areas[best].box.height) best = i;
  });
  return areas.splice(best, 1)[0];
}

function innerBox({ box }) {
  const { x, y, width, height } = box;
  const top = hasHeader(box) ? HEADER_HEIGHT : INSET;
  return { x: x + INSET, y: y + top, width: Math.max(0, width - 2 * INSET),
    height: Math.max(0, height - top - INSET) };
}

function hasHeader(box) { return box.width > 48 && box.height > 2.5 * HEADER_HEIGHT; }

function open(area, inner, weightOf) {
  const { parts } = area.part;
  const weights = new Map(parts.map((part) => [part, weightOf(part)]));
  const sum = [...weights.values()].reduce((all, weight) => all + weight, 0);
  const share = Math.min(0.5 / parts.length, LEAST_AREA / (inner.width * inner.height));
  const least = sum > 0 ? sum * share : 1;
  for (const [part, weight] of weights) weights.set(part, Math.max(weight, least));
  const order = [...parts].sort((a, b) => weights.get(b) - weights.get(a));
  const boxes = squarify(inner, order.map((part) => weights.get(part)));
  area.isOpen = true;
  area.hasHeader = hasHeader(area.box);
  area.below = order.map((part, i) => ({ part, box: boxes[i], isOpen: false, hasHeader: false, below: [] }));
}

function flattened(areas) {
  return areas.flatMap((area) => [area, ...flattened(area.below)]);
}

const MOST_RINGS = 8;
const LEAST_ARC = 10;  // pixels, for each part of an open folder

// The files of `root` in rings around `centre` ({ x, y, radius }), by how far they are from the home
// page: { rings: [{ depth, isLast, count, inner, outer }], sectors: [{ part, count, files, from, to,
// inner, outer }] }. The depth is -1 for files that are not reached; `isLast` when the ring has
// those that are further away too. `files` are positions in the tree's `files`, which `depths` is
// for. Angles are clockwise from the top, where a gap is left for the numbers of the rings. Folders
// are opened as above.
export function layoutRings(root, depths, centre, most) {
  const rings = ringsOf(root, depths);
  placeRings(rings, centre.radius);
  const sectors = [];
  let count = 0;
  let waiting = rings.map((ring) => ({ part: root, ring, begin: 0, end: ring.files.length }));
  while (waiting.length > 0) {
    waiting.sort((a, b) => (b.part === root) - (a.part === root) || arcLength(b) - arcLength(a));
    const [sector, ...others] = waiting;
    const below = partsInRing(sector);
    const isRoom = count + waiting.length + below.length <= most &&
      (sector.part === root || arcLength(sector) / below.length >= LEAST_ARC);
    if (below.length > 0 && isRoom) {
      waiting = [...others, ...below];
    } else {
      sectors.push(placedSector(sector));
      ++count;
      waiting = others;
    }
  }
  const order = (a, b) => a.inner - b.inner || a.from - b.from;
  return { rings, sectors: sectors.sort(order) };
}

const GAP = 0.3;  // radians on either side of the top

function ringsOf(root, depths) {
  const files = new Map();
  for (let i = root.begin; i < root.end; ++i) {
    const ring = depths[i] < 0 ? Infinity : Math.min(depths[i], MOST_RINGS - 1);
    if (!files.has(ring)) files.set(ring, []);
    files.get(ring).push(i);
  }
  return [...files].sort(([a], [b]) => a - b).map(([ring, inRing]) => ({ files: inRing,
    count: inRing.length, depth: ring === Infinity ? -1 : ring, isLast: ring === MOST_RINGS - 1 }));
}

// The home page is the disc in the middle. Rings with many files are broader.
function placeRings(rings, radius) {
  const hole = Math.max(22, radius * 0.12);
  const breadth = ({ depth, count }) => (depth === 0 ? 0 : 1.5 + Math.log10(count));
  const unit = (radius - hole) / rings.reduce((sum, ring) => sum + breadth(ring), 0);
  let at = hole;
  for (const ring of rings) {
    ring.inner = ring.depth === 0 ? 0 : at;
    if (ring.depth !== 0) at += breadth(ring) * unit;
    ring.outer = at;
  }
}

function anglesOf({ ring, begin, end }) {
  if (ring.inner === 0) return { from: 0, to: 2 * Math.PI };
  const whole = 2 * (Math.PI - GAP);
  return { from: GAP + whole * begin / ring.count, to: GAP + whole * end / ring.count };
}

function arcLength(sector) {
  const { from, to } = anglesOf(sector);
  return (to - from) * (sector.ring.inner + sector.ring.outer) / 2;
}

// A folder with one file in the ring is that file.
function partsInRing({ part, ring, begin, end }) {
  const below = [];
  let at = begin;
  for (const inner of part.parts) {
    const first = at;
    while (at < end && ring.files[at] < inner.end) ++at;
    if (at > first) below.push({ part: inner, ring, begin: first, end: at });
  }
  return below.length === 1 && below[0].part.file < 0 ? partsInRing(below[0]) : below;
}

function placedSector(sector) {
  const { part, ring, begin, end } = sector;
  return { part, count: end - begin, files: ring.files.slice(begin, end), ...anglesOf(sector),
    inner: ring.inner, outer: ring.outer };
}

// All links between areas, the heaviest first: [{ from, to, weight }]. `areaOf` has the number of
// the area of each file of the site, from 0 to `count`, or -1.
export function linksBetween({ starts, targets, times }, areaOf, count) {
  const weights = new Float64Array(count * count);
  for (let file = 0; file < areaOf.length; ++file) {
    const from = areaOf[file];
    if (from < 0) continue;
    for (let at = starts[file]; at < starts[file + 1] && targets[at] < areaOf.length; ++at) {
      const to = areaOf[targets[at]];
      if (to >= 0) weights[from * count + to] += times[at];
    }
  }
  const links = [];
  weights.forEach((weight, i) => {
    const [from, to] = [Math.floor(i / count), i % count];
    if (weight > 0 && from !== to) links.push({ from, to, weight });
  });
  return links.sort((a, b) => b.weight - a.weight);
}

// The last links of the shortest ways to files, as above; `before` has the file before each one.
export function waysBetween(before, areaOf, count) {
  const starts = Uint32Array.from({ length: areaOf.length + 1 }, (_, i) => i);
  const targets = Uint32Array.from(areaOf, (_, file) => (before[file] < 0 ? areaOf.length : before[file]));
  const times = new Uint8Array(areaOf.length).fill(1);
  return linksBetween({ starts, targets, times }, areaOf, count)
    .map(({ from, to, weight }) => ({ from: to, to: from, weight }));
}
