// Shows the report: the view that the address names.
import { Site, readData } from "./data.js";
import { announce, element, fill } from "./dom.js";
import { dateText, numberText } from "./format.js";
import { showFindings } from "./findings.js";
import { showHosts } from "./hosts.js";
import { forgetLists } from "./lists.js";
import { followedProgram } from "./live.js";
import { showMap } from "./map.js";
import { showFile } from "./page_view.js";
import { showPages } from "./pages.js";
import { drawAnew } from "./redraw.js";
import { currentRoute, followAddress } from "./router.js";
import { showUnused, unreachedFiles } from "./unused.js";

// Each draws itself into an element and answers its title.
const VIEWS = { findings: showFindings, unused: showUnused, pages: showPages, hosts: showHosts,
  map: showMap, file: showFile, url: showFile };

async function startReport() {
  const main = document.getElementById("main");
  try {
    const program = followedProgram();
    let site = new Site(await readData());
    fillTabs(site);
    localTimes();
    const name = document.title;
    followAddress((route, isFirst) => showRoute(main, site, route, name, isFirst));
    program?.start(site, (changed) => {
      site = changed;
      fillTabs(site);
      drawAnew(main, () => showRoute(main, site, currentRoute(), name, true));
    });
    performance.mark("shown");
  } catch (error) {
    fill(main, element("p", { class: "nothing" },
      "The report cannot be shown. It may be damaged, or the browser too old: " + error.message));
    throw error;
  }
}

function showRoute(main, site, route, name, isFirst) {
  const show = VIEWS[route.name] ?? showFindings;
  forgetLists();
  const title = show(main, site, route);
  document.title = title + " – " + name;
  for (const link of document.querySelectorAll("nav a")) {
    if (link.hash === "#/" + route.name) link.setAttribute("aria-current", "page");
    else link.removeAttribute("aria-current");
  }
  if (isFirst) return;
  announce(title);
  main.querySelector("h2")?.focus({ preventScroll: true });
}

// How much there is behind each tab.
function fillTabs(site) {
  const counts = { findings: site.findings.length, unused: unreachedFiles(site).length,
    pages: site.data.totals.pages, hosts: site.data.hosts.length };
  for (const [name, count] of Object.entries(counts)) {
    const link = document.querySelector(`nav a[href="#/${name}"]`);
    fill(link, link.firstChild.textContent.trim(), " ",
      element("span", { class: "tab-count" }, numberText(count)));
  }
}

// The head says the time as the program does, in UTC.
function localTimes() {
  for (const time of document.querySelectorAll("header time")) time.textContent = dateText(time.dateTime);
}

// The address after "#" names views, so the link to the content goes there by hand.
document.querySelector(".skip").addEventListener("click", (event) => {
  event.preventDefault();
  document.getElementById("main").focus();
});

// The head is painted before the data is unpacked.
requestAnimationFrame(() => setTimeout(startReport));
