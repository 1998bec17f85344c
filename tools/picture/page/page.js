// Fills the page.

const byId = id => document.getElementById(id);

function showHeader() {
  byId("title").textContent = data.title;
  document.title = `${data.title} – sensorvela-replay`;
  byId("subtitle").textContent = `${duration(data.length_ns)} of elapsed realtime, from ${clock(0)} to ${clock(data.length_ns)}`;
  for (const [what, number, meaning, isLoss] of data.counts) {
    const tile = document.createElement("div");
    if (number > 0 && isLoss) tile.className = "wrong";
    tile.append(element("dt", what), element("dd", number === null ? "–" : count(number)), element("dd", meaning));
    byId("counts").append(tile);
  }
}

function showLegend() {
  const box = "M-7,-5H7V5H-7Z";
  const entries = [["absent", "service away", box], ["asleep", "device asleep", box], ["thread-asleep", "thread sleeps", box],
    ["cycle", "cycle ends", "M0,-7V7"], ["enabled", "enabled", "M-7,-3H7V3H-7Z"],
    ["mark first", "first sample", symbols.first], ["mark disable", "disabled", symbols.disable],
    ["rate", "samples a minute", "M-7,6V0H-2V-5H3V2H7V6Z"], ...data.bands.map((name, band) => [`band-${band}`, name, box]),
    ["late", "late samples", "M-1.5,-5H1.5V5H-1.5Z"]];
  for (const [className, label, path] of entries) {
    const item = d3.select("#legend").append("li");
    item.append("svg").attr("viewBox", "-7 -7 14 14").attr("aria-hidden", true).append("path").attr("class", className).attr("d", path);
    item.append("span").text(label);
  }
}

function showLimits() {
  const texts = limits();
  document.querySelector("#limits ul").append(...texts.map(text => element("li", text)));
  byId("limits").hidden = texts.length === 0;
}

function labelled(cell, label) {
  cell.dataset.label = label;
  return cell;
}

function sensorRow(sensor) {
  const row = document.createElement("tr");
  const name = element("th", sensor.label);
  name.scope = "row";
  const numbers = [["samples", sensor.samples], ["not reported", sensor.not_reported], ["late", sensor.late]];
  const bands = sensor.bands.map((number, band) => {
    const cell = element("td", number > 0 ? count(number) : "", "number");
    if (number > 0) cell.append(element("span", sensor.shares[band], "share"));
    return labelled(cell, data.bands[band]);
  });
  row.append(name, ...numbers.map(([label, number]) => labelled(element("td", count(number), "number"), label)), ...bands);
  return row;
}

function showSensors() {
  const head = document.createElement("tr");
  for (const text of ["sensor", "samples", "not reported", "late", ...data.bands]) {
    const cell = element("th", text, text === "sensor" ? "" : "number");
    cell.scope = "col";
    head.append(cell);
  }
  document.querySelector("#sensors thead").append(head);
  byId("sensors-section").hidden = data.sensors.items.length === 0;
  document.querySelector("#sensors tbody").append(...data.sensors.items.map(sensorRow));
}

function showWindowsText() {
  const [from, to] = chart.window;
  const isAll = to - from >= length_ns * 0.9999;
  const exact = (to - from) / 1000;
  const unit = exact >= kSecond ? kSecond : 10 ** Math.max(0, Math.floor(Math.log10(exact)));
  const [begin, end] = [from, to].map(at => clock(Math.round(at / unit) * unit));
  byId("window").textContent = isAll ? "" : `${begin} to ${end}, ${duration(Math.round((to - from) / unit) * unit)}`;
  for (const id of ["zoom-out", "zoom-all", "earlier", "later"]) byId(id).disabled = isAll;
  showFirstAtoms();
}

function connect() {
  const actions = {"zoom-in": () => zoomBy(2), "zoom-out": () => zoomBy(0.5), "zoom-all": () => showWindow(0, length_ns),
    earlier: () => moveBy(-0.5), later: () => moveBy(0.5)};
  for (const [id, action] of Object.entries(actions)) byId(id).addEventListener("click", action);
  const {classList} = document.documentElement;
  new ResizeObserver(([{contentRect}]) => {
    if (!classList.contains("print") && contentRect.width !== chart.width) resize(contentRect.width);
  }).observe(host);
  // A page of paper is narrower than most windows, and light.
  addEventListener("beforeprint", () => {
    classList.add("print");
    measure(880);
    draw();
  });
  addEventListener("afterprint", () => {
    classList.remove("print");
    resize(host.clientWidth);
  });
}

showHeader();
showLegend();
showLimits();
showSensors();
connect();
