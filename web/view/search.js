// Which findings the reader wants to see. Counted in one pass with each key that is typed.

// The words of a search, in lower case.
export function wordsOf(text) {
  return text.toLowerCase().split(/\s+/).filter((word) => word !== "");
}

// What is found at a finding itself; what is found at its places is its files.
function textOf(finding) {
  const references = new Set(finding.places.map((place) => place[3]));
  return [finding.rule, finding.target, finding.message, finding.suggestion, ...references]
    .join("\n").toLowerCase();
}

// `wanted` is { q, severity, rule, folder, fresh }; an empty value takes all. Answers
//   found: [{ finding, id, places }], in the order of the report; places are those wanted
//   bySeverity, byRule: how many findings each choice would show, under the other choices
export function searchFindings(site, wanted) {
  const words = wordsOf(wanted.q);
  const texts = site.once("findingTexts", () => site.findings.map(textOf));
  const wantedFiles = fileTest(site, wanted.folder);
  const answer = { found: [], bySeverity: new Map(), byRule: new Map(), places: 0 };
  site.findings.forEach((finding, id) => {
    if (wanted.fresh && site.newsOf(id) === "") return;
    const left = words.filter((word) => !texts[id].includes(word));
    const files = left.length === 0 && wanted.folder === "" ? null : wantedFiles(left);
    const places = files ? finding.places.filter(([file]) => files[file] === 1) : finding.places;
    if (places.length > 0) add(answer, wanted, { finding, id, places });
  });
  return answer;
}

function add(answer, wanted, row) {
  const { severity, rule } = row.finding;
  const isSeverity = wanted.severity === "" || wanted.severity === severity;
  const isRule = wanted.rule === "" || wanted.rule === rule;
  if (isRule) answer.bySeverity.set(severity, (answer.bySeverity.get(severity) ?? 0) + 1);
  if (isSeverity) answer.byRule.set(rule, (answer.byRule.get(rule) ?? 0) + 1);
  if (!isSeverity || !isRule) return;
  answer.found.push(row);
  answer.places += row.places.length;
}

// Answers for words a table of all files: 1 for those that lie in the folder and have all the words in
// their paths or titles.
function fileTest(site, folder) {
  const below = folder === "" ? null : site.foldersBelow(folder);
  const { folder: folders } = site.data.files;
  const texts = site.searchTexts();
  const known = new Map();
  const find = (words) => Uint8Array.from(texts, (text, file) =>
    (!below || below[folders[file]] === 1) && words.every((word) => text.includes(word)) ? 1 : 0);
  return (words) => {
    const key = words.join(" ");
    if (!known.has(key)) known.set(key, find(words));
    return known.get(key);
  };
}

// Folders that have findings in them or below, with how many places: [[path, places]].
export function foldersWithFindings(site) {
  return site.once("foldersWithFindings", () => {
    const counts = new Uint32Array(site.folderPaths.length);
    for (const finding of site.findings) {
      for (const [file] of finding.places) ++counts[site.data.files.folder[file]];
    }
    const { parent } = site.data.folders;
    for (let i = parent.length; i-- > 1;) if (parent[i] >= 0) counts[parent[i]] += counts[i];
    return site.folderPaths.map((path, i) => [path, counts[i]]).filter((row) => row[1] > 0);
  });
}

const RANKS = { error: 0, warning: 1 };

const ORDERS = {
  places: (a, b) => b.places.length - a.places.length,
  severity: (a, b) => RANKS[a.finding.severity] - RANKS[b.finding.severity],
  target: (a, b) => compareTexts(a.finding.target, b.finding.target),
  rule: (a, b) => compareTexts(a.finding.rule, b.finding.rule),
};

function compareTexts(a, b) { return a < b ? -1 : a > b ? 1 : 0; }

// Sorted for showing a card a finding; what is equal stays in the order of the report. The first
// order puts errors first, and what shows in most places.
export function sortFindings(found, sort) {
  const order = ORDERS[sort] ?? ((a, b) => ORDERS.severity(a, b) || ORDERS.places(a, b));
  return [...found].sort(order);
}

// The same as a card a page: [{ file, count, errors }], of places and of those that are errors.
export function groupByPage(site, found, sort) {
  const counts = new Uint32Array(site.fileCount);
  const errors = new Uint32Array(site.fileCount);
  for (const { finding, places } of found) {
    const isError = finding.severity === "error" ? 1 : 0;
    for (const [file] of places) {
      ++counts[file];
      errors[file] += isError;
    }
  }
  const pages = [];
  counts.forEach((count, file) => { if (count > 0) pages.push({ file, count, errors: errors[file] }); });
  if (sort === "target") return pages.sort((a, b) => compareTexts(site.pathOf(a.file), site.pathOf(b.file)));
  if (sort === "places") return pages.sort((a, b) => b.count - a.count);
  return pages.sort((a, b) => b.errors - a.errors || b.count - a.count);
}
