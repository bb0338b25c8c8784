// What the map draws: areas or sectors, marks on those with findings, names, and arcs for links.
//
// An item is one area or sector:
//   { part: of the tree, or null for everything elsewhere in the site, isOpen,
//     files: positions in the tree's `files`; none of an open folder,
//     shape: { tag, attributes }, edge: its outline as a path, bandOf(share): a strip along so much
//     of its edge, as a path; the middle of the strip where the item is centred, across: its lesser
//     width, at: { x, y } where arcs end, room: { x, y, width, height } for its name,
//     turn: how its name is turned, in degrees, isCentred: whether it stands in the middle }
import { plain, svgElement } from "./dom.js";
import { counted, numberText } from "./format.js";
import { HEADER_HEIGHT, layoutAreas, layoutRings } from "./map_layout.js";

const LINE_HEIGHT = 15;
const BAND = 6;
const STRIP = 26;
const LEAST_EDGED = 12;  // of less one would see nothing but the edge

// Items of `root`, as nested areas that show `what` ("size" or "links") in a box of that size.
export function areaItems(tree, root, what, { width, height }, most) {
  const isWhole = root === tree.root;
  const box = { x: 1, y: 1, width: width - 2, height: height - 2 - (isWhole ? 0 : STRIP) };
  const areas = layoutAreas(root, (part) => tree.sum(part, what), box, most);
  return [...areas.map(areaItem), ...isWhole ? [] : [elsewhereItem(width, height)]];
}

function areaItem({ part, box, isOpen, hasHeader }) {
  const { x, y, width, height } = box;
  const band = Math.min(BAND, height / 4);
  return { part, isOpen, files: isOpen ? [] : positionsOf(part), shape: { tag: "rect", attributes: rounded(box) },
    edge: rectPath({ x: x + 1, y: y + 1, width: width - 2, height: height - 2 }),
    bandOf: (share) => rectPath({ x: x + 1, y: y + height - band - 1, width: shown(share, width - 2), height: band }),
    at: { x: x + width / 2, y: y + (isOpen ? HEADER_HEIGHT / 2 : height / 2) },
    across: Math.min(width, height), room: isOpen && !hasHeader ? null : box, turn: 0 };
}

function elsewhereItem(width, height) {
  const box = { x: 1, y: height - STRIP + 4, width: width - 2, height: STRIP - 5 };
  return { ...areaItem({ part: null, box, isOpen: true, hasHeader: true }), isOpen: false };
}

// The same in rings around the home page; `depths` is for the tree's `files`. The rings are given
// too.
export function ringItems(tree, root, depths, { width, height }, most) {
  const strip = root === tree.root ? 0 : STRIP;
  const radius = Math.max(40, Math.min(width, height - strip) / 2 - 2);
  const centre = { x: width / 2, y: (height - strip) / 2, radius };
  const { rings, sectors } = layoutRings(root, depths, centre, most);
  const items = sectors.map((sector) => sectorItem(sector, centre));
  return { rings, centre, items: strip ? [...items, elsewhereItem(width, height)] : items };
}

function sectorItem(sector, centre) {
  const middle = (sector.from + sector.to) / 2;
  const radius = sector.inner === 0 ? 0 : (sector.inner + sector.outer) / 2;
  const at = pointAt(centre, middle, radius);
  const length = sector.inner === 0 ? 2 * sector.outer
                                    : 2 * radius * Math.sin(Math.min(Math.PI / 2, (sector.to - sector.from) / 2));
  const height = sector.inner === 0 ? LINE_HEIGHT + 2 : sector.outer - sector.inner - BAND;
  const middleOfName = pointAt(centre, middle, Math.max(0, radius - BAND / 2));
  // Names stand upright in the lower half too.
  const degrees = radius === 0 ? 0 : middle * 180 / Math.PI;
  const bandOf = (share) => arcPath(sector.from, sector.from +
    shown(share, (sector.to - sector.from) * sector.outer) / sector.outer, sector.outer - 1 - BAND / 2, centre);
  return { part: sector.part, isOpen: false, files: sector.files, at,
    shape: { tag: "path", attributes: { d: sectorPath(sector, centre) } },
    edge: sectorPath({ ...sector, outer: sector.outer - 1 }, centre), bandOf, across: Math.min(length, height),
    room: { x: middleOfName.x - length / 2, y: middleOfName.y - height / 2, width: length, height }, isCentred: true,
    turn: degrees > 90 && degrees < 270 ? degrees - 180 : degrees };
}

// A small share of something so long is still seen.
function shown(share, length) { return Math.min(length, Math.max(BAND, share * length)); }

function positionsOf({ begin, end }) { return Array.from({ length: end - begin }, (_, i) => begin + i); }

function rounded(box) {
  return Object.fromEntries(Object.entries(box).map(([name, value]) => [name, short(value)]));
}

// Tenths of a pixel are enough.
function short(value) { return Math.round(Math.max(0, value) * 10) / 10; }

