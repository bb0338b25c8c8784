// Pieces that several views are made of.
import { announce, element, mark, named, plain } from "./dom.js";
import { addressOf } from "./router.js";
import { counted, numberText } from "./format.js";

// A link to the view of a file or URL, with its path, or with `text`.
export function fileLink(site, index, text = site.pathOf(index)) {
  return element("a", { href: addressOf(site, index), class: "path" }, named(text));
}

// The title of a page in quotes; nothing where there is none.
export function titleText(site, index) {
  const title = site.titleOf(index);
  return title ? named("“" + title + "”", { class: "title" }) : null;
}

const KIND_WORDS = { sheet: "style sheet", other: "other file", outside: "outside of the site",
  url: "other site" };

export function kindWord(kind) { return KIND_WORDS[kind] ?? kind; }

export function kindBadge(kind) {
  return element("span", { class: "badge badge-" + kind }, kindWord(kind));
}

export function severityMark(severity) { return mark(severity, severity); }

// The line where a reference stands, with the reference marked. `excerpt` is [text, offset, length].
export function excerptLine([text, offset, length]) {
  return element("code", { class: "excerpt", dir: "ltr" },
    plain(text.slice(0, offset)),
    element("mark", {}, plain(text.slice(offset, offset + length))),
    plain(text.slice(offset + length)));
}

// A command to be run, with a button that copies it.
export function commandLine(command) {
  const code = element("code", {}, command);
  const button = element("button", { type: "button", class: "copy",
    onclick: () => copyText(command, code, button) }, "Copy");
  return element("div", { class: "command" }, code, button);
}

async function copyText(text, code, button) {
  const isCopied = await copied(text) || copiedBySelection(code);
  button.textContent = isCopied ? "Copied" : "Selected";
  announce(isCopied ? "Command copied" : "Command selected; copy it with the keyboard");
  setTimeout(() => { button.textContent = "Copy"; }, 2000);
}

// Pages opened from the disk have no clipboard in some browsers.
async function copied(text) {
  try {
    await navigator.clipboard.writeText(text);
    return true;
  } catch {
    return false;
  }
}

// Leaves the text selected, so that the keyboard can copy it.
function copiedBySelection(code) {
  getSelection().selectAllChildren(code);
  try {
    return document.execCommand("copy");
  } catch {
    return false;
  }
}

// A group of buttons of which one is pressed: choice("Group by", "by", [["target", "Target"], ..],
// "target", (value) => ..).
export function choice(label, rows, chosen, choose) {
  const buttons = rows.map(([value, text]) => element("button", { type: "button", "data-value": value,
    "aria-pressed": String(value === chosen), onclick: () => press(value) }, text));
  const press = (value) => {
    for (const button of buttons) button.setAttribute("aria-pressed", String(button.dataset.value === value));
    choose(value);
  };
  return element("div", { class: "choice", role: "group", "aria-label": label }, buttons);
}

// A labelled list to choose from; rows are [value, text].
export function selection(label, rows, chosen, choose) {
  const select = element("select", { onchange: () => choose(select.value) },
    rows.map(([value, text]) => element("option", { value, selected: value === chosen }, plain(text))));
  return element("label", { class: "field" }, element("span", {}, label), select);
}

// A labelled search field that calls search(text) with every key.
export function searchField(label, text, search) {
  const input = element("input", { type: "search", value: text, autocomplete: "off", spellcheck: "false",
    placeholder: label, "aria-label": label, oninput: () => search(input.value) });
  return element("div", { class: "search", role: "search", "aria-label": label }, input);
}

// Where a list would be empty.
export function nothing(...children) {
  return element("p", { class: "nothing" }, mark("good"), element("span", {}, ...children));
}

// How many rows a list shows, also for screen readers.
export function countLine() {
  const line = element("p", { class: "count", role: "status" });
  return { line, say: (shown, all, ...what) => {
    line.textContent = (shown === all ? "" : numberText(shown) + " of ") + counted(all, ...what);
  } };
}
