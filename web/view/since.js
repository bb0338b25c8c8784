// What has changed since the last report, and on the disk since the site was read.
import { element, mark, named, plain } from "./dom.js";
import { counted, dateText } from "./format.js";

// Nothing where there was no report before. `filter(isOn)` shows new findings only.
export function sinceLastReport(site, isFiltered, filter) {
  const { since } = site.data;
  if (!since) return null;
  const { added, mended } = since;
  return element("section", { class: "since", "aria-labelledby": "since-title" },
    element("h3", { id: "since-title" }, "Since the last report", " ",
      element("small", {}, dateText(since.made))),
    element("div", { class: "since-row" }, element("p", {}, changeText(site, since)),
      added.length === 0 ? null : freshButton(added.length, isFiltered, filter)),
    mended.length === 0 ? null : element("details", {},
      element("summary", {}, counted(mended.length, "finding"), " mended"),
      element("ul", { class: "mended" }, mended.slice(0, NAMED).map(mendedRow))));
}

function changeText(site, { added, mended, totals }) {
  if (added.length + mended.length === 0) return "The same is wrong as then." + sizeChange(site, totals);
  return counted(added.length, "new finding") + ", " + counted(mended.length, "finding") + " mended." +
    sizeChange(site, totals);
}

function sizeChange(site, then) {
  const changes = [["pages", "page"], ["files", "file"], ["links", "link"]]
    .map(([key, word]) => [site.data.totals[key] - then[key], word])
    .filter(([change]) => change !== 0)
    .map(([change, word]) => counted(Math.abs(change), word) + (change > 0 ? " more" : " fewer"));
  return changes.length === 0 ? "" : " The site has " + changes.join(", ") + ".";
}

function freshButton(count, isFiltered, filter) {
  const button = element("button", { type: "button", class: "chip", "aria-pressed": String(isFiltered),
    onclick: () => {
      const isOn = button.getAttribute("aria-pressed") !== "true";
      button.setAttribute("aria-pressed", String(isOn));
      filter(isOn);
    } }, "Only new findings ", element("span", { class: "chip-count" }, String(count)));
  return button;
}

const STALE = [["changed", "changed"], ["gone", "gone"], ["new", "new"], ["unread", "not read"]];
// So many names are listed.
const NAMED = 500;

// Where the report may be incomplete; nothing where it is not.
export function staleNotice(site) {
  const rows = STALE.filter(([key]) => site.data.stale[key].length > 0);
  if (rows.length === 0) return null;
  return element("details", { class: "stale" },
    element("summary", {}, mark("warning", "warning"), " The disk differs from what was read: ",
      rows.map(([key, word]) => counted(site.data.stale[key].length, "file") + " " + word).join(", ")),
    rows.map(([key, word]) => [element("h3", {}, word[0].toUpperCase() + word.slice(1)),
      element("ul", {}, site.data.stale[key].slice(0, NAMED).map((name) =>
        element("li", {}, named(name, { class: "path" }))))]));
}

function mendedRow({ rule, target, message }) {
  return element("li", {}, mark("good", "mended"), " ", element("span", {}, plain(message)),
    message.includes(target) ? null : [" ", named(target, { class: "path" })], " ",
    element("span", { class: "badge" }, rule));
}
