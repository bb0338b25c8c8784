// Makes elements. Names and texts of a site only ever become text nodes and attribute values.

const SVG = "http://www.w3.org/2000/svg";

// element("a", { href, class: "x", onclick: f }, "text", otherElement, [more]). Attributes and
// children that are null or false are left out.
export function element(tag, attributes = {}, ...children) {
  return furnish(document.createElement(tag), attributes, children);
}

// The same for a part of a drawing.
export function svgElement(tag, attributes = {}, ...children) {
  return furnish(document.createElementNS(SVG, tag), attributes, children);
}

function furnish(made, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value === null || value === undefined || value === false) continue;
    if (typeof value === "function") made.addEventListener(name.slice(2), value);
    else made.setAttribute(name, value === true ? "" : String(value));
  }
  made.append(...present(children));
  return made;
}

function present(children) {
  return children.flat(3).filter((child) => child !== null && child !== undefined && child !== false);
}

// Characters that show nothing, or turn the direction of the text around them.
const HIDDEN = /[\u0000-\u001f\u007f-\u009f\u061c\u200b\u200e\u200f\u2028-\u202e\u2066-\u2069\ufeff]/g;

// A name or text with such characters written as \u202e, so that it cannot look like another one.
export function plain(text) {
  return text.replace(HIDDEN, (c) => "\\u" + c.charCodeAt(0).toString(16).padStart(4, "0"));
}

// A name or text of the site, kept apart from the direction of the text around it.
export function named(text, attributes = {}) {
  return element("bdi", attributes, plain(text));
}

// Each mark has a shape of its own: colour alone says nothing.
const SHAPES = {
  error: ["M5.2 1h5.6L15 5.2v5.6L10.8 15H5.2L1 10.8V5.2z", "M5.5 5.5l5 5m0-5l-5 5"],
  warning: ["M8 1.2L15.4 14.5H.6z", "M8 6v4m0 1.6v1.4"],
  good: ["M8 1a7 7 0 1 0 0 14A7 7 0 0 0 8 1z", "M4.7 8.3l2.3 2.3 4.3-4.8"],
  unasked: ["M8 1a7 7 0 1 0 0 14A7 7 0 0 0 8 1z", "M4.8 8h6.4"],
};

// A small mark: "error", "warning", "good" or "unasked". `label` is what it says to those who do not
// see it; without one it is decoration.
export function mark(name, label = "") {
  const [outline, inner] = SHAPES[name];
  return svgElement("svg", { class: "mark mark-" + name, viewBox: "0 0 16 16", width: 16, height: 16,
      focusable: "false", role: label ? "img" : null, "aria-label": label || null,
      "aria-hidden": label ? null : "true" },
    svgElement("path", { class: "mark-outline", d: outline }),
    svgElement("path", { class: "mark-inner", d: inner }));
}

// Puts these in the place of what the element holds.
export function fill(container, ...children) {
  container.replaceChildren(...present(children));
}

// Says it to screen readers.
export function announce(text) {
  document.getElementById("said").textContent = text;
}
