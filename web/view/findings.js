// The view of what is wrong: searched, filtered, grouped by what is wrong or by page.
import { element, fill, mark } from "./dom.js";
import { counted, numberText } from "./format.js";
import { findingCard, pageCard } from "./finding_cards.js";
import { longList } from "./lists.js";
import { choice, countLine, nothing, searchField, selection } from "./parts.js";
import { keepInAddress } from "./router.js";
import { foldersWithFindings, groupByPage, searchFindings, sortFindings } from "./search.js";
import { sinceLastReport, staleNotice } from "./since.js";

const SORTS = [["", "Errors first"], ["places", "Most places"], ["target", "Name"], ["rule", "Rule"]];

export function showFindings(container, site, route) {
  const view = new FindingsView(site, route.params);
  fill(container, element("h2", { tabindex: "-1" }, "Findings"), view.parts());
  view.refresh();
  return "Findings";
}

class FindingsView {
  constructor(site, params) {
    this.site = site;
    this.wanted = {};
    for (const name of ["q", "severity", "rule", "folder", "by", "sort", "fresh"]) {
      this.wanted[name] = params.get(name) ?? "";
    }
    this.count = countLine();
    this.rules = element("div", { class: "chips", role: "group", "aria-label": "Rule" });
    this.severities = element("div", { class: "chips", role: "group", "aria-label": "Severity" });
    this.list = element("ol", { class: "cards" });
    this.cards = longList(this.list, (row) => this.card(row), ["finding"], 12);
    this.empty = element("div");
  }

  parts() {
    const { wanted } = this;
    const folders = foldersWithFindings(this.site).map(([path, places]) =>
      [path, (path === "" ? "All folders" : path + "/") + " (" + numberText(places) + ")"]);
    return [
      staleNotice(this.site),
      sinceLastReport(this.site, wanted.fresh !== "", (fresh) => this.set("fresh", fresh ? "1" : "")),
      this.site.findings.length === 0 ? null : element("div", { class: "tools" },
        searchField("Search in findings", wanted.q, (text) => this.set("q", text)),
        element("div", { class: "tools-row" }, this.severities, this.rules),
        element("div", { class: "tools-row" },
          choice("Group by", [["", "By finding"], ["page", "By page"]], wanted.by,
            (by) => this.set("by", by)),
          folders.length > 1 ? selection("Folder", folders, wanted.folder,
            (folder) => this.set("folder", folder)) : null,
          selection("Sort", SORTS, wanted.sort, (sort) => this.set("sort", sort)))),
      this.count.line, this.list, this.cards.button, this.empty,
    ];
  }

  set(name, value) {
    this.wanted[name] = value;
    keepInAddress("findings", this.wanted);
    this.refresh();
  }

  refresh() {
    const { site, wanted } = this;
    const answer = searchFindings(site, wanted);
    this.showChips(answer);
    const isByPage = wanted.by === "page";
    this.cards.what = [isByPage ? "page" : "finding"];
    this.found = isByPage ? new Map(answer.found.map((row) => [row.id, row])) : null;
    this.cards.show(isByPage ? groupByPage(site, answer.found, wanted.sort)
                             : sortFindings(answer.found, wanted.sort));
    this.count.line.textContent = site.findings.length === 0 ? "" : this.countText(answer);
    fill(this.empty, answer.found.length > 0 ? null
      : nothing(site.findings.length === 0 ? "Nothing is wrong with this site."
                                           : "Nothing is found with this choice."));
  }

  countText({ found, places }) {
    const all = this.site.findings.length;
    return (found.length === all ? counted(all, "finding")
                                 : numberText(found.length) + " of " + counted(all, "finding")) +
      " in " + counted(places, "place");
  }

  card(row) {
    return this.found ? pageCard(this.site, row, this.found) : findingCard(this.site, row);
  }

  showChips({ bySeverity, byRule }) {
    fill(this.severities,
      this.chip("severity", "error", [mark("error"), "Errors"], bySeverity.get("error")),
      this.chip("severity", "warning", [mark("warning"), "Warnings"], bySeverity.get("warning")));
    const rules = [...new Set(this.site.findings.map((finding) => finding.rule))].sort();
    fill(this.rules, rules.map((rule) => this.chip("rule", rule, [rule], byRule.get(rule))));
  }

  // Pressed again, it takes all.
  chip(name, value, label, count = 0) {
    const isPressed = this.wanted[name] === value;
    return element("button", { type: "button", class: "chip", "data-value": value,
        "aria-pressed": String(isPressed), onclick: () => this.press(name, value) },
      label, " ", element("span", { class: "chip-count" }, numberText(count)));
  }

  press(name, value) {
    this.set(name, this.wanted[name] === value ? "" : value);
    // The chips have been made anew.
    for (const chip of (name === "rule" ? this.rules : this.severities).children) {
      if (chip.dataset.value === value) chip.focus();
    }
  }
}
