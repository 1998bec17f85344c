"""Random logs of the library, and what has really happened.

Usage: random_log.py FOLDER, which gets logs of a few kilobytes for the fuzzer to begin with.
"""

import gzip
import pathlib
import random
import sys
from collections import Counter, defaultdict
from dataclasses import dataclass, field

CAP = 10
HOUR = 3_600_000_000  # Microseconds, as all times here.
CYCLE = 6 * HOUR

HAL, RUNTIME = "hal", "runtime"
REPORTED = {HAL: "Reporting HAL call [{}] error [-22] on sensor [0x00000010].",
            RUNTIME: "Reporting runtime time error [{}] code [7] on sensor [0x00000010]."}
BLOCKED = {HAL: "HAL Error [{}] has occurred [{}] times in current cycle, upload blocked due to cap [10] met.",
           RUNTIME: "Runtime Error [{}] has occurred [{}] times in current cycle, upload blocked due to cap [10] met."}


@dataclass
class Entry:
    """A line that was written."""

    time: int
    pid: int
    tid: int
    priority: str
    text: str


@dataclass
class Truth:
    """What has happened in one boot."""

    engines: Counter = field(default_factory=Counter)  # By process.
    cycle_ends: dict = field(default_factory=lambda: defaultdict(list))  # By process: the times.
    reported: Counter = field(default_factory=Counter)  # By error.
    blocked: Counter = field(default_factory=Counter)
    lost_drains: int = 0
    failed_reports: int = 0


class Engine:
    def __init__(self, boot, pid, tid, start):
        self.start = start
        self.end = start + boot.random.choice([boot.random.randrange(40 * HOUR), 40 * HOUR])
        self.cycle_ends = []
        self.counts = Counter()
        self.cycle = 0
        end = boot.write_start(pid, tid, start)
        while (end := end + CYCLE + boot.random.randrange(HOUR)) < self.end:
            self.cycle_ends.append(end + 0.5)  # At the same time as no line.
        for _ in range(boot.random.choice([0, 0, 1, 5])):
            boot.write_drain(pid, tid, boot.random.randrange(start + HOUR, start + 30 * HOUR))
        boot.truth.engines[pid] += 1
        boot.truth.cycle_ends[pid] += self.cycle_ends

    def count(self, error, time):
        """The times must not go back."""
        cycle = sum(1 for end in self.cycle_ends if end < time)
        if cycle > self.cycle:
            self.cycle = cycle
            self.counts.clear()
        self.counts[error] += 1
        return self.counts[error]


