// The map: folders and files as nested areas or in rings, and the links between them.
import { announce, element, fill, named, plain, svgElement } from "./dom.js";
import { counted } from "./format.js";
import { linksBetween, waysBetween } from "./map_layout.js";
import { MapTree, folderPathOf } from "./map_tree.js";
import { arcLayer, areaItems, definitions, labelLayer, lookOf, markLayer, ringCaptions, ringItems, troubleIn } from "./map_drawing.js";
import { partsTable, showFacts, spokenText } from "./map_facts.js";
import { saveMap } from "./map_picture.js";
import { choice, kindWord } from "./parts.js";
import { addressOf, keepInAddress } from "./router.js";

const MOST_ITEMS = 160;
const MOST_SECTORS = 240;
const MOST_ARCS = 60;
const MOST_LOST = 20;  // of them, to missing files
const PIXELS_AN_ITEM = 1400;

export function showMap(container, site, route) {
  const place = element("div", { class: "map" });
  fill(container, element("h2", { tabindex: "-1" }, "Map"), place);
  drawMap(place, site, (file) => { location.hash = addressOf(site, file); }, Object.fromEntries(route.params));
  return "Map";
}

// Draws the map into the container and keeps it there. `openFile(index)` is called for a file that is
// chosen; `values` are what the reader chose before: { layout, area, files, links, in }.
export function drawMap(container, site, openFile, values = {}) {
  return new SiteMap(container, site, openFile, values);
}

class SiteMap {
  constructor(container, site, openFile, values) {
    Object.assign(this, { site, openFile });
    this.values = { layout: "areas", area: "size", files: "pages", links: "shown", in: "", ...values };
    this.svg = svgElement("svg", { class: "map-svg", role: "group",
      onclick: (event) => this.clicked(event), onkeydown: (event) => this.keyPressed(event),
      onpointerover: (event) => this.pointAt(this.itemAt(event)), onpointerleave: () => this.pointAt(-1),
      onfocusin: (event) => this.focusOn(this.itemAt(event)), onfocusout: () => this.pointAt(-1) });
    this.facts = element("div", { class: "map-facts" });
    this.way = element("ol", { class: "map-way", "aria-label": "Folders around what is shown" });
    this.legend = element("ul", { class: "map-legend" });
    this.list = element("details", { class: "map-list", ontoggle: () => this.fillList() }, element("summary", {}, "The same as a list"));
    fill(container, this.tools(), this.way,
      element("div", { class: "map-row" }, element("div", { class: "map-frame" }, this.svg), this.facts), this.legend, this.list);
    this.plant();
    this.width = this.svg.clientWidth;
    this.draw();
    this.followWidth();
  }

  tools() {
    const chosen = (label, key, rows) => element("div", { class: "field", "data-choice": key },
      element("span", { "aria-hidden": "true" }, label), choice(label, rows, this.values[key], (value) => this.choose(key, value)));
    const save = (format) => element("button", { type: "button", class: "plain-button",
      onclick: () => saveMap(this.svg, this.site.data.site.name || "map", format) }, "Save " + format.toUpperCase());
    this.areaChoice = chosen("Area", "area", [["size", "Size"], ["links", "Links to it"]]);
    return element("div", { class: "tools tools-row" },
      chosen("Layout", "layout", [["areas", "Areas"], ["rings", "Clicks from home"]]), this.areaChoice,
      chosen("Files", "files", [["pages", "Pages"], ["all", "All"]]),
      chosen("Links", "links", [["shown", "Shown"], ["hidden", "When pointed at"]]),
      element("div", { class: "map-save" }, save("svg"), save("png")));
  }

  // Each choice of files has its tree.
  plant() {
    const isWanted = (file) => this.values.files === "all" || ["page", "missing"].includes(this.site.kindOf(file));
    this.tree = this.site.once("map of " + this.values.files, () => new MapTree(this.site, isWanted));
    this.depths = this.site.once("depths of " + this.values.files, () => this.tree.files.map((file) => this.site.depthOf(file)));
    this.root = this.tree.folderAt(this.values.in);
  }

  choose(key, value) {
    this.values[key] = value;
    if (key === "files") this.plant();
    keepInAddress("map", this.values);
    this.draw();
  }

