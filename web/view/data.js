// The data of the report: decoded from the page, and indexed for the views. web/site_view.h says
// what stands in it.
import { backwards, shortestWays } from "./graph.js";

// Whether the program serves the page; a report from a file holds its data.
export function isServed() { return document.getElementById("data") === null; }

// What a page holds, the browser unpacks, and nothing is loaded: base64 of gzip, or of plain JSON.
export async function readData() {
  if (isServed()) return fetchData();
  const bytes = bytesOfBase64(document.getElementById("data").textContent.trim());
  if (bytes[0] !== 0x1f) return JSON.parse(new TextDecoder().decode(bytes));
  const unpacked = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("gzip"));
  return new Response(unpacked).json();
}

export async function fetchData() {
  const answer = await fetch("data", { cache: "no-store" });
  if (!answer.ok) throw new Error("the program answers " + answer.status);
  return answer.json();
}

function bytesOfBase64(text) {
  if (Uint8Array.fromBase64) return Uint8Array.fromBase64(text);
  const binary = atob(text);
  const bytes = new Uint8Array(binary.length);
  for (let i = 0; i < bytes.length; ++i) bytes[i] = binary.charCodeAt(i);
  return bytes;
}

// What does not depend on the findings.
const OF_LINKS = ["indexOf", "searchTexts", "links", "linksBack", "inCounts", "ways"];

// Files are named by their numbers; numbers from `fileCount` on are URLs of other sites. What costs
// time is made when it is first asked for.
export class Site {
  // `news` are ids of findings with a word that marks them. What was made of the same files and links
  // for the site `before` is taken over.
  constructor(data, news = new Map(), before = null) {
    this.data = data;
    this.news = news;
    this.fileCount = data.files.name.length;
    this.urlCount = data.urls.text.length;
    this.home = data.site.home;
    this.findings = data.findings;
    this.folderPaths = folderPaths(data.folders);
    this.made = new Map();
    if (before?.data.files !== data.files || before.data.links !== data.links) return;
    for (const key of OF_LINKS) {
      if (before.made.has(key)) this.made.set(key, before.made.get(key));
    }
  }

  // The value of `make`, made once.
  once(key, make) {
    if (!this.made.has(key)) this.made.set(key, make());
    return this.made.get(key);
  }

  isUrl(index) { return index >= this.fileCount; }

  // A path from the site folder with "/", or a URL.
  pathOf(index) {
    if (this.isUrl(index)) return this.data.urls.text[index - this.fileCount];
    const folder = this.folderPaths[this.data.files.folder[index]];  // none of what lies outside
    return folder ? folder + "/" + this.data.files.name[index] : this.data.files.name[index];
  }

  nameOf(index) {
    return this.isUrl(index) ? this.pathOf(index) : this.data.files.name[index];
  }

  titleOf(index) { return this.isUrl(index) ? "" : this.data.files.title[index]; }
  kindOf(index) {
    return this.isUrl(index) ? "url" : this.data.fileKinds[this.data.files.kind[index]];
  }
  // Bytes; -1 when they are not known.
  sizeOf(index) { return this.isUrl(index) ? -1 : this.data.files.size[index]; }
  // Bytes of a page with all that it loads.
  weightOf(index) { return this.data.files.weight[index]; }
  requestsOf(index) { return this.data.files.requests[index]; }
  isInFamily(index) { return !this.isUrl(index) && this.data.files.family[index] === 1; }

  // -1 when no file and no URL has this path.
  indexOf(path) {
    return this.once("indexOf", () => {
      const indexes = new Map();
      for (let i = this.fileCount + this.urlCount; i-- > 0;) indexes.set(this.pathOf(i), i);
      return indexes;
    }).get(path) ?? -1;
  }

  // Paths and titles in lower case, for searching.
  searchTexts() {
    return this.once("searchTexts", () => Array.from(this.data.files.name, (name, i) =>
      (this.pathOf(i) + "\n" + this.data.files.title[i]).toLowerCase()));
  }

  // Links of file i are those from starts[i] to starts[i + 1] of `targets`, `kinds` and `times`.
  links() { return this.once("links", () => unpackedLinks(this.data.links)); }
  // The same the other way: links to i, as positions in links() and their sources.
  linksBack() {
    return this.once("linksBack", () => backwards(this.links(), this.fileCount + this.urlCount));
  }

  // [{ other, kind, times }]
  linksFrom(index) {
    if (this.isUrl(index)) return [];
    const { starts, targets, kinds, times } = this.links();
    const links = [];
    for (let at = starts[index]; at < starts[index + 1]; ++at) {
      links.push({ other: targets[at], kind: this.data.linkKinds[kinds[at]], times: times[at] });
    }
    return links;
  }

