// The view of what nobody gets to: pages without a way from the home page, files that nothing
// refers to.
import { element, fill } from "./dom.js";
import { counted, dateText, numberText, sizeText } from "./format.js";
import { fileLink, kindBadge, nothing, titleText } from "./parts.js";
import { SortedTable, bar } from "./tables.js";

const REASONS = [["", "everything"], ["orphan", "orphan pages"], ["unused", "unused files"]];

export function showUnused(container, site, route) {
  const rows = unreachedFiles(site);
  fill(container, element("h2", { tabindex: "-1" }, "Orphans and unused files"), summary(site, rows));
  if (rows.length === 0) {
    container.append(nothing("Every page can be reached, and every file is used."));
    return "Orphans";
  }
  const table = new SortedTable({ name: "unused", label: "Orphans and unused files", what: ["file"], rows,
    columns: unusedColumns(site, rows), words: (row) => site.searchTexts()[row.file],
    filters: [["Show", REASONS, "show",
      (row, show) => (show === "orphan" ? row.isOrphan : row.isUnused)]],
    values: Object.fromEntries(route.params) });
  container.append(...table.parts().flat(2));
  table.refresh();
  return "Orphans";
}

// [{ file, isOrphan, isUnused }]
export function unreachedFiles(site) {
  return site.once("unreached", () => {
    const rows = new Map();
    const row = (file) => {
      if (!rows.has(file)) rows.set(file, { file, isOrphan: false, isUnused: false });
      return rows.get(file);
    };
    for (const finding of site.findings) {
      if (finding.rule === "orphan-page" && finding.targetFile >= 0) row(finding.targetFile).isOrphan = true;
    }
    for (const file of site.data.unused) {
      if (file !== site.home) row(file).isUnused = true;
    }
    return [...rows.values()];
  });
}

function summary(site, rows) {
  const part = (isWanted, what, words) => {
    const files = rows.filter(isWanted).map((row) => row.file);
    return element("li", {}, element("strong", {}, counted(files.length, ...what)),
      element("span", {}, words), element("span", { class: "quiet" }, sizeText(sumOfSizes(site, files))));
  };
  return element("ul", { class: "sums" },
    part((row) => row.isOrphan, ["orphan page"], site.home < 0
      ? "without a home page, no page is an orphan" : "not reached from the home page"),
    part((row) => row.isUnused, ["unused file"], "nothing refers to them"));
}

function sumOfSizes(site, files) {
  return files.reduce((sum, file) => sum + Math.max(0, site.sizeOf(file)), 0);
}

function unusedColumns(site, rows) {
  const largest = rows.reduce((most, row) => Math.max(most, site.sizeOf(row.file)), 0);
  return [
    { key: "size", title: "Size", narrow: true, class: "number weight", descends: true,
      by: (row) => site.sizeOf(row.file),
      cell: (row) => [sizeText(site.sizeOf(row.file)), bar(site.sizeOf(row.file), largest)] },
    { key: "path", title: "File", narrow: true, isHead: true, class: "name",
      by: (row) => site.pathOf(row.file),
      cell: (row) => [fileLink(site, row.file), " ", titleText(site, row.file),
        element("span", { class: "narrow-facts" }, reasonText(site, row))] },
    { key: "kind", title: "Kind", by: (row) => site.kindOf(row.file),
      cell: (row) => kindBadge(site.kindOf(row.file)) },
    { key: "why", title: "Why", class: "reason", by: (row) => reasonText(site, row),
      cell: (row) => reasonText(site, row) },
    { key: "changed", title: "Changed", class: "date", descends: true,
      by: (row) => site.data.files.time[row.file],
      cell: (row) => dateText(site.data.files.time[row.file]) },
  ];
}

function reasonText(site, { file, isUnused }) {
  if (isUnused) return "nothing refers to it";
  return "only from pages that are not reached: " + numberText(site.inCountOf(file));
}