function rectPath({ x, y, width, height }) {
  return `M${short(x)} ${short(y)}h${short(width)}v${short(height)}h${-short(width)}z`;
}

function pointAt(centre, angle, radius) {
  return { x: centre.x + radius * Math.sin(angle), y: centre.y - radius * Math.cos(angle) };
}

function arcPath(from, to, radius, centre) {
  const end = Math.min(to, from + 2 * Math.PI - 0.01);
  const [first, last] = [pointAt(centre, from, radius), pointAt(centre, end, radius)];
  return `M${short(first.x)} ${short(first.y)}A${short(radius)} ${short(radius)} 0 ${end - from > Math.PI ? 1 : 0} 1 ` +
    `${short(last.x)} ${short(last.y)}`;
}

function sectorPath({ from, to, inner, outer }, centre) {
  const point = (angle, radius) => {
    const { x, y } = pointAt(centre, angle, radius);
    return `${short(x)} ${short(y)}`;
  };
  const arc = (radius, isBack, angle) =>
    `A${short(radius)} ${short(radius)} 0 ${to - from > Math.PI ? 1 : 0} ${isBack ? 0 : 1} ${point(angle, radius)}`;
  if (to - from > 2 * Math.PI - 0.001) {
    const half = (radius) => `M${point(0, radius)}A${radius} ${radius} 0 1 1 ${point(Math.PI, radius)}` +
      `A${radius} ${radius} 0 1 1 ${point(0, radius)}z`;
    return half(outer) + (inner > 0 ? half(inner) : "");
  }
  return `M${point(from, inner)}L${point(from, outer)}${arc(outer, false, to)}` +
    `L${point(to, inner)}${arc(inner, true, from)}z`;
}

// "page", "folded", and so on: how an item looks.
export function lookOf(site, { part, isOpen }) {
  if (part === null) return "elsewhere";
  if (part.file >= 0) return site.kindOf(part.file);
  return isOpen ? "open" : "folded";
}

// What is wrong in an item: { severity: "error", "warning" or "", count: of findings in a file, of
// files with such findings in a folder }.
export function troubleIn(tree, { part, files }) {
  if (part === null) return { severity: "", count: 0 };
  const { site } = tree;
  if (part.file >= 0) {
    const isMissing = site.kindOf(part.file) === "missing";
    return { severity: isMissing ? "error" : site.severityIn(part.file), count: site.findingsIn(part.file).length };
  }
  for (const severity of ["error", "warning"]) {
    const sums = tree.sums[severity + "s"];
    const count = files.reduce((all, i) => all + sums[i + 1] - sums[i], 0);
    if (count > 0) return { severity, count };
  }
  return { severity: "", count: 0 };
}

// Shapes of findings are drawn as one, so that they do not add to what the browser has to keep.
export function markLayer(tree, items) {
  const paths = { error: { edge: "", band: "" }, warning: { edge: "", band: "" } };
  const badges = [];
  for (const item of items) {
    const { severity, count } = item.isOpen ? { severity: "" } : troubleIn(tree, item);
    const isMissing = lookOf(tree.site, item) === "missing";  // this is striped as a whole
    if (!severity || isMissing) continue;
    const isFile = item.part.file >= 0;
    if (isFile && item.across >= LEAST_EDGED) paths[severity].edge += item.edge;
    paths[severity].band += item.bandOf(isFile ? 1 : count / item.files.length);
    if (severity === "error" && count > 0 && !item.isCentred) badges.push(...badge(item.room, count));
  }
  const shapes = ["warning", "error"].flatMap((severity) => ["band", "edge"]
    .filter((what) => paths[severity][what])
    .map((what) => svgElement("path", { class: lookOfMark(what, severity, items), d: paths[severity][what] })));
  return svgElement("g", { class: "map-marks", "aria-hidden": "true" }, shapes, badges);
}

// Stripes stand across the strips of rings.
function lookOfMark(what, severity, [{ isCentred }]) {
  const look = what === "band" && isCentred ? "ticks" : what;
  return `map-${look} map-${look}-${severity}`;
}

function badge({ x, y, width, height }, count) {
  const text = "! " + numberText(count);
  const wide = textWidth(text, 11, 600) + 8;
  if (width < wide + 4 || height < 3 * LINE_HEIGHT) return [];
  const left = x + width - wide - 2;
  const top = y + height - 17;
  return [svgElement("rect", { class: "map-badge", x: short(left), y: short(top), width: short(wide), height: 15, rx: 3 }),
    svgElement("text", { class: "map-badge-count", x: short(left + wide / 2), y: short(top + 11.5) }, text)];
}

// Names where they fit.
export function labelLayer(tree, items) {
  return svgElement("g", { class: "map-labels", "aria-hidden": "true" }, items.map((item) => labelsOf(item)));
}

