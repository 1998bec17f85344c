// Where the lanes and what is in them lie over the present window of time.

const kLaneGap = 4;
/** Marks closer than this many pixels become one, with their number. */
const kClusterWidth = 26;

const chart = {window: [0, length_ns], width: 0, cursor: null};

function measure(width) {
  const narrow = width < 660;
  const left = narrow ? 22 : 200;
  const header = narrow ? 18 : 0;
  let y = 46;
  for (const lane of lanes) {
    lane.top = y;
    lane.y = y + header;
    y = lane.y + lane.height + kLaneGap;
  }
  Object.assign(chart, {width, narrow, left, right: width - 24, top: 40, bottom: y, height: y + 26});
  chart.full = d3.scaleLinear([0, length_ns], [chart.left, chart.right]);
  chart.scale = d3.scaleLinear(chart.window, [chart.left, chart.right]);
}

const isVisible = (from, to = from) => to >= chart.window[0] && from <= chart.window[1];
const clampX = x => Math.max(chart.left, Math.min(chart.right, x));
const edges = ({from, to}, least = 2) => {
  const [x0, x1] = [clampX(chart.scale(from)), clampX(chart.scale(to))];
  return [x0, Math.max(x1, x0 + least)];
};

/** Groups of marks that would overlap, each at its first mark. */
function clusters(marks) {
  const groups = [];
  for (const mark of marks) {
    if (!isVisible(mark.at, mark.to)) continue;
    const x = Math.max(chart.left, chart.scale(mark.at));
    const last = groups.at(-1);
    if (last && x - last.x < kClusterWidth) {
      last.marks.push(mark);
    } else {
      groups.push({x, marks: [mark]});
    }
  }
  return groups.map(group => ({...group, total: group.marks.reduce((sum, mark) => sum + (mark.times ?? 1), 0)}));
}

function clusterLines({marks, total}) {
  if (marks.length === 1) return marks[0].lines;
  const shown = marks.slice(0, 6).map(mark => `${mark.lines[0]} ${mark.lines[1]}`);
  const more = marks.length > 6 ? [`and ${plural(marks.length - 6, "more mark")}`] : [];
  return [`${count(total)} from ${marks[0].lines[0]} to ${clock(Math.max(...marks.map(mark => mark.to)))}`, ...shown, ...more];
}
