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
                           : "#/file/" + path.split("/").map(encodeURIComponent).join("/");
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
