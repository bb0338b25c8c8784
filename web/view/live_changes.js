// What the program tells of a change, put into the data that is shown.

// The data with the change in it, until all of it is fetched anew: the findings, the totals and the
// time. Pages that were not there are added; links and sizes stay as they were.
//   `change` is { made, totals, broke: [finding], mended: [finding] }; findings as in the data, but
//   a place names its file, and its excerpt stands in it. They hold only the places that are
//   new, or have gone.
export function withChange(site, { made, totals, broke, mended }) {
  const { data, numberOf } = withFiles(site,
    broke.flatMap(({ places }) => places.map(([file]) => file)));
  const findings = new Map(data.findings.map((finding) => [finding.id, finding]));
  const excerpts = [...data.excerpts];
  for (const gone of mended) takeAway(findings, gone, numberOf);
  for (const come of broke) addTo(findings, come, numberOf, excerpts);
  const all = [...findings.values()];
  return { ...data, made, totals, excerpts, findings: all, since: sinceWith(data, all) };
}

function takeAway(findings, { id, places }, numberOf) {
  const known = findings.get(id);
  if (known === undefined) return;
  const left = [...known.places];
  for (const [name, line, column, reference] of places) {
    const file = numberOf(name);
    const isSame = (place) => place[0] === file && place[3] === reference;
    const exact = left.findIndex((place) => isSame(place) && place[1] === line && place[2] === column);
    // Lines above it may have come or gone.
    const at = exact >= 0 ? exact : left.findIndex(isSame);
    if (at >= 0) left.splice(at, 1);
  }
  if (left.length > 0) findings.set(id, { ...known, places: left });
  else findings.delete(id);
}

function addTo(findings, told, numberOf, excerpts) {
  const places = told.places.map(([name, line, column, reference, excerpt]) =>
    [numberOf(name), line, column, reference, excerpt ? excerpts.push(excerpt) - 1 : -1]);
  const known = findings.get(told.id);
  const key = (place) => place.slice(0, 4).join("\n");
  const have = new Set(places.map(key));
  const others = (known?.places ?? []).filter((place) => !have.has(key(place)));
  const all = [...others, ...places].sort((a, b) => a[0] - b[0] || a[1] - b[1] || a[2] - b[2]);
  const targetFile = told.targetFile ? numberOf(told.targetFile) : numberOf(told.target);
  findings.set(told.id, { ...told, targetFile, places: all });
}

function sinceWith({ since, findings }, all) {
  if (!since) return since;
  const added = new Set(since.added.map((i) => findings[i].id));
  return { ...since, added: all.flatMap(({ id }, i) => (added.has(id) ? [i] : [])) };
}

// The data with rows for those of these files that it has not, and how to find the number of a file
// in it. URLs are numbered after them.
function withFiles(site, names) {
  const { data, fileCount } = site;
  const added = [...new Set(names)].filter((name) => site.indexOf(name) < 0);
  if (added.length === 0) return { data, numberOf: (name) => site.indexOf(name) };
  const kind = data.fileKinds.indexOf("page");
  const rows = added.map((name) => rowOf(site, name, kind));
  const files = {};
  for (const column of Object.keys(rows[0])) {
    files[column] = [...data.files[column], ...rows.map((row) => row[column])];
  }
  const moved = (target) => (target >= fileCount ? target + added.length : target);
  const findings = data.findings.map((finding) => ({ ...finding, targetFile: moved(finding.targetFile) }));
  const links = linksWith(data.links, fileCount, added.length);
  const numbers = new Map(added.map((name, i) => [name, fileCount + i]));
  return { data: { ...data, files, links, findings },
    numberOf: (name) => numbers.get(name) ?? moved(site.indexOf(name)) };
}

function rowOf(site, path, kind) {
  const cut = path.lastIndexOf("/");
  const folder = site.folderPaths.indexOf(path.slice(0, Math.max(0, cut)));
  return { folder, name: folder < 0 ? path : path.slice(cut + 1), kind, size: -1, time: 0, family: 0,
    title: "", weight: 0, played: 0, requests: 0 };
}

// Targets from `first` on are numbered higher by `more`: the first of them in each file moves, for
// the others are told as differences.
function linksWith({ count, target, ...others }, first, more) {
  const moved = [...target];
  let begin = 0;
  for (const links of count) {
    for (let at = begin, last = 0; at < begin + links; ++at) {
      last += target[at];
      if (last < first) continue;
      moved[at] += more;
      break;
    }
    begin += links;
  }
  return { ...others, count: [...count, ...Array(more).fill(0)], target: moved };
}

// What has become of the findings, where only their states before and after are known.
export function changeBetween(before, after) {
  const missing = (from, others) => {
    const ids = new Set(others.findings.map(({ id }) => id));
    return from.findings.filter(({ id }) => !ids.has(id));
  };
  return { broke: missing(after, before), mended: missing(before, after) };
}
