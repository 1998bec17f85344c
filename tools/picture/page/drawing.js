// Draws the lanes.

/** The strip of a sensor's latencies, in pixels. */
const kBandHeight = 14;
/** Lines closer than this many pixels would hide the lanes. */
const kCycleGap = 12;

const host = document.getElementById("chart");
const svg = d3.select(host).append("svg").attr("tabindex", 0).attr("role", "application")
  .attr("aria-label", "Timeline. Up and down choose a lane, left and right a mark or an instant in it; plus, minus and 0 zoom.");
const content = svg.append("g");
const cursorLayer = svg.append("g");
const surface = svg.append("rect").attr("fill", "none").attr("pointer-events", "all");

const symbols = {
  delivered: "M-4.5,0A4.5,4.5 0 1,1 4.5,0A4.5,4.5 0 1,1 -4.5,0Z",
  failed: "M-5,-3.2L-3.2,-5L0,-1.8L3.2,-5L5,-3.2L1.8,0L5,3.2L3.2,5L0,1.8L-3.2,5L-5,3.2L-1.8,0Z",
  dropped: "M-5.5,-4.5H5.5L0,5.5Z",
  blocked: "M-4.5,-4.5H4.5V4.5H-4.5Z",
  note: "M0,-5.5L5.5,0L0,5.5L-5.5,0Z",
  first: "M-3,-5.5L6,0L-3,5.5Z",
  disable: "M-1.5,-6.5H1.5V6.5H-1.5Z",
  step: "M-1,-6H1V6H-1Z",
};

const short = number =>
  number < 1000 ? String(number) : number < 1e6 ? `${Math.floor(number / 1000)}k` : `${Math.floor(number / 1e6)}M`;

function drawCluster(group, cluster, y) {
  const kinds = new Set(cluster.marks.map(mark => mark.kind));
  const kind = kinds.size === 1 ? [...kinds][0] : "";
  const g = group.append("g").attr("class", `mark ${kind}`).attr("transform", `translate(${cluster.x},${y})`)
    .attr("role", "img").attr("aria-label", clusterLines(cluster).join("; "));
  if (cluster.total === 1) {
    g.append("path").attr("d", symbols[kind]);
    return;
  }
  const text = short(cluster.total);
  const width = 8 + 6.2 * text.length;
  g.append("rect").attr("x", -width / 2).attr("y", -7).attr("width", width).attr("height", 14)
    .attr("rx", kind === "delivered" || kind === "note" ? 7 : 2);
  g.append("text").attr("y", 3.5).text(text);
}

/** Leaves out spans that lie in the same pixels as the one before. */
function drawSpans(group, spans, y, height) {
  let drawn = {};
  for (const each of spans) {
    if (!isVisible(each.from, each.to)) continue;
    const [x0, x1] = edges(each);
    if (each.kind === drawn.kind && x1 <= drawn.x1 + 0.5) continue;
    drawn = {kind: each.kind, x1};
    group.append("rect").attr("class", each.kind).attr("x", x0).attr("y", y).attr("width", x1 - x0).attr("height", height)
      .attr("rx", 2).attr("role", "img").attr("aria-label", each.lines.join("; "));
  }
}

/** One path of boxes: `box` gives the top and bottom of a bin's, or null. */
function drawBins(group, bins, className, least, box) {
  let path = "";
  for (const bin of bins) {
    const ends = isVisible(bin.from, bin.to) && box(bin);
    if (!ends) continue;
    const [x0, x1] = edges(bin, least);
    path += `M${x0.toFixed(1)},${ends[0].toFixed(1)}H${x1.toFixed(1)}V${ends[1].toFixed(1)}H${x0.toFixed(1)}Z`;
  }
  if (path) group.append("path").attr("class", className).attr("d", path);
}

/** Where a bin's bands end, from the bottom of a strip; a band with a sample is never invisible. */
function bandEdges(bin) {
  const least = bin.bands.map(samples => samples > 0 ? 1 : 0);
  const spare = kBandHeight - least.reduce((sum, each) => sum + each, 0);
  const bounds = [0];
  bin.bands.forEach((samples, band) => bounds.push(bounds[band] + least[band] + spare * samples / bin.samples));
  return bounds;
}

function drawSensor(group, lane) {
  const [rateBottom, rateHeight, bandBottom, lateTop] = [lane.y + 43, 28, lane.y + 60, lane.y + 62];
  drawSpans(group, lane.spans, lane.y + 4, 6);
  drawBins(group, lane.bins, "rate", 0.3, bin => {
    const height = rateHeight * bin.samples * kMinute / data.bin_ns / lane.peak;
    return [rateBottom - Math.max(height, 1), rateBottom];
  });
  data.bands.forEach((name, band) => drawBins(group, lane.bins, `band-${band}`, 0.3, bin => {
    if (!(bin.bands[band] > 0)) return null;
    bin.edges ??= bandEdges(bin);
    return [bandBottom - bin.edges[band + 1], bandBottom - bin.edges[band]];
  }));
  drawBins(group, lane.bins, "late", 2, bin => bin.late > 0 ? [lateTop, lateTop + 6] : null);
}

function drawLane(lane) {
  const group = laneGroup(lane);
  group.append("line").attr("class", "rule").attr("x1", 0).attr("x2", chart.width)
    .attr("y1", lane.top - kLaneGap / 2).attr("y2", lane.top - kLaneGap / 2);
  const plot = group.append("g").attr("clip-path", "url(#plot)");
  if (lane.kind === "sensor") {
    drawSensor(plot, lane);
  } else if (lane.spans) {
    drawSpans(plot, lane.spans, lane.y + 4, lane.height - 8);
  }
}

function drawMarks(lane) {
  const group = laneGroup(lane);
  drawLabel(group, lane);
  const plot = group.append("g").attr("clip-path", "url(#plot)");
  const y = lane.kind === "sensor" ? lane.y + 7 : lane.y + lane.height / 2;
  for (const cluster of clusters(lane.marks)) drawCluster(plot, cluster, y);
}

const laneGroup = lane =>
  content.append("g").attr("role", "group").attr("aria-label", lane.detail ? `${lane.label}, ${lane.detail}` : lane.label);

// Measuring drawn texts would have the browser lay out the whole picture for each.
const ruler = document.createElement("canvas").getContext("2d");
ruler.font = `12.5px ${getComputedStyle(document.body).fontFamily}`;

function shortened(text, width) {
  let short = text;
  for (let length = text.length; length > 1 && ruler.measureText(short).width > width;) {
    length = Math.floor(length * 0.9);
    short = `${text.slice(0, length)}…`;
  }
  return short;
}

function drawLabel(group, lane) {
  const limit = chart.narrow ? chart.width - 30 - (lane.detail ? 110 : 0) : chart.left - 26;
  const y = chart.narrow ? lane.top + 13 : lane.y + (lane.kind === "sensor" ? 22 : lane.height / 2 + 4);
  group.append("text").attr("x", 12).attr("y", y).text(shortened(lane.label, limit));
  if (!lane.detail) return;
  const detail = group.append("text").attr("class", "quiet").text(lane.detail);
  if (chart.narrow) {
    detail.attr("x", chart.width - 12).attr("y", y).attr("text-anchor", "end");
  } else {
    detail.attr("x", 12).attr("y", y + 17);
  }
}

function drawShades() {
  const plot = content.append("g").attr("clip-path", "url(#plot)").attr("aria-hidden", true);
  for (const each of [...absences, ...sleeps]) {
    if (!isVisible(each.from, each.to)) continue;
    const [x0, x1] = edges(each);
    plot.append("rect").attr("class", `shade ${each.kind}`).attr("x", x0).attr("width", x1 - x0)
      .attr("y", chart.top).attr("height", chart.bottom - chart.top);
  }
}

function drawCycleEnds() {
  let free = chart.left;
  let drawn = -Infinity;
  for (const at of cycleEnds) {
    const x = chart.scale(at);
    if (!isVisible(at) || x - drawn < kCycleGap) continue;
    drawn = x;
    content.append("line").attr("class", "cycle").attr("x1", x).attr("x2", x).attr("y1", 17).attr("y2", chart.bottom)
      .attr("role", "img").attr("aria-label", `cycle ends at ${clock(at)}`);
    if (x - 34 < free || x + 34 > chart.width) continue;
    content.append("text").attr("class", "quiet").attr("x", x).attr("y", 13).attr("text-anchor", "middle").text("cycle ends");
    free = x + 40;
  }
}

function drawGrid() {
  const width = chart.right - chart.left;
  chart.ticks = ticks(chart.window, Math.max(2, width / 66));
  if (chart.ticks.step_ns < kMinute) chart.ticks = ticks(chart.window, Math.max(1, width / 90));
  if (chart.ticks.step_ns < kSecond) chart.ticks = ticks(chart.window, Math.max(1, width / 160));
  drawAxis(d3.axisTop, chart.top, chart.top - chart.bottom).selectAll("text").remove();
}

function drawAxes() {
  for (const [kind, y] of [[d3.axisTop, chart.top], [d3.axisBottom, chart.bottom]]) {
    drawAxis(kind, y, 0).selectAll("text").filter(at => isCutOff(at, tickText(at, chart.ticks.step_ns))).remove();
  }
}

/** Whether the text of an instant would leave the picture. */
function isCutOff(at, text) {
  const x = chart.scale(at);
  const half = ruler.measureText(text).width / 2;
  return x - half < 0 || x + half > chart.width;
}

function drawAxis(kind, y, tickSize) {
  const {all, step_ns} = chart.ticks;
  return content.append("g").attr("class", "axis").attr("transform", `translate(0,${y})`).attr("aria-hidden", true)
    .call(kind(chart.scale).tickValues(all).tickFormat(at => tickText(at, step_ns)).tickSizeOuter(0).tickSizeInner(tickSize));
}

function draw() {
  content.selectAll("*").remove();
  svg.attr("viewBox", `0 0 ${chart.width} ${chart.height}`).attr("height", chart.height);
  surface.attr("width", chart.width).attr("height", chart.height);
  content.append("clipPath").attr("id", "plot").append("rect").attr("x", chart.left - 15).attr("width", chart.right - chart.left + 30)
    .attr("y", chart.top).attr("height", chart.bottom - chart.top);
  drawShades();
  drawGrid();
  for (const lane of lanes) drawLane(lane);
  drawCycleEnds();
  for (const lane of lanes) drawMarks(lane);
  drawAxes();
}
