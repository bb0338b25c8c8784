// The view of pages and other files: which are large, slow, far from the home page.
import { element, fill } from "./dom.js";
import { counted, dateText, numberText, secondsText, sizeText } from "./format.js";
import { fileLink, kindWord, severityMark, titleText } from "./parts.js";
import { SortedTable, bar, numberColumn, quietNumber } from "./tables.js";

// A page on a slow phone.
const BYTES_A_SECOND = 200000;
const ROUND_TRIP = 0.15;
const AT_ONCE = 6;

// Without sounds and films, which come while they play.
export function loadSeconds(site, page) {
  const requests = site.requestsOf(page);
  return (site.weightOf(page) - site.data.files.played[page]) / BYTES_A_SECOND +
    ROUND_TRIP * (1 + Math.ceil(Math.max(0, requests - 1) / AT_ONCE));
}

export function showPages(container, site, route) {
  const rows = Array.from({ length: site.fileCount }, (_, i) => i);
  const table = new SortedTable({ name: "pages", label: "Files of the site", what: ["file"], rows,
    columns: pageColumns(site), words: (i) => site.searchTexts()[i],
    filters: [["Show", kindRows(site), "kind", (i, kind) => kind === "all" || site.kindOf(i) === kind]],
    values: { kind: "page", ...Object.fromEntries(route.params) } });
  fill(container, element("h2", { tabindex: "-1" }, "Pages and files"),
    element("p", { class: "note" }, "Weight is a page with all that it loads, each file once. ",
      "The time is an estimate for a slow phone: 1.6 Mbit/s, 0.15 s a round trip, six files at a time, without sounds and films."),
    table.parts());
  table.refresh();
  return "Pages";
}

const PLURALS = { page: "pages", sheet: "style sheets", image: "images", script: "scripts",
  other: "other files" };

function kindRows(site) {
  const counts = new Map();
  for (const kind of site.data.files.kind) counts.set(kind, (counts.get(kind) ?? 0) + 1);
  const rows = site.data.fileKinds.map((kind, i) => [kind, kindWord(kind), counts.get(i) ?? 0])
    .filter(([kind, , count]) => count > 0 || kind === "page");
  return [...rows, ["all", "everything", site.fileCount]]
    .map(([kind, word, count]) => [kind, (PLURALS[kind] ?? word) + " (" + numberText(count) + ")"]);
}

function weightOrSize(site, i) {
  return site.kindOf(i) === "page" ? site.weightOf(i) : site.sizeOf(i);
}

function secondsOf(site, i) {
  return site.kindOf(i) === "page" ? loadSeconds(site, i) : 0;
}

const NUMBER = { class: "number", descends: true };

function pageColumns(site) {
  return [...weightColumns(site),
    { key: "path", title: "File", narrow: true, isHead: true, by: (i) => site.pathOf(i), class: "name",
      cell: (i) => nameCell(site, i) },
    { ...NUMBER, key: "size", title: "Size", spare: true, by: (i) => site.sizeOf(i),
      cell: (i) => sizeText(site.sizeOf(i)) },
    { ...NUMBER, key: "requests", title: "Loads", spare: true, by: (i) => site.requestsOf(i),
      cell: (i) => (site.kindOf(i) === "page" ? quietNumber(site.requestsOf(i)) : "") },
    numberColumn("in", "In", (i) => site.inCountOf(i)),
    numberColumn("out", "Out", (i) => site.outCountOf(i)),
    { ...NUMBER, key: "depth", title: "Clicks", by: (i) => depthOrder(site, i),
      cell: (i) => depthCell(site.depthOf(i)) },
    numberColumn("findings", "Findings", (i) => site.findingsIn(i).length),
    { key: "changed", title: "Changed", class: "date", spare: true, descends: true,
      by: (i) => site.data.files.time[i], cell: (i) => dateText(site.data.files.time[i]) },
  ];
}

function weightColumns(site) {
  const heaviest = site.once("heaviest", () => {
    let most = 0;
    for (let i = 0; i < site.fileCount; ++i) most = Math.max(most, weightOrSize(site, i));
    return most;
  });
  return [
    { key: "weight", title: "Weight", narrow: true, by: (i) => weightOrSize(site, i), descends: true,
      class: "number weight",
      cell: (i) => [sizeText(weightOrSize(site, i)), bar(weightOrSize(site, i), heaviest)] },
    { ...NUMBER, key: "time", title: "Time", by: (i) => secondsOf(site, i),
      cell: (i) => (site.kindOf(i) === "page" ? secondsText(secondsOf(site, i)) : "") },
  ];
}

function depthCell(depth) {
  if (depth >= 0) return numberText(depth);
  return element("span", { class: "quiet", title: "no way from the home page" }, "none");
}

// No way at all is further than any.
function depthOrder(site, i) {
  return site.depthOf(i) < 0 ? Infinity : site.depthOf(i);
}

function nameCell(site, i) {
  const severity = site.severityIn(i);
  return [severity ? severityMark(severity) : null, fileLink(site, i), " ", titleText(site, i),
    element("span", { class: "narrow-facts" }, counted(site.inCountOf(i), "link") + " in, " +
      numberText(site.outCountOf(i)) + " out" +
      (site.findingsIn(i).length > 0 ? ", " + counted(site.findingsIn(i).length, "finding") : ""))];
}
