// Shows what is under the pointer.

const laneAt = y => lanes.find(lane => y >= lane.top - kLaneGap / 2 && y < lane.y + lane.height + kLaneGap / 2);

/** An instant as exact as a pixel is wide. */
function instantAt(x) {
  const ns = (chart.window[1] - chart.window[0]) / (chart.right - chart.left);
  const unit = ns >= kSecond ? kSecond : 10 ** Math.max(0, Math.floor(Math.log10(ns)));
  return Math.max(0, Math.min(length_ns, Math.round(chart.scale.invert(x) / unit) * unit));
}

function linesAt(lane, x, y) {
  const nearest = clusters(lane.marks).reduce((best, each) =>
    Math.abs(each.x - x) < Math.abs((best?.x ?? Infinity) - x) ? each : best, null);
  const reach = nearest && nearest.total > 1 ? 13 : 8;
  const isInRow = lane.kind !== "sensor" || y < lane.y + 15;
  if (nearest && isInRow && Math.abs(nearest.x - x) <= reach) return clusterLines(nearest);
  const at = chart.scale.invert(x);
  if (lane.kind === "sensor") return sensorLines(lane, at, at);
  const found = lane.spans?.findLast(each => edges(each)[0] - 1 <= x && x <= edges(each)[1] + 1 && isVisible(each.from, each.to));
  return found?.lines ?? [clock(instantAt(x)), lane.label];
}

function drawPointerLine(x) {
  cursorLayer.selectAll("*").remove();
  cursorLayer.append("line").attr("class", "cursor-line").attr("x1", x).attr("x2", x).attr("y1", chart.top).attr("y2", chart.bottom);
}

function onPointer(event) {
  const box = svg.node().getBoundingClientRect();
  const [x, y] = [event.clientX - box.left, event.clientY - box.top];
  const lane = laneAt(y);
  if (!lane || x < chart.left - 8 || x > chart.right + 8) return onPointerGone();
  chart.cursor = null;
  svg.attr("aria-activedescendant", null);
  drawPointerLine(clampX(x));
  showReadout(linesAt(lane, clampX(x), y), event.clientX, event.clientY);
}

function onPointerGone() {
  if (chart.cursor) return;
  cursorLayer.selectAll("*").remove();
  hideReadout();
}

svg.on("pointermove", () => onPointer(d3.event)).on("pointerdown.readout", () => onPointer(d3.event)).on("pointerleave", onPointerGone);
