// The address after "#": #/findings?rule=missing-file, #/file/news/index.htm. Each view has one, so
// that it can be kept, sent, and left with the button "back".
import { growLists } from "./lists.js";

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
                           : "#/file/" + encodedPath(path);
}

// The address that opens a place in the editor of the reader; null where none is known.
export function editorAddress(site, file, line, column) {
  const { editor } = site.data;
  if (!editor) return null;
  const values = { path: encodedPath(absolutePath(site, file)), line, column };
  return editor.replace(/\{(path|line|column)\}/g, (_, name) => values[name]);
}

function absolutePath(site, file) {
  const path = site.pathOf(file);
  return site.kindOf(file) === "outside" ? path : site.data.site.folder + path;
}

function encodedPath(path) { return path.split("/").map(encodeURIComponent).join("/"); }

// The page itself, as the program serves it; null in a report from a file.
export function pageAddress(site, file) {
  const { siteAddress } = site.data;
  if (!siteAddress || site.kindOf(file) !== "page") return null;
  const address = new URL(siteAddress);
  address.pathname = address.pathname.replace(/\/$/, "") + "/" + encodedPath(site.pathOf(file));
  return address.href;
}

// "#/findings?rule=missing-file"; values that are empty are left out.
export function addressWith(name, values) {
  const wanted = Object.entries(values).filter(([, value]) => value !== "" && value !== false);
  const query = new URLSearchParams(wanted).toString();
  return "#/" + name + (query ? "?" + query : "");
}

// The view that is shown, which the address may be ahead of.
let here = "";

// Keeps in the address what the reader has chosen, without a step for the button "back".
export function keepInAddress(name, values) {
  setAddress(addressWith(name, values));
}

function setAddress(address) {
  try {
    history.replaceState({ seen: true }, "", address);
  } catch {
    // Browsers refuse when it changes too often; the next change sets it.
  }
  here = location.hash;
}

// Where the reader was in each view, for the button "back".
const positions = new Map();

// Calls show(route, isFirst) now and whenever the address changes.
export function followAddress(show) {
  history.scrollRestoration = "manual";
  const go = (isFirst) => {
    positions.set(here, scrollY);
    const isBack = history.state !== null && history.state.seen === true;
    setAddress(location.hash || "#" + FIRST_VIEW);
    const position = isBack ? positions.get(here) ?? 0 : 0;
    show(currentRoute(), isFirst);
    if (isFirst) return;
    growLists(position + innerHeight);
    scrollTo(0, position);
  };
  addEventListener("hashchange", () => go(false));
  go(true);
}
