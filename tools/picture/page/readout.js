// The text about what is under the pointer or chosen by the keyboard.

const readout = document.getElementById("readout");

/** Shows lines, the first as a heading, beside a point of the window. */
function showReadout(lines, x, y) {
  const parts = lines.filter(line => line).map((line, index) => {
    const part = document.createElement(index === 0 ? "strong" : "div");
    part.textContent = line;
    return part;
  });
  readout.replaceChildren(...parts);
  readout.hidden = false;
  readout.style.left = "0";
  const {width, height} = readout.getBoundingClientRect();
  const {clientWidth, clientHeight} = document.documentElement;
  const left = x + 24 + width > clientWidth ? x - 16 - width : x + 16;
  const top = y + 24 + height > clientHeight ? y - 16 - height : y + 16;
  readout.style.left = `${Math.max(8, Math.min(left, clientWidth - width - 8))}px`;
  readout.style.top = `${Math.max(8, top)}px`;
}

const hideReadout = () => { readout.hidden = true; };

/** A sensor's samples between two instants, in whole bins. */
function samplesBetween(lane, from, to) {
  const first = Math.floor((from - data.bins_begin_ns) / data.bin_ns);
  const last = Math.max(first + 1, Math.ceil((to - data.bins_begin_ns) / data.bin_ns));
  const [begin, end] = [first, last].map(bin => data.bins_begin_ns + bin * data.bin_ns);
  const sum = {from: Math.max(begin, 0), to: Math.min(end, length_ns), samples: 0, late: 0, bands: data.bands.map(() => 0)};
  for (const bin of lane.bins) {
    const shared = Math.round((Math.min(bin.to, end) - Math.max(bin.from, begin)) / data.bin_ns);
    if (shared <= 0) continue;
    sum.samples += bin.samples * shared;
    sum.late += bin.late * shared;
    bin.bands.forEach((band, index) => { sum.bands[index] += band * shared; });
  }
  sum.perMinute = sum.samples * kMinute / ((last - first) * data.bin_ns);
  return sum;
}

/** A part that is not empty is not "0.0 %", and one that is not all is not "100.0 %". */
function share(number, all) {
  const percent = 100 * number / all;
  if (percent < 0.1) return "<0.1 %";
  return percent >= 99.95 && number < all ? ">99.9 %" : `${percent.toFixed(1)} %`;
}

function sensorLines(lane, from, to) {
  const sum = samplesBetween(lane, from, to);
  const bands = sum.bands.flatMap((number, band) =>
    number > 0 ? [`${data.bands[band]}: ${count(number)} (${share(number, sum.samples)})`] : []);
  const span = lane.spans.find(each => each.from < sum.to && Math.max(each.to, each.from + 1) > sum.from);
  const marks = lane.marks.filter(each => each.at >= sum.from && each.at < sum.to).slice(0, 3);
  return [`${lane.label}, ${clock(sum.from)} to ${clock(sum.to)}`,
    sum.samples === 0 ? "no samples" : `${plural(sum.samples, "sample")}, ${rateText(sum.perMinute)} a minute`,
    ...bands, sum.late > 0 ? `late: ${count(sum.late)}` : "", span ? span.lines.slice(1, 3).join(", ") : "not enabled",
    ...marks.map(each => `${each.lines[1]} at ${each.lines[0]}`)];
}
