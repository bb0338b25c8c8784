// The view while the program serves it: it follows what the program tells of the site.
import { Site, fetchData, isServed } from "./data.js";
import { announce, element, fill, mark, plain } from "./dom.js";
import { counted, dateText, numberText } from "./format.js";
import { changeBetween, withChange } from "./live_changes.js";
import { fileLink } from "./parts.js";

const PAUSE = 2000;  // ms between two fetches of all data
const MOST_CHANGES = 50;
const CLOCK = new Intl.DateTimeFormat("en-GB", { timeStyle: "medium" });
const STATES = {
  joining: ["unasked", "Joining"],
  live: ["good", "Live"],
  lost: ["warning", "Connection lost, trying again"],
  ended: ["unasked", "The program has ended"],
};

// Null in a report from a file. Made before the data is fetched, so that no change is missed.
export function followedProgram() { return isServed() ? new FollowedProgram() : null; }

class FollowedProgram {
  constructor() {
    this.site = null;
    this.early = [];  // changes that came before the data
    this.news = new Map();
    this.changes = [];
    this.fetched = performance.now();
    this.state = element("p", { class: "live-state", role: "status" });
    this.line = element("section", { class: "live", "aria-label": "Changes", hidden: true });
    document.querySelector(".tabs-row").append(this.state);
    document.querySelector("nav").after(this.line);
    this.tell("joining");
    this.join();
    // A browser keeps few connections to one place, so pages out of sight hold none.
    document.addEventListener("visibilitychange", () => this.seenOrNot());
  }

  // From now on show(site) is called at each change.
  start(site, show) {
    Object.assign(this, { site, show });
    for (const change of this.early.splice(0)) this.take(change);
    if (this.made !== undefined && this.made !== site.data.made) this.fetchSoon();
  }

  tell(state) {
    if (this.now === state) return;
    this.now = state;
    const [shape, words] = STATES[state];
    this.state.className = "live-state live-" + state;
    fill(this.state, mark(shape), " ", words);
  }

  join() {
    this.source = new EventSource("events");
    const on = (name, act) => this.source.addEventListener(name, (event) => act(JSON.parse(event.data || "{}")));
    on("hello", (hello) => this.greet(hello));
    on("change", (change) => (this.site ? this.take(change) : this.early.push(change)));
    on("ended", () => this.end());
    this.source.addEventListener("error", (event) => this.lose(event.target));
  }

  greet({ made }) {
    const wasLost = this.now === "lost";
    this.made = made;
    this.tell("live");
    if (this.site && (wasLost || made !== this.site.data.made)) this.fetchSoon();
  }

  // The browser joins again by itself, unless it has given up.
  lose(source) {
    if (source !== this.source || this.now === "ended") return;
    this.tell("lost");
    if (source.readyState !== EventSource.CLOSED) return;
    setTimeout(() => { if (this.source === source && !document.hidden) this.join(); }, PAUSE);
  }

  end() {
    this.source.close();
    this.tell("ended");
  }

  seenOrNot() {
    if (this.now === "ended") return;
    this.source.close();
    if (!document.hidden) this.join();
  }

  take(change) {
    const known = new Set(this.site.findings.map(({ id }) => id));
    const data = withChange(this.site, change);
    this.note(change, known, new Set(data.findings.map(({ id }) => id)));
    this.showData(data);
    this.fetchSoon();
  }

  // All of the data, not more often than once in a while. What was asked before a change is late.
  fetchSoon() {
    this.isLate = true;
    if (this.isFetching) return;
    this.isFetching = true;
    setTimeout(() => this.fetchNow(), Math.max(0, this.fetched + PAUSE - performance.now()));
  }

  async fetchNow() {
    this.fetched = performance.now();
    this.isLate = false;
    try {
      const data = await fetchData();
      if (!this.isLate) this.takeAll(data);
    } catch {
      this.isLate = this.now === "live";
    }
    this.isFetching = false;
    if (this.isLate) this.fetchSoon();
  }

  takeAll(data) {
    const change = changeBetween(this.site, data);
    this.note(change, new Set(this.site.findings.map(({ id }) => id)), new Set(data.findings.map(({ id }) => id)));
    this.showData(data);
  }

  showData(data) {
    this.site = new Site(data, this.news, this.site);
    fillHead(data);
    this.show(this.site);
    this.showChanges();
  }

  // Keeps what has happened; `before` and `after` are the ids of all findings.
  note({ broke, mended }, before, after) {
    if (broke.length + mended.length === 0) return;
    const rows = [
      ...broke.map((finding) => ({ finding, word: before.has(finding.id) ? "new place" : "new" })),
      ...mended.map((finding) => ({ finding, word: after.has(finding.id) ? "mended in places" : "mended" }))];
    for (const { finding, word } of rows) {
      if (!word.startsWith("new")) this.news.delete(finding.id);
      else if (this.news.get(finding.id) !== "new") this.news.set(finding.id, word);
    }
    this.changes.unshift({ time: CLOCK.format(new Date()), rows });
    this.changes.splice(MOST_CHANGES);
    announce(changeWords(rows) + ": " + plain(rows[0].finding.message));
  }

  showChanges() {
    const [last] = this.changes;
    this.line.hidden = last === undefined;
    if (last === undefined) return;
    const isOpen = this.line.querySelector("details")?.open ?? false;
    const isFocused = this.line.contains(document.activeElement);
    const summary = element("summary", {}, element("time", {}, last.time), " ", changeWords(last.rows));
    fill(this.line, element("details", { open: isOpen }, summary,
      element("ol", {}, this.changes.flatMap(({ time, rows }) => rows.map((row) => this.changeRow(time, row))))));
    if (isFocused) summary.focus({ preventScroll: true });
  }

  changeRow(time, { finding, word }) {
    const isNew = word.startsWith("new");
    const [place] = finding.places;
    const file = typeof place[0] === "string" ? this.site.indexOf(place[0]) : -1;  // a number may be old
    return element("li", {}, element("time", {}, time), " ",
      mark(isNew ? finding.severity : "good"), " ", element("span", { class: "quiet" }, word + ": "),
      plain(finding.message), file >= 0 ? [" in ", fileLink(this.site, file)] : null);
  }
}

// "1 new finding, 2 mended"
function changeWords(rows) {
  const count = (word) => rows.filter((row) => row.word === word).length;
  const parts = [["new", (n) => counted(n, "new finding")],
    ["new place", (n) => counted(n, "finding") + " in new places"],
    ["mended", (n) => numberText(n) + " mended"], ["mended in places", (n) => numberText(n) + " mended in places"]];
  return parts.filter(([word]) => count(word) > 0).map(([word, text]) => text(count(word))).join(", ");
}

function fillHead({ made, totals }) {
  const time = document.querySelector("header time");
  time.dateTime = made;
  time.textContent = dateText(made);
  for (const row of document.querySelectorAll(".totals > div")) {
    const word = row.querySelector("dt").textContent;
    const count = totals[word.toLowerCase()];
    row.classList.toggle("none", count === 0);
    row.querySelector("dd").textContent = numberText(count);
  }
}
