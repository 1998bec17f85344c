"""Compares what sensorvela-log says of random logs with a model of it, and with what has happened.

Usage: log_model_test.py [--seeds N] [--first-seed SEED] -- TOOL...
TOOL are the words that start the tool. Each seed is a complete log and one that has lost lines.
"""

import argparse
import json
import pathlib
import subprocess
import sys
import tempfile

from log_model import summarize
from random_log import RandomLog

FAMILIES = {"hal_errors": ("hal", "call"), "runtime_errors": ("runtime", "type")}


def run_tool(tool, files):
    """The objects that the tool prints of the files."""
    with tempfile.TemporaryDirectory() as folder:
        paths = [pathlib.Path(folder, str(i)) for i in range(len(files))]
        for path, content in zip(paths, files):
            path.write_bytes(content)
        ended = subprocess.run([*tool, "--format", "jsonl", *map(str, paths)], capture_output=True, check=True)
    return [json.loads(line) for line in ended.stdout.decode().splitlines()]


def facts_of(objects):
    """In the model's form."""
    summary = objects[0]
    facts = {key: summary[key] for key in ("engine_starts", "lost_drains", "failed_reports")}
    facts |= {"errors": {}, "ends": [], "untold": []}
    for row in objects[1:]:
        if row["kind"] in FAMILIES:
            family, number = FAMILIES[row["kind"]]
            facts["errors"][family, row[number]] = [row["reported"], row["blocked"], row["not_in_log"]]
        elif row["kind"] == "cycle_end":
            facts["ends"].append((row["pid"], row["after"]["line"], row["before"]["line"]))
        elif row["kind"] == "cycle_ends_untold":
            facts["untold"].append((row["pid"], row["why"]))
    return facts


def check_truth(log, facts):
    """What the facts say must have happened; of a complete log they say all but the ends."""
    def check(what, said, happened):
        if said > happened or (log.is_complete and said != happened):
            raise AssertionError(f"{what}: said {said}, happened {happened}")

    truths = [truth for truth, _ in log.boots]
    check("engine starts", facts["engine_starts"], sum(truth.engines.total() for truth in truths))
    check("lost drains", facts["lost_drains"], sum(truth.lost_drains for truth in truths))
    check("failed reports", facts["failed_reports"], sum(truth.failed_reports for truth in truths))
    for error, (reported, blocked, missing) in facts["errors"].items():
        check(f"reported {error}", reported, sum(truth.reported[error] for truth in truths))
        check(f"blocked {error}", blocked, sum(truth.blocked[error] for truth in truths))
        if log.is_complete and missing:
            raise AssertionError(f"nothing is missing of {error}: said {missing}")
    for pid, after, before in facts["ends"]:
        truth, times = next((truth, times) for truth, times in log.boots if after in times)
        # Where the lines of all engines but one are lost, nothing in the log tells.
        if not log.is_complete and truth.engines[pid] > 1:
            continue
        if not any(times[after] < end < times[before] for end in truth.cycle_ends[pid]):
            raise AssertionError(f"no cycle of {pid} ended between the lines {after} and {before}")


def check_log(tool, seed, is_complete):
    """Returns the ends that the tool told, and those that there were."""
    log = RandomLog(seed, is_complete)
    try:
        facts = facts_of(run_tool(tool, log.files))
        expected = summarize(log.texts)
        expected["errors"] = dict(expected["errors"])
        if facts != expected:
            raise AssertionError(f"the tool says\n  {facts}\nand the model\n  {expected}")
        check_truth(log, facts)
    except (AssertionError, subprocess.CalledProcessError) as error:
        sys.exit(f"seed {seed}, {'complete' if is_complete else 'with loss'}: {error}")
    return len(facts["ends"]), sum(len(ends) for truth, _ in log.boots for ends in truth.cycle_ends.values())


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seeds", type=int, default=100, metavar="N", help="how many, 100 unless given")
    parser.add_argument("--first-seed", type=int, default=1, metavar="SEED")
    parser.add_argument("tool", nargs="+", metavar="TOOL", help="the words that start the tool")
    options = parser.parse_args()
    figures = []
    for is_complete in (True, False):
        seeds = range(options.first_seed, options.first_seed + options.seeds)
        told, happened = map(sum, zip(*(check_log(options.tool, seed, is_complete) for seed in seeds)))
        figures.append(f"{options.seeds} logs {'that are complete' if is_complete else 'with loss'}, "
                       f"{told} of {happened} ends told")
    print("; ".join(figures))


if __name__ == "__main__":
    main()
