// The address after "#": #/findings?rule=missing-file, #/file/news/index.htm. Each view has one, so
// that it can be kept, sent, and left with the button "back".

const FIRST_VIEW = "/findings";

// { name: "file", rest: "news/index.htm", params }
export function currentRoute() {
  const [path, query = ""] = (location.hash.slice(1) || FIRST_VIEW).split(/\?(.*)/s);
  const [name, ...rest] = path.replace(/^\//, "").split("/");
  return { name, rest: decoded(rest.join("/")), params: new URLSearchParams(query) };
}

function decoded(text) {
  try {
    return decodeURIComponent(text);
  } catch {
    return text;
  }
}

// The address of the view of a file or URL.
export function addressOf(site, index) {
  const path = site.pathOf(index);
  return site.isUrl(index) ? "#/url/" + encodeURIComponent(path)
                           : "#/file/" + path.split("/").map(encodeURIComponent).join("/");
}

// "#/findings?rule=missing-file"; values that are empty are left out.
export function addressWith(name, values) {
  const wanted = Object.entries(values).filter(([, value]) => value !== "" && value !== false);
  const query = new URLSearchParams(wanted).toString();
  return "#/" + name + (query ? "?" + query : "");
}

let waiting = 0;

// Keeps in the address what the reader has chosen, without a step for the button "back". Not at
// once: browsers refuse when it changes with every key.
export function keepInAddress(name, values) {
  clearTimeout(waiting);
  const address = addressWith(name, values);
  waiting = setTimeout(() => history.replaceState({ seen: true }, "", address), 250);
}

// Where the reader was in each view, for the button "back".
const positions = new Map();

// Calls `show(route)` now and whenever the address changes. `show` returns how far it could scroll
// when it is called again with `position`.
export function followAddress(show) {
  let current = location.hash;
  addEventListener("scroll", () => positions.set(current, scrollY), { passive: true });
  const go = (isFirst) => {
    clearTimeout(waiting);
    const isBack = history.state !== null && history.state.seen === true;
    current = location.hash;
    const position = isBack ? positions.get(current) ?? 0 : 0;
    history.replaceState({ seen: true }, "", location.hash || "#" + FIRST_VIEW);
    show(currentRoute(), isFirst);
    if (!isFirst) scrollTo(0, position);
  };
  addEventListener("hashchange", () => go(false));
  go(true);
}
