"use strict";

// Instants and numbers as text. An instant is a number of nanoseconds since the run's begin.

const data = JSON.parse(document.getElementById("data").textContent);
// A run of no length still needs an axis.
const length_ns = Math.max(data.length_ns, 1);
/** In a run of years, numbers are too coarse for a smaller window. */
const kLeastWindow_ns = Math.max(1000, length_ns / 2 ** 40);

const kSecond = 1e9;
const kMinute = 60 * kSecond;
const kHour = 60 * kMinute;

/** Hours, minutes, seconds of elapsed realtime, exactly: "14:23:10.5". */
function clock(at_ns) {
  const ns = BigInt(data.begin_ns) + BigInt(Math.round(at_ns));
  const seconds = ns / 1000000000n;
  const two = number => String(number).padStart(2, "0");
  const fraction = String(ns % 1000000000n).padStart(9, "0").replace(/0+$/, "");
  return `${two(seconds / 3600n)}:${two(seconds / 60n % 60n)}:${two(seconds % 60n)}${fraction && "." + fraction}`;
}

/** For a tick of an axis: no seconds where ticks are whole minutes. */
function tickText(at_ns, step_ns) {
  // After months of nanoseconds a number is not exact, and a tick may lie a little before its minute.
  return step_ns >= kMinute ? clock(at_ns + kSecond).replace(/:\d\d(\.\d+)?$/, "") : clock(at_ns);
}

function duration(ns) {
  if (ns < 1e3) return `${ns} ns`;
  if (ns < 1e6) return `${+(ns / 1e3).toFixed(3)} µs`;
  if (ns < kSecond) return `${+(ns / 1e6).toFixed(3)} ms`;
  if (ns < kMinute) return `${+(ns / kSecond).toFixed(3)} s`;
  const minutes = Math.floor(ns / kMinute);
  const rest = [[minutes % 60, "min"], [+(ns % kMinute / kSecond).toFixed(3), "s"]];
  const parts = [[Math.floor(minutes / 60), "h"], ...rest].filter(([number]) => number > 0);
  return parts.slice(0, 2).map(([number, unit]) => `${number} ${unit}`).join(" ");
}

const count = number => number.toLocaleString("en");
const rateText = perMinute => perMinute < 1 ? "under 1" : count(Math.round(perMinute));
const plural = (number, noun) => `${count(number)} ${noun}${number === 1 ? "" : "s"}`;

const kTickSteps_ns = [1, 2, 5].flatMap(digit => [...Array(9).keys()].map(power => digit * 10 ** power))
  .concat([1, 2, 5, 10, 15, 30].map(s => s * kSecond), [1, 2, 5, 10, 15, 30].map(m => m * kMinute),
    [1, 2, 3, 6, 12, 24, 48, 120, 240, 1200, 2400, 12000, 24000, 120000, 240000, 1200000].map(h => h * kHour))
  .sort((a, b) => a - b);

/** The instants at which a window has ticks, at most so many: whole hours, minutes, ... of the clock. */
function ticks([from_ns, to_ns], most) {
  const step_ns = kTickSteps_ns.find(step => (to_ns - from_ns) / step <= most) ?? to_ns - from_ns;
  const behind_ns = Number(BigInt(data.begin_ns) % BigInt(Math.round(step_ns)));
  const all = [];
  for (let at = Math.ceil((from_ns + behind_ns) / step_ns) * step_ns - behind_ns; at <= to_ns; at += step_ns) all.push(at);
  return {step_ns, all};
}
