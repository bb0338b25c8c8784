// Marks the findings of a page in the page itself, as the program serves it. What is drawn lies in a
// shadow tree, so that the styles of the page and of the marks do not meet; the page stays as it is.
(() => {
  const ATTRIBUTES = ["href", "src", "srcset", "imagesrcset", "poster", "data", "action", "formaction", "cite",
    "background", "longdesc", "usemap", "classid", "codebase", "archive", "code", "profile", "manifest"];
  const KEPT = "zvrsit-marks";  // in localStorage: "hidden"

  const STYLE = `
    :host { all: initial; --good: #1a6b3a; --card: #fff; --text: #1b2330;
      --quiet: #55606f; --edge: #77838f; --link: #0a58a8; }
    @media (prefers-color-scheme: dark) {
      :host { --good: #74d295; --card: #1a2029; --text: #e6eaf0;
        --quiet: #a5b0be; --edge: #76839a; --link: #86bcff; }
    }
    @media print { :host { display: none; } }
    * { box-sizing: border-box; }
    [hidden] { display: none !important; }
    section { font: 14px/1.45 system-ui, sans-serif; color: var(--text); text-align: left; }
    /* Seen on dark and on light pages. */
    .layer { position: absolute; top: 0; left: 0; width: 0; height: 0; z-index: 2147483646; }
    .box { position: absolute; border: 2px solid #b3261e; border-radius: 4px; box-shadow: 0 0 0 1px #fff;
      pointer-events: none; }
    .warning.box { border-style: dashed; border-color: #8a5700; }
    .badge { position: absolute; width: 20px; height: 20px; padding: 0; border: 2px solid #fff; border-radius: 10px;
      background: #b3261e; color: #fff; font: bold 13px/1 system-ui, sans-serif; cursor: pointer; }
    .warning.badge { border-radius: 4px; background: #8a5700; }
    .note, .bar { background: var(--card); border: 1px solid var(--edge); border-radius: 10px;
      box-shadow: 0 4px 18px rgb(0 0 0 / 25%); overflow-wrap: anywhere; }
    .note { position: absolute; width: max-content; max-width: min(24rem, 90vw); padding: 8px 12px; z-index: 1; }
    .bar { position: fixed; right: 12px; bottom: 12px; max-width: min(30rem, calc(100vw - 24px)); padding: 6px 12px;
      z-index: 2147483647; }
    .row { display: flex; flex-wrap: wrap; gap: 4px 12px; align-items: center; }
    .sum { padding: 2px 0; border: 0; background: none; color: inherit; font: inherit; font-weight: 600; cursor: pointer; }
    .sum::before { content: "\\25b8  " / ""; }
    .sum[aria-expanded="true"]::before { content: "\\25be  " / ""; }
    ul { max-height: 40vh; margin: 6px 0 0; padding: 0; overflow: auto; list-style: none; }
    li { padding: 4px 0; border-top: 1px solid var(--edge); }
    p { margin: 0; }
    .quiet { color: var(--quiet); }
    .all-good { color: var(--good); }
    a { color: var(--link); }
    .switch { padding: 2px 10px; border: 1px solid var(--edge); border-radius: 12px; background: none; color: inherit;
      font: inherit; cursor: pointer; }
    .switch[aria-checked="true"] { background: var(--link); border-color: var(--link); color: var(--card); }
    :focus-visible { outline: 3px solid var(--link); outline-offset: 2px; }
    .unseen { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); }`;

  function make(tag, attributes = {}, ...children) {
    const made = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
      if (typeof value === "function") made.addEventListener(name.slice(2), value);
      else if (value !== null && value !== false) made.setAttribute(name, value === true ? "" : value);
    }
    made.append(...children.flat().filter((child) => child !== null));
    return made;
  }

  // A reference as the page has it may be written with character references.
  function decoded(text) {
    return new DOMParser().parseFromString(text.replace(/</g, "&lt;"), "text/html").documentElement.textContent;
  }

  function referencesOf(element) {
    const values = [];
    for (const { localName, value } of element.attributes) {
      if (!ATTRIBUTES.includes(localName)) continue;
      values.push(value.trim());
      if (localName.endsWith("srcset")) values.push(...value.split(/,\s+|,$/).map((one) => one.trim().split(/\s+/)[0]));
    }
    if (element.hasAttribute("style")) {
      for (const [, , url] of element.getAttribute("style").matchAll(/url\((["']?)(.*?)\1\)/gi)) values.push(url.trim());
    }
    return values;
  }

  const shownBy = (element) => (element.localName === "source" || element.localName === "track"
    ? element.parentElement : element);

  // The findings at each element that shows: [[element, [finding]]]
  function markedElements(findings) {
    const byReference = new Map();
    for (const finding of findings) {
      for (const [, , reference] of finding.places) {
        for (const text of new Set([reference.trim(), decoded(reference).trim()])) {
          if (text === "") continue;
          byReference.set(text, new Set([...(byReference.get(text) ?? []), finding]));
        }
      }
    }
    const marked = new Map();
    for (const element of document.body.querySelectorAll("*")) {
      for (const finding of referencesOf(element).flatMap((text) => [...(byReference.get(text) ?? [])])) {
        const shown = shownBy(element);
        marked.set(shown, (marked.get(shown) ?? new Set()).add(finding));
      }
    }
    return [...marked].map(([element, found]) => [element, [...found]]);
  }

  function counted(count, one, many = one + "s") { return count + " " + (count === 1 ? one : many); }

  function severityOf(findings) {
    return findings.some(({ severity }) => severity === "error") ? "error" : "warning";
  }

  function messageOf({ message, suggestion }) {
    return message + (suggestion ? ". Likely meant: " + suggestion : "");
  }

  class Overlay {
    constructor(marks) {
      this.host = document.createElement("zvrsit-marks");
      const root = this.host.attachShadow({ mode: "open" });
      const sheet = new CSSStyleSheet();  // a STYLE element would need leave by the policy of the page
      sheet.replaceSync(STYLE);
      root.adoptedStyleSheets = [sheet];
      this.layer = make("div", { class: "layer" });
      this.note = make("div", { class: "note", id: "note", hidden: true });
      this.bar = make("div", { class: "bar" });
      this.said = make("p", { class: "unseen", role: "status" });
      root.append(make("section", { "aria-label": "Findings in this page",
        onkeydown: (event) => { if (event.key === "Escape") this.note.hidden = true; } },
      this.layer, this.bar, this.said));
      document.documentElement.append(this.host);
      this.isHidden = keptChoice() === "hidden";
      this.isOpen = false;
      this.show(marks);
      const place = () => this.placeSoon();
      for (const name of ["scroll", "load", "toggle", "transitionend"]) {
        document.addEventListener(name, place, { capture: true, passive: true });
      }
      addEventListener("resize", place);
      addEventListener("load", place);
      new ResizeObserver(place).observe(document.body);
    }

    show(marks) {
      this.marks = marks;
      this.marked = markedElements(marks.findings).map(([element, findings]) =>
        ({ element, findings, boxes: [], badge: this.badge(findings) }));
      this.draw();
    }

    badge(findings) {
      const open = (event) => this.open(event.currentTarget, findings);
      return make("button", { type: "button", class: "badge " + severityOf(findings),
        "aria-label": findings.map(messageOf).join("; "), onclick: open, onfocus: open, onmouseenter: open,
        onblur: () => this.close(), onmouseleave: () => this.close() }, "!");
    }

    // Where the note says it again, its name does for those who do not see it.
    open(badge, findings) {
      const line = ([number, column]) => (number > 0 ? make("span", { class: "quiet" }, " " + number + ":" + column) : null);
      this.note.replaceChildren(...findings.map((finding) =>
        make("p", {}, messageOf(finding), line(finding.places[0]))));
      this.note.hidden = false;
      this.note.style.left = this.note.style.top = "0";
      const { left, bottom } = badge.getBoundingClientRect();
      const { width, height } = this.note.getBoundingClientRect();
      const x = Math.max(4, Math.min(left, document.documentElement.clientWidth - width - 8));
      const y = bottom + height + 8 > innerHeight ? bottom - height - 28 : bottom + 4;
      this.moveTo(this.note, x, y);
    }

    close() { this.note.hidden = true; }

    draw() {
      this.close();
      this.drawBar();
      const shown = this.isHidden ? [] : this.marked;
      this.layer.replaceChildren(...shown.map(({ badge }) => badge), this.note);
      if (!this.isHidden) this.place();
    }

    placeSoon() {
      if (this.frame || this.isHidden) return;
      this.frame = requestAnimationFrame(() => { this.frame = 0; this.place(); });
    }

    // A box round each line of an element; what does not show has none.
    place() {
      const found = this.marked.map((one) => ({ ...one, rects: [...one.element.getClientRects()] }));
      this.layer.querySelectorAll(".box").forEach((box) => box.remove());
      for (const { rects, badge, findings } of found) {
        badge.hidden = rects.length === 0;
        if (badge.hidden) continue;
        const frames = rects.map((rect) => this.box(rect, severityOf(findings)));
        this.layer.prepend(...frames);
        this.moveTo(badge, Math.max(0, rects[0].left - 12), Math.max(0, rects[0].top - 12));
      }
    }

    box({ left, top, width, height }, severity) {
      const box = make("div", { class: "box " + severity });
      box.style.width = Math.max(16, width + 6) + "px";
      box.style.height = Math.max(16, height + 6) + "px";
      this.moveTo(box, left - 3, top - 3);
      return box;
    }

    // The layer scrolls with the page, wherever that puts it.
    moveTo(part, x, y) {
      const origin = this.layer.getBoundingClientRect();
      part.style.left = x - origin.left + "px";
      part.style.top = y - origin.top + "px";
    }

    drawBar() {
      const { findings } = this.marks;
      const words = barText(findings);
      const focused = this.bar.getRootNode().activeElement?.className;
      const list = this.list();
      const summary = make("button", { type: "button", class: "sum", "aria-expanded": String(!list.hidden),
        onclick: () => { this.isOpen = !this.isOpen; this.drawBar(); } }, words);
      const toggle = make("button", { type: "button", class: "switch", role: "switch",
        "aria-checked": String(!this.isHidden), onclick: () => this.toggle() }, "Marks");
      this.bar.replaceChildren(...findings.length === 0 ? [make("span", { class: "all-good" }, words)]
        : [make("div", { class: "row" }, summary, toggle), list]);
      [summary, toggle].find((button) => button.className === focused)?.focus();
      if (this.said.textContent !== words) this.said.textContent = words;
    }

    // All findings, also those of which nothing shows in the page.
    list() {
      const { findings, view } = this.marks;
      return make("ul", { hidden: !this.isOpen, tabindex: "0", "aria-label": "Findings" },
        findings.map((finding) => make("li", {}, messageOf(finding),
          make("span", { class: "quiet" }, placesText(finding)))),
        view ? make("li", {}, make("a", { href: view, target: "_blank", rel: "noopener" }, "More about this page")) : null);
    }

    toggle() {
      this.isHidden = !this.isHidden;
      keepChoice(this.isHidden ? "hidden" : "");
      this.draw();
    }
  }

  function placesText({ places }) {
    const at = places.filter(([line]) => line > 0).map(([line, column]) => line + ":" + column);
    return at.length > 0 ? " " + at.slice(0, 5).join(", ") + (at.length > 5 ? " ..." : "") : "";
  }

  // "2 broken references, 1 warning"
  function barText(findings) {
    const count = (severity) => findings.filter((finding) => finding.severity === severity)
      .reduce((sum, { places }) => sum + places.length, 0);
    const parts = [[count("error"), "broken reference"], [count("warning"), "warning"]]
      .filter(([number]) => number > 0).map(([number, word]) => counted(number, word));
    return parts.length > 0 ? parts.join(", ") : "No findings in this page";
  }

  function keptChoice() {
    try {
      return localStorage.getItem(KEPT);
    } catch {
      return null;
    }
  }

  function keepChoice(value) {
    try {
      if (value) localStorage.setItem(KEPT, value);
      else localStorage.removeItem(KEPT);
    } catch {
      // Then the choice holds for this page.
    }
  }

  async function fetchMarks(overlay) {
    const answer = await fetch("/.zvrsit/marks?page=" + encodeURIComponent(overlay.marks.page), { cache: "no-store" });
    const marks = await answer.json();
    if (answer.ok && JSON.stringify(marks) !== JSON.stringify(overlay.marks)) overlay.show(marks);
  }

  // A browser keeps few connections to one place, so pages out of sight hold none.
  function follow(overlay) {
    let source = null;
    const refresh = () => fetchMarks(overlay).catch(() => {});
    const join = () => {
      source = new EventSource("/.zvrsit/events");
      source.addEventListener("hello", refresh);  // what has changed before
      source.addEventListener("change", refresh);
      source.addEventListener("ended", () => source.close());
    };
    document.addEventListener("visibilitychange", () => {
      source.close();
      if (!document.hidden) join();
    });
    join();
  }

  const marks = document.getElementById("zvrsit-marks");
  if (marks !== null) follow(new Overlay(JSON.parse(marks.textContent)));
})();
