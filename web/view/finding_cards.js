// A finding with its places, and a page with its findings.
import { element, named, plain } from "./dom.js";
import { counted } from "./format.js";
import { shortList } from "./lists.js";
import { commandLine, excerptLine, fileLink, severityMark, titleText } from "./parts.js";
import { addressWith, editorAddress } from "./router.js";

// `row` is { finding, id, places }.
export function findingCard(site, { finding, id, places }) {
  return element("li", { class: "card card-" + finding.severity },
    findingHead(site, finding, id),
    advice(site, finding),
    isAboutItself(finding) ? null : shortList(places, (place) => placeRow(site, place), ["place"]));
}

// A file as a whole, which the message names.
function isAboutItself({ places, targetFile }) {
  return places.length === 1 && places[0][1] === 0 && places[0][0] === targetFile;
}

function findingHead(site, finding, id) {
  return element("div", { class: "card-head" },
    severityMark(finding.severity),
    element("h3", {}, messageText(site, finding)),
    element("span", { class: "card-facts" }, newBadge(site, id), ruleLink(finding.rule),
      element("span", { class: "number" }, counted(finding.places.length, "place"))));
}

// The message; what it is about leads to its own view.
function messageText(site, finding) {
  const { message, target, targetFile } = finding;
  if (targetFile < 0) return plain(message);
  const name = [target, site.pathOf(targetFile)].find((one) => one !== "" && message.includes(one));
  if (name === undefined) return [plain(message), " ", fileLink(site, targetFile)];
  const at = message.indexOf(name);
  return [plain(message.slice(0, at)), fileLink(site, targetFile, name),
    plain(message.slice(at + name.length))];
}

function ruleLink(rule) {
  return element("a", { class: "badge", href: addressWith("findings", { rule }) }, rule);
}

function newBadge(site, id) {
  const news = site.newsOf(id);
  return news ? element("span", { class: "badge badge-new" }, news) : null;
}

// What is likely meant, and the command that mends it.
function advice(site, { suggestion, command }) {
  if (!suggestion && !command) return null;
  const file = site.indexOf(suggestion);
  return element("div", { class: "advice" },
    suggestion ? element("p", {}, "Likely meant: ",
      file >= 0 ? fileLink(site, file) : named(suggestion, { class: "path" })) : null,
    command ? commandLine(command) : null);
}

// "12:7"; nothing for a file as a whole. A link where the reader has told an editor.
function positionText(site, [file, line, column]) {
  if (line <= 0) return null;
  const href = editorAddress(site, file, line, column);
  return element(href ? "a" : "span", { class: "position", href,
    title: (href ? "open in the editor at " : "") + "line " + line + ", column " + column },
    line + ":" + column);
}

function placeRow(site, place) {
  return element("li", {}, element("div", { class: "place-head" }, fileLink(site, place[0]),
    positionText(site, place), titleText(site, place[0])), placeText(site, place));
}

function placeText(site, [, , , reference, excerpt]) {
  if (excerpt >= 0) return excerptLine(site.data.excerpts[excerpt]);
  return reference ? excerptLine([reference, 0, reference.length]) : null;
}

// A page with those of its findings that `found` has, by their numbers.
export function pageCard(site, { file, count, errors }, found) {
  const severity = errors > 0 ? "error" : "warning";
  return element("li", { class: "card card-" + severity },
    element("div", { class: "card-head" },
      severityMark(severity),
      element("h3", {}, fileLink(site, file), " ", titleText(site, file)),
      element("span", { class: "card-facts number" }, counted(count, "place"))),
    shortList(rowsOfFile(site, file, found), (row) => findingRow(site, row), ["place"]));
}

function byLine(rows) {
  return [...rows].sort((a, b) => a.place[1] - b.place[1] || a.place[2] - b.place[2]);
}

// A finding in a page that has been named already.
export function findingRow(site, { finding, id, place }) {
  return element("li", {},
    element("div", { class: "place-head" }, severityMark(finding.severity), positionText(site, place),
      element("span", { class: "message" }, messageText(site, finding), " ", newBadge(site, id), " ",
        ruleLink(finding.rule))),
    placeText(site, place), advice(site, finding));
}

// [{ finding, id, place }] of one file, of all findings or of those in `found`.
export function rowsOfFile(site, file, found = null) {
  const ids = site.findingsIn(file).filter((id) => !found || found.has(id));
  return byLine(ids.flatMap((id) => (found ? found.get(id) : site.findings[id]).places
    .filter((place) => place[0] === file)
    .map((place) => ({ finding: site.findings[id], id, place }))));
}
