// What the map says in words: about one area, and about all of them as a list.
import { element, fill, named, plain } from "./dom.js";
import { counted, numberText, sizeText } from "./format.js";
import { troubleIn } from "./map_drawing.js";
import { fileLink, kindWord, titleText } from "./parts.js";

// Of files, one after the other: [word, value]. Values that are empty are left out.
function factsOf(tree, item) {
  const { site } = tree;
  const { part } = item;
  if (part.file >= 0) {
    const depth = site.depthOf(part.file);
    return [["Kind", kindWord(site.kindOf(part.file))], ["Size", sizeText(site.sizeOf(part.file))],
      ["Linked from", counted(site.inCountOf(part.file), "file")],
      ["From the home page", depth < 0 ? "no way" : counted(depth, "click")],
      ["Findings in it", numberText(site.findingsIn(part.file).length)]];
  }
  // A folder has an area in each ring in which it has files.
  const sum = (what) => (item.isOpen ? tree.sum(part, what) : tree.sumOf(item.files, what));
  const some = (what) => (sum(what) > 0 ? counted(sum(what), "file") : "");
  return [["Holds", counted(item.isOpen ? part.end - part.begin : item.files.length, "file")],
    ["Size", sizeText(sum("size"))], ["Links to its files", numberText(sum("links"))], ["With errors", some("errors")],
    ["With warnings only", some("warnings")], ["Not there", some("missing")]];
}

// A path; the name of a group.
function fullName(part) {
  return part.path === "" ? part.name : part.path + (part.file < 0 ? "/" : "");
}

// For screen readers.
export function spokenText(tree, item) {
  if (item.part === null) return "elsewhere in the site, one level up";
  const facts = factsOf(tree, item).filter(([, value]) => value !== "");
  return [plain(fullName(item.part)), ...facts.map(([word, value]) => word.toLowerCase() + " " + value)].join(", ");
}

// Fills the panel beside the map. Without an item it says how the map is used.
export function showFacts(panel, tree, item) {
  if (!item || item.part === null) {
    fill(panel, element("p", { class: "quiet" }, item ? "Everything that is not in this folder. A click leads one level up."
      : tree.files.length === 0 ? "There are no files to show."
      : "Point at an area, or go to it with the arrow keys, to see what it is. A click or Enter opens it; Escape leads one level up."));
    return;
  }
  const { part } = item;
  const rows = factsOf(tree, item).filter(([, value]) => value !== "");
  fill(panel, element("p", { class: "map-name path" }, named(fullName(part))),
    part.file >= 0 ? element("p", {}, titleText(tree.site, part.file)) : null,
    element("dl", {}, rows.map(([word, value]) => element("div", {}, element("dt", {}, word), element("dd", {}, value)))));
}

// All parts of the folder that the map shows, for those who prefer a list.
export function partsTable(tree, root, enter) {
  const item = (part) => ({ part, files: Array.from({ length: part.end - part.begin }, (_, i) => part.begin + i) });
  const row = (part) => {
    const trouble = troubleIn(tree, item(part));
    const name = part.file >= 0 ? fileLink(tree.site, part.file, part.name)
      : element("button", { type: "button", class: "map-enter", onclick: () => enter(part) }, named(part.name));
    return element("tr", {}, element("th", { scope: "row", class: "name" }, name),
      element("td", { class: "number wide" }, part.file >= 0 ? "" : numberText(part.end - part.begin)),
      element("td", { class: "number" }, sizeText(tree.sum(part, "size"))),
      element("td", { class: "number" }, numberText(tree.sum(part, "links"))),
      element("td", { class: "wide" }, trouble.severity ? troubleText(part, trouble) : ""));
  };
  const head = (text, look) => element("th", { scope: "col", class: look }, text);
  return element("table", {}, element("caption", { class: "unseen" }, plain("Parts of " + root.name)),
    element("thead", {}, element("tr", {}, head("Name"), head("Files", "number wide"), head("Size", "number"),
      head("Links to it", "number"), head("Findings", "wide"))),
    element("tbody", {}, root.parts.map(row)));
}

function troubleText(part, { severity, count }) {
  if (part.file < 0) return counted(count, "file") + " with " + severity + "s";
  return count > 0 ? counted(count, "finding") : "not there";
}
