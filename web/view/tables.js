// Tables of files: sorted, searched, shown some hundred rows at a time.
import { element } from "./dom.js";
import { numberText } from "./format.js";
import { longList } from "./lists.js";
import { countLine, nothing, searchField, selection } from "./parts.js";
import { keepInAddress } from "./router.js";
import { wordsOf } from "./search.js";

// A table that the reader sorts. `columns` are
//   { key, title, cell: (row) => content, by: (row) => a number or text, descends, narrow, spare }
// without `by` it does not sort; the columns with `narrow` stay on a narrow screen, and those with
// `spare` need a wide one.
export class SortedTable {
  // `options`: { name: of the view in the address, label, what: ["page"], columns, rows, values: chosen
  // so far, words: (row) => text in lower case, filters: [[label, rows, key, test(row, value)]] }
  constructor(options) {
    Object.assign(this, options);
    this.values = { q: "", sort: this.columns.find((column) => column.by).key, ...this.values };
    this.count = countLine();
    this.heads = this.columns.map((column) => this.head(column));
    this.body = element("tbody");
    this.rowList = longList(this.body, (row) => this.row(row), this.what);
    this.empty = element("div");
  }

  parts() {
    return [element("div", { class: "tools tools-row" },
        searchField("Search", this.values.q, (text) => this.set("q", text)),
        (this.filters ?? []).map(([label, rows, key]) =>
          selection(label, rows, this.values[key] ?? rows[0][0], (value) => this.set(key, value))),
        this.sorter = selection("Sort", this.columns.filter((column) => column.by)
          .map((column) => [column.key, column.title]), this.sortKey(), (key) => this.set("sort", key))),
      this.count.line,
      element("table", {}, element("caption", { class: "unseen" }, this.label),
        element("thead", {}, element("tr", {}, this.heads)), this.body),
      this.rowList.button, this.empty];
  }

  head(column) {
    const classes = classesOf(column);
    if (!column.by) return element("th", { scope: "col", class: classes }, column.title);
    return element("th", { scope: "col", class: classes, "data-key": column.key },
      element("button", { type: "button", onclick: () => this.sortBy(column.key) }, column.title));
  }

  // A "-" before it turns the order round.
  sortKey() { return this.values.sort.replace(/^-/, ""); }

  // Again, it turns the order round.
  sortBy(key) {
    this.set("sort", this.values.sort === key ? "-" + key : key);
    this.sorter.querySelector("select").value = key;
  }

  set(name, value) {
    this.values[name] = value;
    keepInAddress(this.name, this.values);
    this.refresh();
  }

  refresh() {
    const column = this.columns.find((one) => one.key === this.sortKey() && one.by) ?? this.columns[0];
    const isTurned = this.values.sort.startsWith("-");
    for (const head of this.heads) head.removeAttribute("aria-sort");
    this.heads[this.columns.indexOf(column)].setAttribute("aria-sort",
      Boolean(column.descends) !== isTurned ? "descending" : "ascending");
    const rows = this.wantedRows(this.sorted(column, Boolean(column.descends) !== isTurned));
    this.count.say(rows.length, this.rows.length, ...this.what);
    this.rowList.show(rows);
    this.empty.replaceChildren(...rows.length > 0 ? [] : [nothing("Nothing to show.")]);
  }

  // Kept, so that a key that is typed does not sort.
  sorted(column, isDown) {
    if (this.order !== column || this.isDown !== isDown) {
      Object.assign(this, { order: column, isDown, inOrder: sortedRows(this.rows, column, isDown) });
    }
    return this.inOrder;
  }

  wantedRows(rows) {
    const words = wordsOf(this.values.q);
    const filters = (this.filters ?? []).filter(([, , key]) => this.values[key]);
    return rows.filter((row) => words.every((word) => this.words(row).includes(word)) &&
      filters.every(([, , key, test]) => test(row, this.values[key])));
  }

  row(row) {
    return element("tr", {}, this.columns.map((column) =>
      element(column.isHead ? "th" : "td", { scope: column.isHead ? "row" : null,
        class: classesOf(column) }, column.cell(row))));
  }
}

function classesOf(column) {
  const place = column.narrow ? "" : column.spare ? "widest" : "wide";
  return [place, column.class ?? ""].join(" ").trim() || null;
}

// Equal rows stay as they are.
function sortedRows(rows, { by }, isDown) {
  const keys = new Map(rows.map((row) => [row, by(row)]));
  const turn = isDown ? -1 : 1;
  return [...rows].sort((a, b) => {
    const [x, y] = [keys.get(a), keys.get(b)];
    return x < y ? -turn : x > y ? turn : 0;
  });
}

// A bar as long as its part of the whole, for the eye only: the number stands beside it.
export function bar(part, whole) {
  const line = element("span", { class: "bar", "aria-hidden": "true" });
  line.style.setProperty("--part", whole > 0 ? (100 * part / whole).toFixed(1) + "%" : "0%");
  return line;
}

// A column of numbers, the largest first.
export function numberColumn(key, title, by) {
  return { key, title, class: "number", descends: true, by, cell: (row) => quietNumber(by(row)) };
}

// A number that is left out when it is 0.
export function quietNumber(value) {
  return value === 0 ? element("span", { class: "quiet" }, "0") : numberText(value);
}