  // Goes into a folder or group, or up to one; `from` is what the focus is on then.
  enter(part, from = null) {
    this.root = part;
    this.values.in = folderPathOf(part);
    keepInAddress("map", this.values);
    this.draw();
    const at = from ? this.items.findIndex(({ part }) => part === from) : 0;
    if (this.items.length > 0) this.shapes[Math.max(0, at)].focus({ preventScroll: true });
    announce(plain(part.name) + ", " + counted(this.items.length, "area"));
  }

  leave() {
    if (this.root.above) this.enter(this.root.above, this.root);
  }

  // The item goes to its view, into its folder, or one level up.
  open(index) {
    const { part } = this.items[index];
    if (part === null) this.leave();
    else if (part.file >= 0) this.openFile(part.file);
    else if (part !== this.root) this.enter(part);
    else this.choose("layout", "areas");
  }

  draw() {
    this.areaChoice.hidden = this.values.layout === "rings";
    const size = this.size();
    const most = Math.max(30, Math.min(MOST_ITEMS, Math.floor(size.width * size.height / PIXELS_AN_ITEM)));
    const rings = this.values.layout === "rings" ? ringItems(this.tree, this.root, this.depths, size, MOST_SECTORS) : null;
    this.items = rings ? rings.items : areaItems(this.tree, this.root, this.values.area, size, most);
    this.readLinks();
    this.shapes = this.items.map((item, i) => this.shapeOf(item, i));
    this.arcs = svgElement("g", { class: "map-arcs", "aria-hidden": "true" });
    this.cursor = svgElement("path", { class: "map-cursor" });
    this.svg.setAttribute("viewBox", `0 0 ${size.width} ${size.height}`);
    this.svg.setAttribute("height", size.height);
    this.svg.setAttribute("aria-label", `Map of ${plain(this.root.name)}: ${counted(this.items.length, "area")}. Arrow keys go from one to the next.`);
    fill(this.svg, definitions(), svgElement("g", { class: "map-shapes" }, this.shapes),
      markLayer(this.tree, this.items), rings ? ringCaptions(rings.rings, rings.centre) : null,
      this.arcs, labelLayer(this.tree, this.items), this.cursor);
    this.pointAt(-1);
    this.showWay();
    this.showLegend();
    this.fillList();
  }

  size() {
    const width = Math.max(240, Math.round(this.width));
    const height = width < 560 ? width * 1.25 : Math.min(width * 0.66, Math.max(420, innerHeight - 230));
    return { width, height: Math.round(height) };
  }

  shapeOf(item, i) {
    const isFile = item.part !== null && item.part.file >= 0;
    return svgElement(item.shape.tag, { ...item.shape.attributes, class: "map-area map-" + lookOf(this.site, item),
      "data-item": i, role: isFile ? "link" : "button", tabindex: i === 0 ? 0 : -1, "aria-label": spokenText(this.tree, item) });
  }

  // Between the items; what is in none of them is elsewhere. Of the rings those are shown at once
  // that make the rings.
  readLinks() {
    const elsewhere = this.items.findIndex(({ part }) => part === null);
    const areaOf = new Int16Array(this.site.fileCount).fill(-1);
    for (const file of this.tree.files) areaOf[file] = elsewhere;
    this.items.forEach(({ files }, i) => { for (const position of files) areaOf[this.tree.files[position]] = i; });
    this.links = linksBetween(this.site.links(), areaOf, this.items.length);
    this.shownLinks = this.values.layout === "areas" ? this.links
      : waysBetween(this.site.ways().before, areaOf, this.items.length);
  }

  itemAt(event) {
    return Number(event.target.dataset.item ?? -1);
  }

  clicked(event) {
    const index = this.itemAt(event);
    if (index >= 0) this.open(index);
  }

  focusOn(index) {
    if (index < 0) return;
    this.shapes.forEach((shape, i) => shape.setAttribute("tabindex", i === index ? 0 : -1));
    this.pointAt(index);
  }

  // Shows what an item is, and its links; -1 for none: the one with the focus, if any.
  pointAt(index) {
    const focused = this.shapes.indexOf(document.activeElement);
    const at = index >= 0 ? index : focused;
    showFacts(this.facts, this.tree, this.items[at]);
    this.cursor.setAttribute("d", at < 0 ? "" : this.items[at].edge);
    const links = at < 0 ? this.overview()
      : ["from", "to"].flatMap((end) => this.links.filter((link) => link[end] === at).slice(0, MOST_ARCS / 2));
    fill(this.arcs, arcLayer(this.site, this.items, links, at));
  }

