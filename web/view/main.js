import { readData } from "./data.js";

async function start() {
  const data = await readData();
  const view = document.getElementById("view");
  view.textContent = `${data.files.name.length} files, ${data.findings.length} findings`;
  view.dataset.ready = "yes";
}

start();
