// The table of atoms, which has those in the picture's window that the search finds.

const kRows = 100;
const rows = document.querySelector("#atoms tbody");
const search = document.getElementById("search");
const outcome = document.getElementById("outcome");
const more = document.getElementById("more");
let shownRows = kRows;

function element(name, text, className = "") {
  const made = document.createElement(name);
  made.textContent = text;
  if (className) made.className = className;
  return made;
}

function atomRow(atom) {
  const row = document.createElement("tr");
  const time = document.createElement("td");
  const button = element("button", clock(atom.at));
  button.type = "button";
  button.title = "Show in the timeline";
  button.addEventListener("click", () => showInstant(atom.at));
  time.append(button);
  const name = atom.times > 1 ? `${atom.name} (${count(atom.times)} times)` : atom.name;
  row.append(time, element("td", atom.outcome, atom.outcome), element("td", name), element("td", atom.values),
    element("td", atom.queued));
  return row;
}

function foundAtoms() {
  const words = search.value.toLowerCase().split(/\s+/);
  return atoms.filter(atom => isVisible(atom.at, atom.to) && (!outcome.value || atom.outcome === outcome.value) &&
    words.every(word => atom.search.includes(word)));
}

function showAtoms() {
  const found = foundAtoms();
  const shown = found.slice(0, shownRows);
  rows.replaceChildren(...shown.map(atomRow));
  more.hidden = shown.length === found.length;
  const total = list => list.reduce((sum, atom) => sum + atom.times, 0);
  document.getElementById("shown").textContent = [`${count(total(found))} of ${count(total(atoms))}`,
    ...(more.hidden ? [] : [`the first ${count(shown.length)} rows shown`])].join(", ");
}

function showFirstAtoms() {
  shownRows = kRows;
  showAtoms();
}

search.addEventListener("input", showFirstAtoms);
outcome.addEventListener("change", showFirstAtoms);
more.addEventListener("click", () => {
  shownRows += kRows;
  showAtoms();
});
