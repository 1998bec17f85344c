// The data as lanes of items: what each is called, and where it lies.

const kOutcomes = ["delivered", "failed", "dropped", "blocked"];

const atomTexts = data.atoms.texts;

/** Several neighbours that the file has as one have the last one's instant; others have none. */
function atomOf(outcome, [at, name, values, times, queued_at, by, line, last]) {
  const thing = atomTexts[name] || (outcome === "blocked" ? "error past the cap" : "atom");
  const isSeveral = last !== undefined;
  const queued = isSeveral ? by : `${by} at ${clock(queued_at)}${line ? `, line ${line}` : ""}`;
  const text = isSeveral ? `neighbours shown as one, the last at ${clock(last)}` : atomTexts[values];
  const atom = {at, to: last ?? at, outcome, name: thing, values: text, times, queued};
  const title = `${outcome}: ${thing}${times > 1 ? `, ${count(times)} times` : ""}`;
  atom.lines = [clock(at), title, atom.values, outcome === "blocked" ? `by ${queued}` : `queued by ${queued}`];
  atom.search = atom.lines.join(" ").toLowerCase();
  return atom;
}

const atoms = kOutcomes
  .flatMap(outcome => data.atoms[outcome].items.map(item => atomOf(outcome, item)))
  .sort((a, b) => a.at - b.at);

const span = (kind, title, times, from, to, ...more) => ({kind, from, to, lines: [`${clock(from)} to ${clock(to)}`,
  times > 1 ? `${title}, ${count(times)} times: neighbours shown as one` : `${title} for ${duration(to - from)}`, ...more]});
const mark = (kind, times, at, to, ...lines) => ({kind, at, to, times, lines: [clock(at), ...lines,
  ...(times > 1 ? [`${count(times)} neighbours shown as one, the last at ${clock(to)}`] : [])]});

const intervalOf = (kind, title) => ([from, to, times = 1]) => span(kind, title, times, from, to);
const absences = data.absences.items.map(([from, to, why, times = 1]) =>
  span("absent", `stats service away: ${why.replaceAll("_", " ")}`, times, from, to));
const sleeps = data.suspended.items.map(intervalOf("asleep", "device asleep"));
const cycleEnds = data.cycle_ends.items;

function stayOf([from, to, state, held, times = 1]) {
  return state === "waiting"
    ? span("thread-waiting", "waiting for the service", times, from, to, `with ${plural(held, "atom")}`)
    : span("thread-asleep", "sleeping", times, from, to);
}

// The waits lie over the sleep: they can be much shorter.
const stays = data.stays.items.map(stayOf).sort((a, b) => a.kind.localeCompare(b.kind));

const stepOf = ([at, what, held, times = 1, to = at]) =>
  mark("step", times, at, to, what === "uploads diagnostics" ? "cycle ends; " + what : `${what} ${plural(held, "atom")}`);

function sensorLane(sensor) {
  const spans = sensor.spans.items.map(([from, to, period, samples, times = 1]) => span("enabled", "enabled", times, from, to,
    period === null ? "asked for samples" : `asked for a sample every ${duration(period)}`, plural(samples, "sample")));
  const firsts = sensor.firsts.items.map(([at, since, times = 1, to = at]) => mark("first", times, at, to,
    since < 0 ? "first sample, without an enable" : `first sample, ${times > 1 ? "at most " : ""}${duration(since)} after the enable`));
  const disables = sensor.disables.items.map(([at, samples, times = 1, to = at]) =>
    mark("disable", times, at, to, `disabled after ${plural(samples, "sample")}`));
  const bins = sensor.bins.map(([first, number, late, ...bands]) => {
    const samples = bands.reduce((sum, band) => sum + band, 0);
    const from = data.bins_begin_ns + first * data.bin_ns;
    return {from, to: from + number * data.bin_ns, late, bands, samples};
  });
  const peak = Math.max(0, ...bins.map(bin => bin.samples)) * kMinute / data.bin_ns;
  return {kind: "sensor", label: sensor.label, detail: peak > 0 ? `peak ${rateText(peak)}/min` : "no samples", height: 70, spans,
    marks: [...firsts, ...disables].sort((a, b) => a.at - b.at), bins, peak};
}

const markLane = (label, marks) => ({kind: "marks", label, height: 28, marks});

const atomLane = (outcome, label) =>
  markLane(label, atoms.filter(atom => atom.outcome === outcome).map(atom => ({...atom, kind: outcome})));

const lanes = [
  {kind: "spans", label: "Stats service", height: 26, spans: absences, marks: []},
  {kind: "spans", label: "Device", height: 26, spans: sleeps, marks: []},
  {kind: "spans", label: "Reporter thread", height: 28, spans: stays, marks: data.steps.items.map(stepOf)},
  markLane("Notes", data.notes.items.map(([at, text, times = 1, to = at]) => mark("note", times, at, to, text))),
  atomLane("delivered", "Atoms delivered"),
  atomLane("failed", "Atoms failed"),
  atomLane("dropped", "Atoms dropped"),
  atomLane("blocked", "Errors blocked"),
  ...data.sensors.items.map(sensorLane),
];

/** What the file has of the run only in part, or several as one. */
function limits() {
  const lists = [...kOutcomes.map(each => [each === "blocked" ? "blocked errors" : `${each} atoms`, data.atoms[each]]),
    ["notes", data.notes], ["absences of the service", data.absences], ["times asleep", data.suspended],
    ["ends of cycles", data.cycle_ends], ["states of the reporter thread", data.stays],
    ["steps of the reporter thread", data.steps]];
  for (const sensor of data.sensors.items) {
    lists.push([`spans of ${sensor.label}`, sensor.spans], [`first samples of ${sensor.label}`, sensor.firsts],
      [`disables of ${sensor.label}`, sensor.disables]);
  }
  const texts = lists.filter(([, list]) => list.thinned).map(([what, {items, total}]) =>
    `${count(total)} ${what} are shown as ${count(items.length)}: neighbours are one.`);
  const {items, omitted} = data.sensors;
  return omitted > 0 ? [...texts, `First ${count(items.length)} sensors shown; ${count(omitted)} more are left out.`] : texts;
}
