// Zooms and moves the window of time.

/** One finger, or the wheel alone, scrolls the page. */
function isForTimeline() {
  const {type, ctrlKey, metaKey, touches, button} = d3.event;
  if (type === "wheel") return ctrlKey || metaKey;
  return type === "touchstart" ? touches.length > 1 : !button;
}

const zoom = d3.zoom().duration(0).filter(isForTimeline)
  .wheelDelta(() => -d3.event.deltaY * (d3.event.deltaMode ? 0.05 : 0.004))
  .on("zoom", () => {
    const chosen = chosenInstant();
    chart.window = d3.event.transform.rescaleX(chart.full).domain();
    chart.scale = d3.scaleLinear(chart.window, [chart.left, chart.right]);
    if (chosen === undefined) hideReadout(); else chooseNear(chosen);
    scheduleDraw();
  });

/** Shows the window; moves it where it would leave the run. */
function showWindow(from, to) {
  const size = Math.max(Math.min(to - from, length_ns), Math.min(length_ns, kLeastWindow_ns));
  const begin = Math.max(0, Math.min((from + to - size) / 2, length_ns - size));
  const k = length_ns / size;
  const x = chart.left - k * (chart.full(begin) - 0);
  svg.call(zoom.transform, d3.zoomIdentity.translate(x, 0).scale(k));
}

function zoomBy(factor, center = (chart.window[0] + chart.window[1]) / 2) {
  const [from, to] = chart.window;
  showWindow(center - (center - from) / factor, center + (to - center) / factor);
}

function moveBy(part) {
  const [from, to] = chart.window;
  const by = (to - from) * part;
  const allowed = Math.max(-from, Math.min(by, length_ns - to));
  showWindow(from + allowed, to + allowed);
}

/** Brings an instant into the middle, closer if the whole run is shown. */
function showInstant(at) {
  const size = Math.min(chart.window[1] - chart.window[0], length_ns / 24);
  showWindow(at - size / 2, at + size / 2);
}

let drawIsScheduled = false;
function scheduleDraw() {
  if (drawIsScheduled) return;
  drawIsScheduled = true;
  requestAnimationFrame(() => {
    drawIsScheduled = false;
    draw();
    drawCursor();
    showWindowsText();
  });
}

function resize(width) {
  if (width < 1) return;
  const [from, to] = chart.window;
  measure(width);
  zoom.extent([[chart.left, 0], [chart.right, chart.height]]).translateExtent([[chart.left, 0], [chart.right, chart.height]])
    .scaleExtent([1, Math.max(1, length_ns / kLeastWindow_ns)]);
  showWindow(from, to);
}

// d3 would keep a finger from scrolling the page.
svg.call(zoom).style("touch-action", "pan-y");
