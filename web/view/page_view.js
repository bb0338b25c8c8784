// The view of one file, or of one URL of another site.
import { element, fill, mark, named, plain } from "./dom.js";
import { counted, dateText, numberText, secondsText, sizeText } from "./format.js";
import { findingCard, findingRow, rowsOfFile } from "./finding_cards.js";
import { urlState } from "./hosts.js";
import { shortList } from "./lists.js";
import { loadSeconds } from "./pages.js";
import { fileLink, kindBadge, kindWord, nothing, searchField } from "./parts.js";
import { pageAddress } from "./router.js";

// So many links are shown at first; where there are more, they can be searched.
const FIRST_LINKS = 25;

export function showFile(container, site, route) {
  const file = site.indexOf(route.rest);
  if (file < 0) {
    fill(container, element("h2", { tabindex: "-1" }, "Not in this report"),
      element("p", {}, "The report holds nothing named ", named(route.rest, { class: "path" }), "."));
    return "Not in this report";
  }
  const parts = site.isUrl(file)
    ? [urlFacts(site, file), aboutSection(site, file), linksSection(site, file, "in")]
    : [fileFacts(site, file), waySection(site, file), aboutSection(site, file), findingsSection(site, file),
      linksSection(site, file, "in"), linksSection(site, file, "out")];
  fill(container, fileHead(site, file), parts);
  return plain(site.nameOf(file));
}

function fileHead(site, file) {
  const title = site.titleOf(file);
  return element("div", { class: "file-head" }, kindBadge(site.kindOf(file)),
    element("h2", { tabindex: "-1" }, named(title || site.pathOf(file))),
    title ? element("p", { class: "path" }, named(site.pathOf(file))) : null,
    pageLink(site, file));
}

function pageLink(site, file) {
  const href = pageAddress(site, file);
  return href ? element("p", {}, element("a", { href, target: "_blank", rel: "noopener noreferrer" },
    "Open the page in a new tab")) : null;
}

// A list of names and values; values that are empty are left out.
function facts(...rows) {
  return element("dl", { class: "facts" }, rows.filter(([, value]) => value !== "" && value !== null)
    .map(([name, value]) => element("div", {}, element("dt", {}, name), element("dd", {}, value))));
}

function fileFacts(site, file) {
  const isPage = site.kindOf(file) === "page";
  const isRead = isPage || site.outCountOf(file) > 0;
  const weight = site.weightOf(file);
  const requests = site.requestsOf(file);
  return facts(
    ["Size", sizeText(site.sizeOf(file))],
    ["Weight with all it loads", isPage ? sizeText(weight) + " in " + counted(requests, "file") : ""],
    ["Time on a slow phone", isPage ? "about " + secondsText(loadSeconds(site, file)) : ""],
    ["Changed", dateText(site.data.files.time[file])],
    ["Linked from", counted(site.inCountOf(file), "file")],
    ["Links to", isRead ? counted(site.outCountOf(file), "file or URL", "files and URLs") : ""],
    ["From the home page", clicksText(site, file)],
    ["Family of the home page", isRead ? familyText(site, file) : ""],
    ["Findings in it", isRead ? numberText(site.findingsIn(file).length) : ""]);
}

function familyText(site, file) {
  if (site.home < 0) return "";
  return site.isInFamily(file) ? "belongs to it" : "does not belong to it";
}

function clicksText(site, file) {
  if (site.home < 0) return "";
  if (file === site.home) return "this is it";
  return site.depthOf(file) < 0 ? "no way" : counted(site.depthOf(file), "step");
}

function urlFacts(site, url) {
  const state = urlState(site, url);
  const address = site.pathOf(url);
  const host = site.data.urls.host[url - site.fileCount];
  return [facts(["Answer", host < 0 ? "" : [mark(state.mark), " ", plain(state.words)]],
    ["Host", host < 0 ? "" : named(site.data.hosts[host])],
    ["Linked from", counted(site.inCountOf(url), "file")]),
  /^https?:\/\//i.test(address) ? element("p", {}, element("a", { href: address, target: "_blank",
    rel: "noopener noreferrer" }, "Open it in a new tab")) : null];
}

function section(title, ...children) {
  return element("section", {}, element("h3", {}, title), ...children);
}

function waySection(site, file) {
  const way = site.wayTo(file);
  if (way.length < 2) return null;
  return section("Way from the home page", element("ol", { class: "way" },
    way.map((step) => element("li", {}, step === file ? named(site.pathOf(step), { class: "path" })
                                                      : fileLink(site, step)))));
}

// What is wrong with the file as a target: that it is missing, an orphan, and so on.
function aboutSection(site, file) {
  const ids = site.findingsAbout(file);
  if (ids.length === 0) return null;
  const list = element("ol", { class: "cards" });
  for (const id of ids.slice(0, 200)) {
    const finding = site.findings[id];
    list.append(findingCard(site, { finding, id, places: finding.places }));
  }
  return section("What is wrong with " + (site.isUrl(file) ? "this URL" : "references to it"), list);
}

function findingsSection(site, file) {
  const rows = rowsOfFile(site, file);
  if (rows.length === 0) {
    return site.kindOf(file) === "page" ? section("Findings in it", nothing("Nothing is wrong in this page."))
                                        : null;
  }
  return section("Findings in it", shortList(rows, (row) => findingRow(site, row), ["finding"], 50));
}

// Which files lead here, or where this file leads; those with many can be searched.
function linksSection(site, file, direction) {
  const links = joined(direction === "in" ? site.linksTo(file) : site.linksFrom(file));
  const title = direction === "in" ? "Links to it" : "Links from it";
  if (links.length === 0) {
    if (direction === "out") return null;
    return section(title, element("p", { class: "quiet" }, "Nothing refers to it."));
  }
  const list = element("div");
  const show = (text) => fill(list, shortList(links.filter(({ other }) =>
    site.pathOf(other).toLowerCase().includes(text.toLowerCase())),
  (link) => linkRow(site, link, direction), ["link"], FIRST_LINKS));
  show("");
  // As in the facts, where a file is not counted with those that lead to it.
  const others = links.filter(({ other }) => other !== file).length;
  const heading = [title + " ", element("small", {},
    numberText(others) + (others < links.length ? " and itself" : ""))];
  if (links.length <= FIRST_LINKS) return section(heading, list);
  return section(heading, searchField("Search in " + title.toLowerCase(), "", show), list);
}

// Links with the same other end as one: [{ other, kinds, times }].
function joined(links) {
  const byOther = new Map();
  for (const { other, kind, times } of links) {
    if (!byOther.has(other)) byOther.set(other, { other, kinds: [], times: 0 });
    const link = byOther.get(other);
    if (!link.kinds.includes(kind)) link.kinds.push(kind);
    link.times += times;
  }
  return [...byOther.values()];
}

function linkWord(kind) { return kind === "other" ? "other reference" : kindWord(kind); }

function linkRow(site, { other, kinds, times }, direction) {
  const isLoaded = direction === "out" && kinds.some((kind) => kind !== "link") && site.sizeOf(other) >= 0;
  const state = site.isUrl(other) ? urlState(site, other).mark : site.isBroken(other) ? "error" : "";
  return element("li", { class: "link-row" },
    state === "error" || state === "warning" ? mark(state, state) : null,
    fileLink(site, other),
    element("span", { class: "quiet" }, kinds.map(linkWord).join(", "),
      times > 1 ? ", " + numberText(times) + " times" : "",
      isLoaded ? ", " + sizeText(site.sizeOf(other)) : ""));
}