  // The heaviest between areas.
  overview() {
    if (this.values.links === "hidden") return [];
    const isLost = ({ to }) => lookOf(this.site, this.items[to]) === "missing";
    const inside = this.shownLinks.filter(({ from, to }) => this.items[from].part && this.items[to].part);
    const lost = inside.filter(isLost).slice(0, MOST_LOST);
    return [...lost, ...inside.filter((link) => !isLost(link)).slice(0, MOST_ARCS - lost.length)];
  }

  keyPressed(event) {
    const index = this.itemAt(event);
    if (index < 0 || event.altKey || event.ctrlKey || event.metaKey) return;
    const { key } = event;
    if (key === "Enter" || key === " ") this.open(index);
    else if (key === "Backspace" || key === "Escape") this.leave();
    else if (key === "Home" || key === "End") this.shapes.at(key === "Home" ? 0 : -1).focus();
    else if (key in DIRECTIONS) this.shapes[this.nextTo(index, DIRECTIONS[key])].focus();
    else return;
    event.preventDefault();
  }

  // The nearest item in that direction; what lies aside counts as further away.
  nextTo(index, [x, y]) {
    const here = this.items[index].at;
    let [best, least] = [index, Infinity];
    this.items.forEach(({ at }, i) => {
      const along = (at.x - here.x) * x + (at.y - here.y) * y;
      const aside = Math.abs((at.x - here.x) * y) + Math.abs((at.y - here.y) * x);
      const far = along + 2 * aside;
      if (along > 1 && far < least) [best, least] = [i, far];
    });
    return best;
  }

  showWay() {
    const parts = [];
    for (let part = this.root; part; part = part.above) parts.unshift(part);
    fill(this.way, parts.map((part) => element("li", {}, part === this.root
      ? element("span", { "aria-current": "true" }, named(part.name))
      : element("button", { type: "button", class: "map-enter", onclick: () => this.enter(part, this.root) }, named(part.name)))));
  }

  showLegend() {
    const looks = new Set(this.items.filter(({ isOpen }) => !isOpen).map((item) => lookOf(this.site, item)));
    const severities = new Set(this.items.filter(({ isOpen }) => !isOpen).map((item) => troubleIn(this.tree, item).severity));
    looks.delete("elsewhere");
    const swatch = (...shapes) => svgElement("svg", { class: "map-svg map-swatch", viewBox: "0 0 22 14", width: 22, height: 14, "aria-hidden": "true" }, shapes);
    const box = (look) => svgElement("rect", { class: "map-area map-" + look, x: 0.5, y: 0.5, width: 21, height: 13 });
    const row = (text, ...shapes) => element("li", {}, swatch(...shapes), " ", text);
    const marked = (severity) => row("with " + severity + "s", box("page"),
      svgElement("path", { class: `map-band map-band-${severity}`, d: "M1 8h20v5h-20z" }),
      svgElement("path", { class: `map-edge map-edge-${severity}`, d: "M1 1h20v12h-20z" }));
    fill(this.legend, [...looks].map((look) => row(look === "folded" ? "folder, with all in it" : look === "missing" ? "not there" : kindWord(look), box(look))),
      ["error", "warning"].filter((severity) => severities.has(severity)).map(marked),
      ["out", "in", "lost"].map((look) => row({ out: "link from it", in: "link to it", lost: "to a missing file" }[look],
        svgElement("path", { class: "map-arc map-arc-" + look, d: "M1 7h19", "stroke-width": 1.5, "marker-end": `url(#map-${look})` }))),
      this.values.layout === "rings" ? element("li", {}, this.site.home < 0 ? "The site has no home page." : "Rings: how many clicks from the home page, with the last links of the shortest ways.") : null);
  }

  fillList() {
    if (!this.list.open) return;
    this.list.querySelector("table")?.remove();
    this.list.append(partsTable(this.tree, this.root, (part) => this.enter(part)));
  }

  // Draws it anew when there is more or less room for it.
  followWidth() {
    const observer = new ResizeObserver(() => {
      if (!this.svg.isConnected) return observer.disconnect();
      const width = this.svg.clientWidth;
      if (Math.abs(width - this.width) < 4 || width === 0) return undefined;
      this.width = width;
      return this.draw();
    });
    observer.observe(this.svg.parentElement);
  }
}

const DIRECTIONS = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };
