// Lets the keyboard choose what is in the lanes.

/** A sensor's steps for the keyboard, in pixels. */
const kCellWidth = 16;

function cellsOf(lane) {
  const cells = [];
  const [least, most] = [chart.left, chart.right];
  for (let x = least; x < most; x += kCellWidth) {
    const [from, to] = [chart.scale.invert(x), chart.scale.invert(Math.min(x + kCellWidth, most))];
    cells.push({x0: x, x1: Math.min(x + kCellWidth, most), lines: () => sensorLines(lane, from, to)});
  }
  return cells;
}

/** What the keyboard can choose in a lane, from left to right. */
function itemsOf(lane) {
  if (lane.kind === "sensor") return cellsOf(lane);
  const marks = clusters(lane.marks).map(each => ({x0: each.x - 9, x1: each.x + 9, lines: () => clusterLines(each)}));
  const spans = (lane.spans ?? []).filter(each => isVisible(each.from, each.to)).map(each => {
    const [x0, x1] = edges(each);
    return {x0, x1, lines: () => each.lines};
  });
  return [...marks, ...spans].sort((a, b) => a.x0 - b.x0);
}

function drawCursor() {
  cursorLayer.selectAll("*").remove();
  svg.attr("aria-activedescendant", null);
  if (!chart.cursor) return;
  const lane = lanes[chart.cursor.lane];
  const items = itemsOf(lane);
  chart.cursor.item = Math.max(0, Math.min(chart.cursor.item, items.length - 1));
  const item = items[chart.cursor.item] ?? {x0: chart.left, x1: chart.right, lines: () => ["nothing in this window"]};
  const lines = item.lines();
  const id = `cursor-${chart.cursor.lane}-${chart.cursor.item}`;
  cursorLayer.append("rect").attr("id", id).attr("class", "cursor-cell").attr("role", "img").attr("aria-label", lines.join("; "))
    .attr("x", item.x0 - 2).attr("width", item.x1 - item.x0 + 4).attr("y", lane.y).attr("height", lane.height).attr("rx", 3);
  svg.attr("aria-activedescendant", id);
  const box = svg.node().getBoundingClientRect();
  showReadout([...(lane.kind === "sensor" ? [] : [lane.label]), ...lines], box.left + item.x1, box.top + lane.y + lane.height / 2);
}

/** The item of a lane that is nearest to a place. */
function itemNear(lane, x) {
  const distance = item => Math.abs((item.x0 + item.x1) / 2 - x);
  const items = itemsOf(lanes[lane]);
  return items.reduce((best, item, index) => distance(item) < distance(items[best]) ? index : best, 0);
}

function chooseLane(by) {
  if (!chart.cursor) {
    chart.cursor = {lane: 0, item: 0};
  } else {
    const item = itemsOf(lanes[chart.cursor.lane])[chart.cursor.item];
    const lane = Math.max(0, Math.min(chart.cursor.lane + by, lanes.length - 1));
    chart.cursor = {lane, item: item ? itemNear(lane, (item.x0 + item.x1) / 2) : 0};
  }
  const top = svg.node().getBoundingClientRect().top + lanes[chart.cursor.lane].top;
  if (top < 0 || top > innerHeight - 100) scrollBy(0, top - innerHeight / 2);
}

function chooseItem(by) {
  if (chart.cursor) chart.cursor.item += by; else chooseLane(0);
}

function chosenInstant() {
  const item = chart.cursor && itemsOf(lanes[chart.cursor.lane])[chart.cursor.item];
  return item ? chart.scale.invert(clampX((item.x0 + item.x1) / 2)) : undefined;
}

/** Chooses what is nearest to an instant in the present lane. */
function chooseNear(at) {
  chart.cursor.item = itemNear(chart.cursor.lane, chart.scale(at));
}

const keys = {
  ArrowUp: () => chooseLane(-1),
  ArrowDown: () => chooseLane(1),
  ArrowLeft: event => event.shiftKey ? moveBy(-0.25) : chooseItem(-1),
  ArrowRight: event => event.shiftKey ? moveBy(0.25) : chooseItem(1),
  Home: () => chooseItem(-Infinity),
  End: () => chooseItem(Infinity),
  "+": () => zoomBy(2, chosenInstant()),
  "=": () => zoomBy(2, chosenInstant()),
  "-": () => zoomBy(0.5, chosenInstant()),
  0: () => showWindow(0, length_ns),
  Escape: () => { chart.cursor = null; hideReadout(); },
};

function onKey(event) {
  const action = !event.ctrlKey && !event.metaKey && !event.altKey && keys[event.key];
  if (!action) return;
  event.preventDefault();
  action(event);
  drawCursor();
}

svg.on("keydown", () => onKey(d3.event)).on("blur", () => {
  chart.cursor = null;
  drawCursor();
  hideReadout();
});
