"""Replays the example day, which must be readable and the same each time.

For the usage see command_test_case.py.
"""

import pathlib

from command_test_case import CommandTestCase, main

DAY = pathlib.Path(__file__).resolve().parents[2] / "examples" / "one_day.jsonl"


class OneDayTest(CommandTestCase):
    def replay(self, *options):
        status, printed, complained = self.run_tool(*options, str(DAY))
        self.assertEqual((status, complained), (0, ""))
        return printed

    def test_is_readable(self):
        lines = self.replay().splitlines()
        self.assertLessEqual(len(lines), 98, "a screen has 100, of which the demo takes two")
        self.assertLessEqual(max(len(line) for line in lines), 120)
        dropped = lines.index("13:02:00      DROPPED  SensorRuntimeErrorDetected  accelerometer (16/1)  "
                              "lookup failed: queued by runtime_error at")
        self.assertEqual(lines[dropped + 1:dropped + 3], [
            "              13:00:20, line 65",
            "13:04:00      service  back, away since 13:00:00 for 00:04:00: not registered"])

    def test_is_the_same_each_time(self):
        first, second = self.replay("--log"), self.replay("--log")
        self.assertEqual(first, second)
        # Each cycle ends six hours after the one before, the first later by the 5 h 38 min of sleep.
        lines = first.splitlines()
        uploads = [line.split()[0] for line in lines if "SensorSystemQueueStressReported" in line]
        self.assertEqual(uploads, ["11:38:00"] + ["17:38:00"] * 3 + ["23:38:00"])
        self.assertEqual(lines[-3:], [
            "blocked by the cap         12  errors after the first 10 of their kind in a cycle",
            "cycles ended                3",
            "findings                    7  what looks wrong: --findings lists it"])

    def test_findings_are_its_story(self):
        status, printed, _ = self.run_tool("--findings", str(DAY))
        self.assertEqual(status, 3)
        self.assertEqual([line for line in printed.splitlines() if not line.startswith(" ")], [
            "dropped_lookup_failed  1 atom, first at 13:02:00, line 65",
            "report_failed  1 atom, first at 11:00:00, line 54",
            "sampled_while_disabled  barometer (19/1)  10787 samples, first at 21:00:01.0083, line 28",
            "bad_period  proximity (21/1)  1 enable, first at 07:40:00, line 35",
            "first_sample_twice  steps (22/-1)  1 sample, first at 18:00:02.25, line 89",
            "silent  accelerometer (16/1)  1 time, first at 14:19:59.9946, line 60",
            "error_storm  magnetometer (18/1)  12 errors, first at 09:15:00, line 48"])


if __name__ == "__main__":
    main()