function labelsOf(item) {
  if (!item.room || item.room.height < LINE_HEIGHT + 1) return [];
  const { x, y, width, height } = item.room;
  const name = fitText(nameOf(item), width - 8, 12, item.isOpen ? 600 : 400);
  if (item.isCentred) {
    const middle = { x: short(x + width / 2), y: y + height / 2 };
    return name ? [svgElement("text", { class: "map-centred", x: middle.x, y: short(middle.y + 4),
      transform: `rotate(${item.turn.toFixed(1)} ${middle.x} ${short(middle.y)})` }, name)] : [];
  }
  const line = (text, at, look) => svgElement("text", { class: look, x: short(x + 5), y: short(y + at) }, text);
  const labels = name ? [line(name, 14, item.isOpen ? "map-header" : null)] : [];
  const isFolder = !item.isOpen && item.part !== null && item.part.file < 0;
  const second = isFolder && height > 2 * LINE_HEIGHT + BAND ? counted(item.files.length, "file") : "";
  if (second && textWidth(second, 12, 400) < width - 8) labels.push(line(second, 14 + LINE_HEIGHT, "map-second"));
  return labels;
}

// Without the folders around it.
function nameOf({ part }) { return part === null ? "elsewhere in the site" : part.name; }

// The numbers of the rings, in the gap at the top.
export function ringCaptions(rings, centre) {
  const text = ({ depth, isLast }) => (depth < 0 ? "not reached" : isLast ? depth + " or more" : String(depth));
  const captions = rings.filter(({ depth }) => depth !== 0).map((ring) => {
    const middle = (ring.inner + ring.outer) / 2;
    const gap = 2 * middle * Math.sin(0.3) - 6;
    return svgElement("text", { class: "map-centred map-caption", x: short(centre.x), y: short(centre.y - middle + 4) },
      fitText(text(ring), gap, 12, 600));
  });
  const circles = rings.map(({ outer }) =>
    svgElement("circle", { class: "map-ring", cx: short(centre.x), cy: short(centre.y), r: short(outer) }));
  return svgElement("g", { class: "map-rings", "aria-hidden": "true" }, circles, captions);
}

// An arc for each link ({ from, to, weight }), bent to the left of its direction, so that the way
// back is another one. `chosen` is the number of the item that they belong to, or -1.
export function arcLayer(site, items, links, chosen) {
  const isLost = ({ to }) => lookOf(site, items[to]) === "missing";
  const heaviest = links.reduce((most, { weight }) => Math.max(most, weight), 10);  // few are thin everywhere
  return links.map((link) => {
    const [from, to] = [items[link.from].at, items[link.to].at];
    const look = isLost(link) ? "lost" : chosen < 0 ? "any" : link.from === chosen ? "out" : "in";
    const x = (from.x + to.x) / 2 + (to.y - from.y) / 5;
    const y = (from.y + to.y) / 2 - (to.x - from.x) / 5;
    return svgElement("path", { class: "map-arc map-arc-" + look,
      d: `M${short(from.x)} ${short(from.y)}Q${short(x)} ${short(y)} ${short(to.x)} ${short(to.y)}`,
      "stroke-width": (0.8 + 2 * Math.sqrt(link.weight / heaviest)).toFixed(1), "marker-end": `url(#map-${look})` });
  });
}

// Patterns and arrow heads that the classes of map.css refer to.
export function definitions() {
  const pattern = (id, size, ...shapes) => svgElement("pattern", { id, width: size, height: size,
    patternUnits: "userSpaceOnUse", patternTransform: "rotate(45)" }, shapes);
  const head = (look) => svgElement("marker", { id: "map-" + look, viewBox: "0 0 8 8", refX: 7, refY: 4,
    markerWidth: 8, markerHeight: 8, markerUnits: "userSpaceOnUse", orient: "auto" },
    svgElement("path", { class: "map-head-" + look, d: "M0 0 8 4 0 8z" }));
  return svgElement("defs", {},
    pattern("map-stripes", 7, svgElement("rect", { class: "map-stripe-error", width: 3, height: 7 })),
    pattern("map-dots", 5, svgElement("circle", { class: "map-stripe-warning", cx: 2.5, cy: 2.5, r: 1.5 })),
    pattern("map-faint", 7, svgElement("rect", { class: "map-stripe-faint", width: 3, height: 7 })),
    ["any", "out", "in", "lost"].map(head));
}

let measuring = null;

function textWidth(text, size, weight) {
  measuring ??= document.createElement("canvas").getContext("2d");
  measuring.font = `${weight} ${size}px system-ui, sans-serif`;
  return measuring.measureText(text).width;
}

// As much of a text as fits; nothing when that is too little to be read.
function fitText(text, width, size, weight) {
  const whole = plain(text);
  if (textWidth(whole, size, weight) <= width) return whole;
  const characters = [...whole];
  let [fits, tooMany] = [0, characters.length];
  while (fits + 1 < tooMany) {
    const half = (fits + tooMany) >> 1;
    if (textWidth(characters.slice(0, half).join("") + "…", size, weight) <= width) fits = half;
    else tooMany = half;
  }
  return fits < 3 ? "" : characters.slice(0, fits).join("") + "…";
}
