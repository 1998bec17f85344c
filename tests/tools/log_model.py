"""What a log of the library says: a second, slow and simple implementation of sensorvela-log's rules.

It reads the forms threadtime and brief. tools/log/error_count.h says why the rules hold.
"""

import re
from collections import defaultdict
from dataclasses import dataclass

CAP = 10

HEADER = re.compile(r"(?:\d\d-\d\d [\d:.]{12} +(?P<pid>\d+) +(?P<tid>\d+) [IE] sensor-vela|"
                    r"[IE]/sensor-vela\( *(?P<brief_pid>\d+)\)): (?P<text>.*)")
TEXTS = [
    ("waiting", re.compile(r"Waiting for IStats service to come up\.")),
    ("not_declared", re.compile(r"IStats service is not registered\.")),
    ("wait_end", re.compile(r"IStats service online\.|Failed to get IStats service\.")),
    ("lost_drain", re.compile(r"Failed to get IStats service\. Atoms are dropped\.")),
    ("failed_report", re.compile(r"Failed to report atom \[id = (\d+)\]\.")),
    ("reported", re.compile(r"Reporting (HAL) call \[(\d+)\] error .*|Reporting (runtime) time error \[(\d+)\] .*")),
    ("blocked", re.compile(r"(HAL|Runtime) Error \[(\d+)\] has occurred \[(\d+)\] times .*")),
]
# A reporter thread's lines are in this order.
STEPS = {"waiting": 1, "not_declared": 1, "wait_end": 2, "lost_drain": 3, "failed_report": 3}


@dataclass
class Line:
    """A line of the library."""

    number: int
    pid: int
    tid: int | None
    what: str
    error: tuple = None  # "hal" or "runtime", and the call or type.
    count: int = 0  # Of a blocked error.
    previous: int = 0  # The thread's line before this one; 0 if that is not known.


def read_line(number, text):
    """The library's line, or None."""
    header = HEADER.fullmatch(re.sub(r"\x1b\[[\d;]*m", "", text))
    if not header:
        return None
    for what, pattern in TEXTS:
        if found := pattern.fullmatch(header["text"]):
            values = [value for value in found.groups() if value is not None]
            line = Line(number, int(header["pid"] or header["brief_pid"]),
                        int(header["tid"]) if header["tid"] else None, what)
            if what in ("reported", "blocked"):
                line.error = values[0].lower(), int(values[1])
            if what == "blocked":
                line.count = int(values[2])
            return line
    return None


def most_that_do_not_rise(counts):
    """The length of the longest subsequence in which no count is higher than the one before it."""
    lengths = []
    for i, count in enumerate(counts):
        lengths.append(1 + max((lengths[k] for k in range(i) if counts[k] >= count), default=0))
    return max(lengths, default=0)


def missing_errors(lines):
    """How many reported and blocked errors of one kind in one process the log has lost at least."""
    blocked = [line for line in lines if line.what == "blocked"]
    reported = [line for line in lines if line.what == "reported"]
    # Lines that do not rise belong to different cycles, and each cycle has every count up to its line's.
    has_occurred = 0
    last = CAP
    for count in sorted({line.count for line in blocked}):
        cycles = most_that_do_not_rise([line.count for line in blocked if line.count >= count])
        has_occurred += (count - last) * cycles
        last = count
    # Each of these cycles also has ten reported errors, which were counted before its first blocked line.
    missing_reported = 0
    for i, line in enumerate(blocked):
        cycles = most_that_do_not_rise([before.count for before in blocked[:i + 1]])
        may_be_theirs = sum(1 for error in reported if error.previous < line.number)
        missing_reported = max(missing_reported, CAP * cycles - may_be_theirs)
    return missing_reported, has_occurred - len(blocked)


def intervals_with_an_end(lines):
    """All intervals between two lines in which a cycle of the only engine has ended, by one kind of error."""
    blocked = [line for line in lines if line.what == "blocked"]
    reported = [line for line in lines if line.what == "reported"]
    for i, line in enumerate(blocked):
        yield from ((before.number, line.number) for before in blocked[:i] if before.count >= line.count)
    for i, line in enumerate(reported):
        last_blocked = max((b.number for b in blocked if b.number < line.number), default=0)
        if 0 < last_blocked <= line.previous:
            yield last_blocked, line.number
        counted_after = sorted((error.previous for error in reported[:i + 1]), reverse=True)
        if len(counted_after) > CAP:
            yield counted_after[CAP], line.number


def ends_of_cycles(lines):
    """As many intervals of one process as have no line in common."""
    by_error = defaultdict(list)
    for line in lines:
        by_error[line.error].append(line)
    intervals = {(max(after, lines[0].number), before) for error, its_lines in by_error.items() if error
                 for after, before in intervals_with_an_end(its_lines)}
    ends = []
    for after, before in sorted(intervals, key=lambda interval: (interval[1], -interval[0])):
        if not ends or after >= ends[-1][1]:
            ends.append((after, before))
    return ends


def why_untold(lines):
    """Why the ends of a process cannot be told; None if they can."""
    step = 0
    tids = set()
    for line in lines:
        if line.what not in STEPS:
            continue
        if STEPS[line.what] <= step and (step, STEPS[line.what]) != (3, 3):
            return "several_engines"
        step = STEPS[line.what]
        tids |= {line.tid} - {None}
    if len(tids) > 1:
        return "several_engines"
    return None if STEPS.get(lines[0].what) == 1 else "no_start"


def engine_starts(lines):
    """How many engines one thread's lines show; several may be of one where the form has no thread."""
    waiting = starts = 0
    for line in lines:
        has_start = line.what == "wait_end" and waiting > 0
        waiting += (line.what == "waiting") - has_start
        starts += line.what in ("waiting", "not_declared", "wait_end") and not has_start
    return starts


def summarize(texts):
    """What sensorvela-log must print of a log, as far as it is about counts and ends."""
    facts = {"engine_starts": 0, "lost_drains": 0, "failed_reports": 0,
             "errors": defaultdict(lambda: [0, 0, 0]), "ends": [], "untold": []}
    sections = [[]]
    for number, text in enumerate(texts, start=1):
        if text.startswith("------ ") and text.endswith(" ------"):
            sections.append([])
        if line := read_line(number, text):
            sections[-1].append(line)
    for section in sections:
        summarize_section(section, facts)
    facts["ends"].sort(key=lambda end: end[2])
    return facts


def summarize_section(lines, facts):
    processes = defaultdict(list)
    threads = defaultdict(list)
    kinds = defaultdict(list)
    for line in lines:
        thread = threads[line.pid, line.tid]
        if thread and line.tid is not None:
            line.previous = thread[-1].number
        thread.append(line)
        processes[line.pid].append(line)
        if line.error:
            kinds[line.pid, line.error].append(line)
            facts["errors"][line.error][line.what == "blocked"] += 1
        facts["lost_drains"] += line.what == "lost_drain"
        facts["failed_reports"] += line.what == "failed_report"
    for thread in threads.values():
        facts["engine_starts"] += engine_starts(thread)
    for (_, error), its_lines in kinds.items():
        reported, blocked = missing_errors(its_lines)
        for i, more in enumerate([reported, blocked, reported + blocked]):
            facts["errors"][error][i] += more
    for pid in sorted(processes):
        ends = ends_of_cycles(processes[pid])
        why = why_untold(processes[pid])
        if ends and why:
            facts["untold"].append((pid, why))
        elif ends:
            facts["ends"] += [(pid, after, before) for after, before in ends]