  linksTo(index) {
    const { kinds, times } = this.links();
    const { starts, positions, sources } = this.linksBack();
    const links = [];
    for (let i = starts[index]; i < starts[index + 1]; ++i) {
      const at = positions[i];
      links.push({ other: sources[i], kind: this.data.linkKinds[kinds[at]], times: times[at] });
    }
    return links;
  }

  // How many other files refer to each one.
  inCounts() { return this.once("inCounts", () => otherSources(this.linksBack())); }
  inCountOf(index) { return this.inCounts()[index]; }
  // How many other files and URLs a file refers to.
  outCountOf(index) {
    if (this.isUrl(index)) return 0;
    const { starts, targets } = this.links();
    let count = 0;
    for (let at = starts[index]; at < starts[index + 1]; ++at) {
      if (targets[at] !== index && (at === starts[index] || targets[at] !== targets[at - 1])) ++count;
    }
    return count;
  }

  // Clicks from the home page, and the file before it on that way; -1 for no way.
  ways() {
    return this.once("ways", () =>
      shortestWays(this.links(), this.home, this.fileCount + this.urlCount));
  }
  depthOf(index) { return this.ways().depths[index]; }
  // From the home page to this file, both included; empty when no way leads to it.
  wayTo(index) {
    const { depths, before } = this.ways();
    const way = [];
    if (depths[index] < 0) return way;
    for (let at = index; at >= 0; at = before[at]) way.unshift(at);
    return way;
  }

  // For each file, numbers of the findings that stand in it.
  findingsByFile() {
    return this.once("findingsByFile", () => groupFindings(this.findings, (finding) =>
      finding.places.map((place) => place[0])));
  }
  findingsIn(index) { return this.findingsByFile().get(index) ?? []; }
  // Numbers of the findings that are about this file or URL.
  findingsAbout(index) {
    return (this.once("findingsByTarget", () => groupFindings(this.findings, (finding) =>
      [finding.targetFile]))).get(index) ?? [];
  }
  // "new" for a finding that was not there before, or "".
  newsOf(index) {
    const added = this.once("added", () => new Set(this.data.since?.added ?? []));
    return this.news.get(this.findings[index].id) ?? (added.has(index) ? "new" : "");
  }
  // "error", "warning", or "" for a file without findings in it.
  severityIn(index) {
    const found = this.findingsIn(index);
    if (found.length === 0) return "";
    return found.some((i) => this.findings[i].severity === "error") ? "error" : "warning";
  }
  // Whether a reference to this file or URL is an error.
  isBroken(index) {
    return this.findingsAbout(index).some((i) => this.findings[i].severity === "error" &&
      this.findings[i].rule !== "missing-fragment");
  }

  // Whether each folder is the one with this path or lies in it.
  foldersBelow(path) {
    const below = new Uint8Array(this.folderPaths.length);
    const folder = this.folderPaths.indexOf(path);
    if (folder < 0) return below;
    below[folder] = 1;
    const { parent } = this.data.folders;
    for (let i = folder + 1; i < parent.length; ++i) below[i] = parent[i] >= 0 ? below[parent[i]] : 0;
    return below;
  }
}

function folderPaths({ name, parent }) {
  const paths = [];
  name.forEach((last, i) => {
    const above = parent[i] >= 0 ? paths[parent[i]] : "";
    paths.push(above ? above + "/" + last : last);
  });
  return paths;
}

function unpackedLinks({ count, target, kind, times }) {
  const starts = new Uint32Array(count.length + 1);
  const targets = new Uint32Array(target.length);
  let at = 0;
  count.forEach((links, file) => {
    starts[file] = at;
    for (let last = 0, end = at + links; at < end; ++at) targets[at] = last += target[at];
  });
  starts[count.length] = at;
  return { starts, targets, kinds: Uint8Array.from(kind), times: Uint32Array.from(times) };
}

function otherSources({ starts, sources }) {
  const counts = new Uint32Array(starts.length - 1);
  for (let file = 0; file < counts.length; ++file) {
    let last = file;  // a link of a file to itself does not count
    for (let i = starts[file]; i < starts[file + 1]; ++i) {
      if (sources[i] !== last && sources[i] !== file) ++counts[file];
      last = sources[i];
    }
  }
  return counts;
}

function groupFindings(findings, keysOf) {
  const groups = new Map();
  findings.forEach((finding, i) => {
    for (const key of new Set(keysOf(finding))) {
      if (!groups.has(key)) groups.set(key, []);
      groups.get(key).push(i);
    }
  });
  return groups;
}
