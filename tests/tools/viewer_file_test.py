"""Holds the viewer's file of every trace to the Trace Event Format and to the counts of the same run.

For the usage see command_test_case.py.
"""

import collections
import json
import pathlib

from command_test_case import CommandTestCase, main

PROJECT = pathlib.Path(__file__).resolve().parents[2]
TRACES = sorted([*PROJECT.glob("examples/*.jsonl"), *PROJECT.glob("tests/traces/*.jsonl")])
NO_TRACES = ["bad_traces.jsonl"]
# Eleven million samples take minutes under emulation or with a sanitizer.
LONG_TRACES = ["one_day.jsonl"]

REPORTER_THREAD = (1, 1)

# What a viewer needs in an event, by the event's phase.
REQUIRED_KEYS = {"M": {"name", "pid", "tid", "args"},
                 "X": {"name", "cat", "pid", "tid", "ts", "dur"},
                 "I": {"name", "pid", "tid", "ts", "s", "cat"},
                 "C": {"name", "pid", "ts", "args"}}

COUNTS_OF_MARKS = {"delivered": "delivered", "failed": "failed", "dropped": "dropped", "blocked": "blocked_by_cap",
                   "lost in buffer": "lost_in_buffer", "left in buffer": "left_in_buffer"}


def ns(microseconds):
    return round(microseconds * 1000)


class ViewerFileTest(CommandTestCase):
    def assert_times_in_order(self, events):
        """Of a track or a counter: time never goes back, and spans do not overlap."""
        last_ns = collections.defaultdict(int)
        span_end_ns = {}
        for event in events:
            if event["ph"] == "M":
                continue
            track = (event["pid"], event.get("tid"))
            row = (*track, event["name"] if event["ph"] == "C" else None)
            at_ns = ns(event["ts"])
            self.assertGreaterEqual(at_ns, last_ns[row], event)
            last_ns[row] = at_ns
            if event["ph"] == "X":
                before_ns = span_end_ns.get(track, at_ns)
                if track == REPORTER_THREAD:
                    self.assertEqual(at_ns, before_ns, event)
                self.assertGreaterEqual(at_ns, before_ns, event)
                self.assertGreaterEqual(event["dur"], 0, event)
                span_end_ns[track] = at_ns + ns(event["dur"])

    def assert_is_as_the_run(self, trace):
        status, printed, complained = self.run_tool("--format", "jsonl", "--trace-out", "events.json", str(trace))
        self.assertEqual((status, complained), (0, ""))
        summary = json.loads(printed.splitlines()[-1])
        events = json.loads(self.read("events.json"))["traceEvents"]
        for event in events:
            self.assertLessEqual(REQUIRED_KEYS[event["ph"]], event.keys(), event)
        self.assert_times_in_order(events)
        marks = collections.Counter(event["cat"] for event in events if event["ph"] == "I")
        for mark, count in COUNTS_OF_MARKS.items():
            self.assertEqual(marks[mark], summary[count], mark)

    def test_keeps_the_formats_rules_and_the_runs_counts(self):
        is_slow = self.is_instrumented or len(self.tool) > 1
        tried = 0
        for trace in TRACES:
            if trace.name in NO_TRACES or (is_slow and trace.name in LONG_TRACES):
                continue
            with self.subTest(trace=trace.name):
                self.assert_is_as_the_run(trace)
            tried += 1
        self.assertGreater(tried, 10)


if __name__ == "__main__":
    main()
