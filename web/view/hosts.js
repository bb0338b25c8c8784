// The view of other sites: which hosts the pages lead to, and what their servers have answered.
import { element, fill, mark, named, plain } from "./dom.js";
import { counted } from "./format.js";
import { shortList } from "./lists.js";
import { fileLink, nothing } from "./parts.js";
import { SortedTable, numberColumn } from "./tables.js";

const CHOICES = [["", "all hosts"], ["bad", "hosts with faults"], ["unasked", "hosts not asked"]];

export function showHosts(container, site, route) {
  fill(container, element("h2", { tabindex: "-1" }, "Hosts of other sites"));
  if (site.data.hosts.length === 0) {
    container.append(nothing("This site links to no other site."));
    return "Hosts";
  }
  const hosts = hostRows(site);
  const table = new SortedTable({ name: "hosts", label: "Hosts of other sites", what: ["host"],
    rows: hosts, columns: hostColumns(site), words: (row) => row.words,
    filters: [["Show", CHOICES, "show",
      (row, show) => (show === "bad" ? row.errors + row.warnings > 0 : row.asked < row.urls.length)]],
    values: Object.fromEntries(route.params) });
  if (hosts.every((row) => row.asked === 0)) {
    container.append(element("p", { class: "note" },
      "No server has been asked yet: ", element("code", {}, "zvrsit urls NAME --check"), " does it."));
  }
  container.append(...table.parts().flat(2));
  table.refresh();
  return "Hosts";
}

// [{ host, urls, links, asked, errors, warnings, words }]; errors and warnings are numbers of URLs.
function hostRows(site) {
  return site.once("hosts", () => {
    const rows = site.data.hosts.map((host) => ({ host, urls: [], links: 0, asked: 0, errors: 0,
      warnings: 0, words: "" }));
    site.data.urls.host.forEach((host, i) => {
      if (host < 0) return;
      const url = site.fileCount + i;
      const row = rows[host];
      row.urls.push(url);
      row.links += site.inCountOf(url);
      const state = urlState(site, url).mark;
      if (state !== "unasked") ++row.asked;
      if (state === "error") ++row.errors;
      if (state === "warning") ++row.warnings;
    });
    for (const row of rows) {
      row.words = [row.host, ...row.urls.map((url) => site.pathOf(url))].join("\n").toLowerCase();
    }
    return rows.filter((row) => row.urls.length > 0);
  });
}

const STATE_MARKS = { "": "unasked", ok: "good", broken: "error", moved: "warning", unsure: "warning" };

// What is known of a URL: { mark, words }. An answer that is kept counts also where it is no finding.
export function urlState(site, url) {
  const found = site.findingsAbout(url).map((id) => site.findings[id]);
  const state = site.data.urls.state[url - site.fileCount];
  const result = site.data.urls.result[url - site.fileCount];
  const worst = found.find((finding) => finding.severity === "error") ?? found[0];
  if (worst) return { mark: worst.severity, words: worst.message };
  return { mark: STATE_MARKS[state],
    words: state === "" ? "not asked" : state === "ok" ? "answered " + result : result };
}

function hostColumns(site) {
  return [
    { key: "host", title: "Host", narrow: true, isHead: true, class: "name", by: (row) => row.host,
      cell: (row) => hostCell(site, row) },
    { key: "bad", title: "Result", narrow: true, class: "result", descends: true,
      by: (row) => row.errors * 1e9 + row.warnings * 1e4 + row.asked, cell: (row) => resultCell(row) },
    numberColumn("urls", "URLs", (row) => row.urls.length),
    numberColumn("links", "Links", (row) => row.links),
  ];
}

// Opened, it shows the URLs of the host.
function hostCell(site, row) {
  const details = element("details", {}, element("summary", {}, named(row.host)));
  details.addEventListener("toggle", () => {
    if (details.open && details.children.length === 1) {
      details.append(...shortList(row.urls, (url) => urlRow(site, url), ["URL"], 25));
    }
  });
  return details;
}

function urlRow(site, url) {
  const state = urlState(site, url);
  return element("li", {}, fileLink(site, url), " ",
    element("span", { class: "state" }, mark(state.mark), " ", plain(state.words)), " ",
    element("span", { class: "quiet" }, counted(site.inCountOf(url), "page")));
}

function resultCell({ urls, asked, errors, warnings }) {
  if (errors + warnings > 0) {
    return [errors > 0 ? element("div", {}, mark("error"), " ", errors + " broken") : null,
      warnings > 0 ? element("div", {}, mark("warning"), " ", warnings + " moved or unsure") : null];
  }
  if (asked === 0) return [mark("unasked"), " ", element("span", { class: "quiet" }, "not asked")];
  return [mark("good"), " ", asked === urls.length ? "all answer" : asked + " of " + urls.length + " asked"];
}