class Boot:
    """A device from its start: some processes, each with engines and threads that report errors."""

    def __init__(self, rng, overtaking):
        self.random = rng
        self.overtaking = overtaking
        self.truth = Truth()
        self.entries = []
        self.next_tid = 1000
        for _ in range(rng.randrange(1, 4)):
            self.run_process(rng.choice([812, rng.randrange(300, 9000)]), rng.randrange(HOUR))
        self.entries.sort(key=lambda entry: entry.time)

    def new_tid(self):
        self.next_tid += self.random.randrange(1, 9)
        return self.next_tid

    def write(self, time, pid, tid, priority, text):
        self.entries.append(Entry(time, pid, tid, priority, text))

    def write_start(self, pid, tid, time):
        """Returns the time at which the reporter thread enters its loop."""
        time += self.random.randrange(1, 1000)
        if self.random.random() < 0.1:
            self.write(time, pid, tid, "E", "IStats service is not registered.")
            return time
        self.write(time, pid, tid, "I", "Waiting for IStats service to come up.")
        time += self.random.choice([100, 5_000_000])
        if self.random.random() < 0.9:
            self.write(time, pid, tid, "I", "IStats service online.")
        else:
            self.write(time, pid, tid, "E", "Failed to get IStats service.")
        return time

    def write_drain(self, pid, tid, time):
        if self.random.random() < 0.5:
            self.truth.lost_drains += 1
            self.write(time, pid, tid, "E", "Failed to get IStats service. Atoms are dropped.")
        else:
            self.truth.failed_reports += 1
            self.write(time, pid, tid, "E", "Failed to report atom [id = 100024].")

    def run_process(self, pid, time):
        starts = [time]
        for _ in range(self.random.choice([0, 0, 0, 1, 2])):
            starts.append(time + self.random.choice([10, HOUR, 20 * HOUR]) + self.random.randrange(1000))
        engines = [Engine(self, pid, self.new_tid(), start) for start in starts]
        threads = {self.new_tid(): 0 for _ in range(self.random.choice([1, 2, 4, 9]))}  # Until when each is busy.
        errors = [(self.random.choice([HAL, RUNTIME]), self.random.randrange(4))
                  for _ in range(self.random.choice([1, 2, 4]))]
        for time in self.times_of_errors(starts[0], engines):
            idle = [tid for tid, busy_until in threads.items() if busy_until < time]
            alive = [engine for engine in engines if engine.start < time < engine.end]
            if idle and alive:
                tid = self.random.choice(idle)
                threads[tid] = self.fail(self.random.choice(alive), pid, tid, self.random.choice(errors), time)

    def times_of_errors(self, start, engines):
        """Of bursts, some of them around ends of cycles, and of single errors."""
        times = set()
        ends = [int(end) for engine in engines for end in engine.cycle_ends]
        if self.random.random() < 0.3:  # Some in each cycle.
            step = CYCLE // self.random.choice([1, 4, 15])
            times |= {start + i * step + self.random.randrange(step) for i in range(40 * HOUR // step)}
        for _ in range(self.random.randrange(30)):
            time = self.random.choice([start, self.random.randrange(start, start + 40 * HOUR), *ends])
            step = self.random.choice([2, 50, 60_000_000])
            time += self.random.randrange(-10 * step, 10 * step)
            for _ in range(self.random.choice([1, 4, 9, 12, 25])):
                time += self.random.randrange(1, 2 * step)
                times.add(time)
        return sorted(times)

    def fail(self, engine, pid, tid, error, time):
        """Returns until when the thread is busy."""
        count = engine.count(error, time)
        family, number = error
        if count > CAP:
            self.truth.blocked[error] += 1
            self.write(time, pid, tid, "E", BLOCKED[family].format(number, count))
            return time
        self.truth.reported[error] += 1
        if self.overtaking and self.random.random() < 0.3:
            time += self.random.choice([10, 1000, 100_000_000, 8 * HOUR])
        self.write(time, pid, tid, "I", REPORTED[family].format(number))
        return time


class RandomLog:
    """The log of one boot or two, complete or not, in some form and in some files.

    `files` are their bytes; `boots` has, for each boot, what happened, and the times of the lines by their numbers.
    """

    def __init__(self, seed, is_complete):
        self.random = random.Random(seed)
        self.is_complete = is_complete
        self.form = self.random.choice(["threadtime", "threadtime", "brief"])
        self.colours = self.random.random() < 0.2
        self.boots = []
        self.texts = []
        for number in range(self.random.choice([1, 1, 1, 2])):
            if number > 0:
                self.texts.append("------ LAST LOGCAT (logcat -L) ------")
            boot = Boot(self.random, overtaking=not is_complete or self.random.random() < 0.5)
            self.boots.append((boot.truth, self.write(boot.entries)))
        self.files = self.split()

    def write(self, entries):
        if not self.is_complete:
            entries = self.lose_some(entries)
        times = {}
        for entry in entries:
            if self.random.random() < 0.05:
                self.texts.append("I/other(  900): sensor-vela: IStats service online.")
            self.texts.append(self.line(entry))
            times[len(self.texts)] = entry.time
        return times

    def lose_some(self, entries):
        """Some lines anywhere, the oldest, and those of a while."""
        share = self.random.choice([0, 0.05, 0.5])
        entries = [entry for entry in entries if self.random.random() >= share]
        if self.random.random() < 0.5:
            entries = entries[self.random.randrange(len(entries) + 1):]
        if self.random.random() < 0.5:
            start = self.random.randrange(len(entries) + 1)
            del entries[start:start + self.random.randrange(30)]
        return entries

    def line(self, entry):
        if self.form == "brief":
            line = f"{entry.priority}/sensor-vela({entry.pid:5}): {entry.text}"
        else:
            seconds = entry.time // 1_000_000
            time = (f"11-{1 + seconds // 86400:02} {seconds // 3600 % 24:02}:{seconds // 60 % 60:02}:{seconds % 60:02}"
                    f".{entry.time // 1000 % 1000:03}")
            line = f"{time} {entry.pid:5} {entry.tid:5} {entry.priority} sensor-vela: {entry.text}"
        return f"\x1b[38;5;40m{line}\x1b[0m" if self.colours else line

    def split(self):
        cuts = sorted(self.random.randrange(len(self.texts) + 1) for _ in range(self.random.choice([0, 0, 1, 3])))
        files = []
        for start, end in zip([0, *cuts], [*cuts, len(self.texts)]):
            content = "".join(text + "\n" for text in self.texts[start:end]).encode()
            files.append(gzip.compress(content, mtime=0) if self.random.random() < 0.2 else content)
        return files


def main():
    folder = pathlib.Path(sys.argv[1])
    for seed in range(200):
        log = RandomLog(seed, is_complete=seed % 2 == 0)
        for number, content in enumerate(log.files):
            if len(content) < 4096:
                (folder / f"{seed}-{number}").write_bytes(content)


if __name__ == "__main__":
    main()
