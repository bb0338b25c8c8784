// Draws the view that is open anew, and leaves the reader where he was: the focus, what is in sight,
// what is opened and typed.
import { rowsShown, showRows } from "./lists.js";

const FOCUSED = "a[href], button, input, select, summary, [tabindex]";
const ROWS = ".card, tbody tr, section";

// `draw` fills the element anew.
export function drawAnew(main, draw) {
  const restore = [keptRows(), keptFields(main), keptDetails(main), keptPlaces(main), keptFocus(main),
    keptSight(main)];
  draw();
  for (const step of restore) step();
}

function keptRows() {
  const counts = rowsShown();
  return () => showRows(counts);
}

// By what an element is called; numbers in it may change.
function callOf(element) {
  const heading = element.matches(ROWS) ? element.querySelector("h3, th") : null;
  return [element.localName, element.getAttribute("aria-label"), element.getAttribute("href"),
    element.dataset.value, (heading ?? element).textContent.slice(0, 300)].join("\n")
    .replace(/[\d,]+/g, "0");
}

// Elements under their names, those with the same name in their order.
function underNames(elements) {
  const found = new Map();
  const times = new Map();
  for (const element of elements) {
    const call = callOf(element);
    times.set(call, (times.get(call) ?? 0) + 1);
    found.set(call + "\n" + times.get(call), element);
  }
  return found;
}

// What is typed stands in the address too, unless the browser refused that.
function keptFields(main) {
  const values = [...main.querySelectorAll("input")].map((input) => input.value);
  return () => main.querySelectorAll("input").forEach((input, i) => {
    if (values[i] === undefined || input.value === values[i]) return;
    input.value = values[i];
    input.dispatchEvent(new Event("input"));
  });
}

function keptDetails(main) {
  const all = () => underNames([...main.querySelectorAll("details > summary")]);
  const open = [...all()].filter(([, summary]) => summary.parentElement.open).map(([name]) => name);
  return () => {
    const now = open.length > 0 ? all() : new Map();
    for (const name of open) {
      if (now.has(name)) now.get(name).parentElement.open = true;
    }
  };
}

// Lists inside of a card, of which the reader has asked for more.
function keptPlaces(main) {
  const all = () => underNames([...main.querySelectorAll(".card, section")]
    .filter((card) => card.querySelector(":scope > .more-places") !== null));
  const listOf = (card) => card.querySelector(":scope > .places");
  const counts = [...all()].map(([name, card]) => [name, listOf(card).children.length]);
  return () => {
    const now = all();
    for (const [name, count] of counts) {
      const card = now.get(name);
      const button = card?.querySelector(":scope > .more-places");
      while (button && !button.hidden && listOf(card).children.length < count) button.click();
    }
  };
}

function keptFocus(main) {
  const focused = document.activeElement;
  if (focused === main || !main.contains(focused)) return () => {};
  const name = nameIn(main, FOCUSED, focused);
  const [start, end] = focused.localName === "input" ? [focused.selectionStart, focused.selectionEnd] : [];
  return () => {
    const now = underNames([...main.querySelectorAll(FOCUSED)]).get(name) ?? main.querySelector("h2");
    now?.focus({ preventScroll: true });
    if (start !== undefined && now?.localName === "input") now.setSelectionRange(start, end);
  };
}

function nameIn(main, selector, element) {
  for (const [name, other] of underNames([...main.querySelectorAll(selector)])) {
    if (other === element) return name;
  }
  return "";
}

// The first row in sight stays where it is.
function keptSight(main) {
  const top = scrollY;
  const below = document.querySelector("nav").getBoundingClientRect().bottom;
  const row = top > 0 ? [...main.querySelectorAll(ROWS)].find((one) =>
    one.getBoundingClientRect().bottom > below) : undefined;
  const name = row ? nameIn(main, ROWS, row) : "";
  const height = row?.getBoundingClientRect().top;
  return () => {
    scrollTo(0, top);
    const now = row ? underNames([...main.querySelectorAll(ROWS)]).get(name) : undefined;
    if (now) scrollBy(0, now.getBoundingClientRect().top - height);
  };
}
