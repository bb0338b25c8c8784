// The folders and files of a site as a tree, with sums over each part of it.

// A folder with more parts than this has them in groups by name.
const MOST_PARTS = 100;
const MOST_GROUPS = 50;

// A part is a folder, a group of its parts, or a file:
//   { name, path, file: index or -1, parts, above: the part around it or null, begin, end }
// Its files are those from `begin` to `end` of the tree's `files`.
export class MapTree {
  // `isWanted(file)` says which files are in it; those outside of the site never are.
  constructor(site, isWanted) {
    this.site = site;
    this.files = [];
    this.leaves = [];
    this.root = rootOf(site, isWanted);
    this.number(this.root);
    // Their sums up to each file; what a part holds is the difference of two.
    this.sums = {
      size: this.summed((file) => Math.max(0, site.sizeOf(file))),
      links: this.summed((file) => site.inCountOf(file)),
      errors: this.summed((file) => (severityOf(site, file) === "error" ? 1 : 0)),
      warnings: this.summed((file) => (severityOf(site, file) === "warning" ? 1 : 0)),
      missing: this.summed((file) => (site.kindOf(file) === "missing" ? 1 : 0)),
    };
  }

  number(part) {
    part.begin = this.files.length;
    if (part.file >= 0) {
      this.files.push(part.file);
      this.leaves.push(part);
    }
    for (const below of part.parts) {
      below.above = part;
      this.number(below);
    }
    part.end = this.files.length;
  }

  summed(valueOf) {
    const sums = new Float64Array(this.files.length + 1);
    this.files.forEach((file, i) => { sums[i + 1] = sums[i] + valueOf(file); });
    return sums;
  }

  // Over all files of a part; `what` is a name of `sums`.
  sum(part, what) { return this.sums[what][part.end] - this.sums[what][part.begin]; }

  // Over the files at these positions.
  sumOf(positions, what) {
    const sums = this.sums[what];
    return positions.reduce((sum, at) => sum + sums[at + 1] - sums[at], 0);
  }

  // The folder with that path, or the nearest one above it that is an area of its own.
  folderAt(path) {
    let part = this.root;
    for (;;) {
      const next = part.parts.find((below) => below.file < 0 && holdsPath(below, path));
      if (!next) return part;
      part = next;
    }
  }
}

// Of a file in the map: one that is missing is an error itself.
function severityOf(site, file) {
  return site.kindOf(file) === "missing" ? "error" : site.severityIn(file);
}

// A group has no path of its own.
function holdsPath(part, path) {
  return part.path === "" ? part.parts.some((below) => below.file < 0 && holdsPath(below, path))
                          : (path + "/").startsWith(part.path + "/");
}

// The path of the folder that a part is, or lies in.
export function folderPathOf(part) {
  return part.path === "" && part.above ? folderPathOf(part.above) : part.path;
}

function newPart(name, path, file = -1) {
  return { name, path, file, parts: [], above: null, begin: 0, end: 0 };
}

function rootOf(site, isWanted) {
  const folders = site.folderPaths.map((path, i) => newPart(site.data.folders.name[i] + "/", path));
  const holdsFiles = new Uint8Array(folders.length);
  const files = folders.map(() => []);
  for (let file = 0; file < site.fileCount; ++file) {
    const folder = site.data.files.folder[file];
    if (folder < 0 || !isWanted(file)) continue;
    files[folder].push(newPart(site.nameOf(file), site.pathOf(file), file));
    holdsFiles[folder] = 1;
  }
  // Each folder stands behind the one around it, so that from the end all below it are done.
  for (let i = folders.length - 1; i >= 0; --i) {
    folders[i].parts = [...folders[i].parts.reverse(), ...files[i]];
    const around = site.data.folders.parent[i];
    if (around < 0 || !holdsFiles[i]) continue;
    holdsFiles[around] = 1;
    folders[around].parts.push(withOnlyFolder(grouped(folders[i])));
  }
  return Object.assign(grouped(folders[0]), { name: site.data.site.name || "all files" });
}

// A folder that holds nothing but one folder is one area with it.
function withOnlyFolder(folder) {
  const [only] = folder.parts;
  if (folder.parts.length !== 1 || only.file >= 0) return folder;
  return { ...only, name: folder.name + only.name };
}

function grouped(folder) {
  if (folder.parts.length <= MOST_PARTS) return folder;
  const folders = folder.parts.filter((part) => part.file < 0);
  const files = folder.parts.filter((part) => part.file >= 0);
  folder.parts = [...groupsOf(folders), ...groupsOf(files)];
  return folder;
}

// At most MOST_GROUPS groups of about the same length, in the order of the parts.
function groupsOf(parts) {
  if (parts.length <= MOST_GROUPS) return parts;
  const count = Math.min(MOST_GROUPS, Math.ceil(parts.length / MOST_GROUPS));
  return Array.from({ length: count }, (_, i) => {
    const begin = Math.round(i * parts.length / count);
    const end = Math.round((i + 1) * parts.length / count);
    const name = shortStart(parts[begin], parts[begin - 1]) + " – " + shortStart(parts[end - 1], parts[end]);
    return { ...newPart(name, ""), parts: groupsOf(parts.slice(begin, end)) };
  });
}

// As much of a name as tells it from its neighbour in another group.
function shortStart({ name }, neighbour) {
  let same = 2;
  while (neighbour && same < name.length && name[same] === neighbour.name[same] &&
         name.startsWith(neighbour.name.slice(0, same))) ++same;
  return name.slice(0, same + 1).replace(/[._ -]+$/, "") || name;
}
