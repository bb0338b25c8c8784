// Saves the map as a picture that stands alone: its looks are written into it.

const LOOKS = ["fill", "fill-opacity", "stroke", "stroke-opacity", "stroke-width", "stroke-dasharray",
  "paint-order", "font-family", "font-size", "font-weight", "text-anchor"];
const DRAWN = "rect, path, circle, text";

export function saveMap(svg, name, format) {
  const { width, height } = svg.viewBox.baseVal;
  const picture = new Blob([pictureOf(svg)], { type: "image/svg+xml" });
  if (format === "svg") {
    offer(picture, name + ".svg");
    return;
  }
  const scale = Math.max(2, devicePixelRatio);
  const image = new Image();
  const address = URL.createObjectURL(picture);
  image.onload = () => {
    const canvas = Object.assign(document.createElement("canvas"), { width: width * scale, height: height * scale });
    canvas.getContext("2d").drawImage(image, 0, 0, canvas.width, canvas.height);
    URL.revokeObjectURL(address);
    canvas.toBlob((blob) => offer(blob, name + ".png"));
  };
  image.src = address;
}

// The drawing as a document of its own. What areas say to screen readers becomes what a browser
// shows when the mouse rests on them.
function pictureOf(svg) {
  const copy = svg.cloneNode(true);
  const originals = svg.querySelectorAll("*");
  copy.querySelectorAll("*").forEach((element, i) => carryLooks(originals[i], element));
  copy.querySelectorAll(".map-cursor").forEach((cursor) => cursor.remove());
  const { width, height } = svg.viewBox.baseVal;
  for (const { name } of [...copy.attributes]) if (name !== "viewBox") copy.removeAttribute(name);
  copy.setAttribute("width", width);
  copy.setAttribute("height", height);
  const ground = copy.ownerDocument.createElementNS(svg.namespaceURI, "rect");
  for (const [key, value] of Object.entries({ width, height, fill: getComputedStyle(svg).backgroundColor })) ground.setAttribute(key, value);
  copy.prepend(ground);
  for (const element of copy.querySelectorAll("[class]")) element.removeAttribute("class");
  // Two code points that XML cannot hold.
  return new XMLSerializer().serializeToString(copy).replace(/[\ufffe\uffff]/g, "\ufffd");
}

function carryLooks(original, copy) {
  if (original.matches(DRAWN)) {
    const style = getComputedStyle(original);
    for (const look of LOOKS) copy.setAttribute(look, style.getPropertyValue(look).replace(/url\("?[^")]*#/, "url(#").replace(/"\)/, ")"));
  }
  const label = copy.getAttribute("aria-label");
  if (label) {
    const title = copy.ownerDocument.createElementNS(copy.namespaceURI, "title");
    title.textContent = label;
    copy.prepend(title);
  }
  for (const { name } of [...copy.attributes]) {
    if (/^(aria-|data-|role$|tabindex$)/.test(name)) copy.removeAttribute(name);
  }
}

function offer(blob, name) {
  const address = URL.createObjectURL(blob);
  const link = Object.assign(document.createElement("a"), { href: address, download: name });
  link.click();
  setTimeout(() => URL.revokeObjectURL(address), 10000);
}
