// Walks over the links of a site.

// The links turned round: those to file i are from starts[i] to starts[i + 1] of `positions` (in the
// links given) and `sources`, by ascending source.
export function backwards({ starts, targets }, count) {
  const ends = new Uint32Array(count + 1);
  for (const target of targets) ++ends[target + 1];
  for (let i = 0; i < count; ++i) ends[i + 1] += ends[i];
  const next = ends.slice();
  const positions = new Uint32Array(targets.length);
  const sources = new Uint32Array(targets.length);
  for (let source = 0; source + 1 < starts.length; ++source) {
    for (let at = starts[source]; at < starts[source + 1]; ++at) {
      const to = next[targets[at]]++;
      positions[to] = at;
      sources[to] = source;
    }
  }
  return { starts: ends, positions, sources };
}

// How far each file is from `home`, and the file before it on a shortest way; -1 for no way.
export function shortestWays({ starts, targets }, home, count) {
  const depths = new Int32Array(count).fill(-1);
  const before = new Int32Array(count).fill(-1);
  if (home < 0) return { depths, before };
  depths[home] = 0;
  const queue = [home];
  for (let head = 0; head < queue.length; ++head) {
    const file = queue[head];
    if (file + 1 >= starts.length) continue;  // a URL of another site
    for (let at = starts[file]; at < starts[file + 1]; ++at) {
      const target = targets[at];
      if (depths[target] >= 0) continue;
      depths[target] = depths[file] + 1;
      before[target] = file;
      queue.push(target);
    }
  }
  return { depths, before };
}
