// The data as lanes of items: what each is called, and where it lies.

const kBandNames = ["up to 2.5 ms", "up to 5 ms", "up to 10 ms", "up to 20 ms", "over 20 ms"];
const kOutcomes = ["delivered", "failed", "dropped", "blocked"];

const atomTexts = data.atoms.texts;

function atomOf(outcome, [at, name, values, times, queued_at, by, line]) {
  const thing = atomTexts[name] || (outcome === "blocked" ? "error past the cap" : "atom");
  const queued = `${by} at ${clock(queued_at)}${line ? `, line ${line}` : ""}`;
  const atom = {at, outcome, name: thing, values: atomTexts[values], times, queued};
  const title = `${outcome}: ${thing}${times > 1 ? `, ${count(times)} times` : ""}`;
  atom.lines = [clock(at), title, atom.values, outcome === "blocked" ? `by ${queued}` : `queued by ${queued}`];
  atom.search = atom.lines.join(" ").toLowerCase();
  return atom;
}

const atoms = kOutcomes
  .flatMap(outcome => data.atoms[outcome].items.map(item => atomOf(outcome, item)))
  .sort((a, b) => a.at - b.at);

const span = (kind, title, from, to, ...more) =>
  ({kind, from, to, lines: [`${clock(from)} to ${clock(to)}`, `${title} for ${duration(to - from)}`, ...more]});
const mark = (kind, at, ...lines) => ({kind, at, lines: [clock(at), ...lines]});

const absences = data.absences.items.map(([from, to]) => span("absent", "stats service away", from, to));
const sleeps = data.suspended.items.map(([from, to]) => span("asleep", "device asleep", from, to));
const cycleEnds = data.cycle_ends.items;

function stayOf([from, to, state, held]) {
  return state === "waiting"
    ? span("thread-waiting", "waiting for the service", from, to, `with ${plural(held, "atom")}`)
    : span("thread-asleep", "sleeping", from, to);
}

// The waits lie over the sleep: they can be much shorter.
const stays = data.stays.items.map(stayOf).sort((a, b) => a.kind.localeCompare(b.kind));

const stepOf = ([at, what, held]) =>
  mark("step", at, what === "uploads diagnostics" ? "cycle ends; " + what : `${what} ${plural(held, "atom")}`);

/** The part of a lane for which the file has no more items. */
function leftOut({items, omitted}, things) {
  if (omitted === 0) return [];
  const from = items.at(-1)[0];
  return [{kind: "left-out", from, to: length_ns, lines: [`from ${clock(from)} on`, `${count(omitted)} more ${things} are left out`]}];
}

function sensorLane(sensor) {
  const spans = sensor.spans.items.map(([from, to, period, samples]) =>
    span("enabled", "enabled", from, to, `a sample every ${duration(period)} asked for`, plural(samples, "sample")));
  spans.push(...leftOut(sensor.spans, "spans"));
  const firsts = sensor.firsts.items.map(([at, since]) =>
    mark("first", at, since < 0 ? "first sample, without an enable" : `first sample, ${duration(since)} after the enable`));
  const disables = sensor.disables.items.map(([at, samples]) => mark("disable", at, `disabled after ${plural(samples, "sample")}`));
  const bins = sensor.bins.map(([first, number, late, ...bands]) => {
    const samples = bands.reduce((sum, band) => sum + band, 0);
    const from = data.bins_begin_ns + first * data.bin_ns;
    return {from, to: from + number * data.bin_ns, late, bands, samples};
  });
  const peak = Math.max(0, ...bins.map(bin => bin.samples)) * kMinute / data.bin_ns;
  return {kind: "sensor", label: sensor.label, detail: peak > 0 ? `peak ${rateText(peak)}/min` : "no samples", height: 70, spans,
    marks: [...firsts, ...disables].sort((a, b) => a.at - b.at), bins, peak};
}

const markLane = (label, list, marks) => ({kind: "marks", label, height: 28, marks, spans: leftOut(list, "marks")});

const atomLane = (outcome, label) =>
  markLane(label, data.atoms[outcome], atoms.filter(atom => atom.outcome === outcome).map(atom => ({...atom, kind: outcome})));

const lanes = [
  {kind: "spans", label: "Stats service", height: 26, spans: [...absences, ...leftOut(data.absences, "absences")], marks: []},
  {kind: "spans", label: "Device", height: 26, spans: [...sleeps, ...leftOut(data.suspended, "times asleep")], marks: []},
  {kind: "spans", label: "Reporter thread", height: 28,
    spans: [...stays, ...leftOut(data.stays, "states"), ...leftOut(data.steps, "steps")],
    marks: data.steps.items.map(stepOf)},
  markLane("Notes", data.notes, data.notes.items.map(([at, text]) => mark("note", at, text))),
  atomLane("delivered", "Atoms delivered"),
  atomLane("failed", "Atoms failed"),
  atomLane("dropped", "Atoms dropped"),
  atomLane("blocked", "Errors blocked"),
  ...data.sensors.items.map(sensorLane),
];

/** The lists that the file cuts off: what is in them, how much of it is shown, how much is left out. */
function cutLists() {
  const lists = [["notes", data.notes], ["absences of the service", data.absences], ["times asleep", data.suspended],
    ["ends of cycles", data.cycle_ends], ["states of the reporter thread", data.stays],
    ["steps of the reporter thread", data.steps], ["sensors", data.sensors]];
  for (const sensor of data.sensors.items) {
    lists.push([`spans of ${sensor.label}`, sensor.spans], [`first samples of ${sensor.label}`, sensor.firsts],
      [`disables of ${sensor.label}`, sensor.disables]);
  }
  const atomLists = kOutcomes.map(outcome => {
    const shown = atoms.reduce((sum, atom) => sum + (atom.outcome === outcome ? atom.times : 0), 0);
    return [outcome === "blocked" ? "blocked errors" : `${outcome} atoms`, shown, data.atoms[outcome].omitted];
  });
  return [...atomLists, ...lists.map(([what, {items, omitted}]) => [what, items.length, omitted])]
    .filter(([, , omitted]) => omitted > 0);
}

const limits = () => cutLists().map(([what, shown, omitted]) =>
  `First ${count(shown)} ${what} shown; ${count(omitted)} more are left out.`);
