// Lists of any length: rows are made when the reader comes near them.
import { element } from "./dom.js";
import { counted, numberText } from "./format.js";

const STEP = 100;
// At first only as many as a screen shows, so that each key that is typed in a search shows at once.
const FIRST_ROWS = 30;
// As many rows are printed, and parts of them; a browser lays out more of them too slowly.
const PRINTED = 1000;
const PRINTED_PARTS = 2000;

// Shows `items` in `list`, a list or the body of a table, each as makeRow(item). The button under it
// shows the next ones, and is pressed by itself when it comes into sight.
class LongList {
  constructor(list, makeRow, what, first) {
    this.list = list;
    this.makeRow = makeRow;
    this.items = [];
    this.what = what;
    this.first = first;
    this.button = element("button", { type: "button", class: "more", hidden: true,
      onclick: () => this.showMore() });
    this.observer = new IntersectionObserver((entries) => {
      if (entries.some((entry) => entry.isIntersecting)) this.append(STEP);
    }, { rootMargin: "400px" });
  }

  show(items) {
    this.items = items;
    this.list.replaceChildren();
    this.shown = 0;
    this.append(this.first);
  }

  append(count) {
    const end = Math.min(this.shown + count, this.items.length);
    const rows = document.createDocumentFragment();
    while (this.shown < end) rows.append(this.makeRow(this.items[this.shown++]));
    this.list.append(rows);
    const left = this.items.length - this.shown;
    this.button.hidden = left === 0;
    this.button.textContent = "Show more: " + numberText(left) + " of " +
      counted(this.items.length, ...this.what) + " left";
    // Observed anew, it tells again when it is still in sight.
    this.observer.unobserve(this.button);
    if (left > 0) this.observer.observe(this.button);
  }

  // By hand: the keyboard goes on with the first new row.
  showMore() {
    const before = this.shown;
    this.append(STEP);
    this.list.children[before]?.querySelector("a, button")?.focus();
  }
}

// The first items of a list inside of a card, with a button for more of them.
export function shortList(items, makeRow, what, first = 4) {
  const list = element("ul", { class: "places" });
  let shown = 0;
  const button = element("button", { type: "button", class: "more-places" });
  const append = (count) => {
    const before = shown;
    for (const end = Math.min(items.length, shown + count); shown < end; ++shown) {
      list.append(makeRow(items[shown]));
    }
    button.hidden = shown === items.length;
    button.textContent = "Show more: " + numberText(items.length - shown) + " of " +
      counted(items.length, ...what) + " left";
    return list.children[before];
  };
  append(items.length <= first + 1 ? items.length : first);
  button.addEventListener("click", () => append(STEP)?.querySelector("a, code")?.focus());
  return [list, button];
}

// The lists of the view that is shown, for printing.
let listsOfView = [];

export function forgetLists() {
  for (const list of listsOfView) list.observer.disconnect();
  listsOfView = [];
}

// Shows so many rows that the view is as high as this, where there are as many.
export function growLists(height) {
  for (const list of listsOfView) {
    while (document.documentElement.scrollHeight < height && list.shown < list.items.length) {
      list.append(STEP);
    }
  }
}

// How many rows each list shows, and as many again.
export function rowsShown() { return listsOfView.map((list) => list.shown); }

export function showRows(counts) {
  listsOfView.forEach((list, i) => list.append(Math.max(0, (counts[i] ?? 0) - list.shown)));
}

// A LongList in `list`, and its button.
export function longList(list, makeRow, what, first = FIRST_ROWS) {
  const made = new LongList(list, makeRow, what, first);
  listsOfView.push(made);
  return made;
}

// Paper does not scroll.
addEventListener("beforeprint", () => {
  for (const rows of listsOfView) {
    const end = Math.min(PRINTED, rows.items.length);
    while (rows.shown < end && rows.list.querySelectorAll("li").length < PRINTED_PARTS) {
      rows.append(Math.min(STEP, end - rows.shown));
    }
  }
});
