"""Tests the command line of sensorvela-replay: its exit status and what it writes to each stream.

For the usage see command_test_case.py.
"""

import errno
import gzip
import json
import os
import pty
import subprocess

from command_test_case import CommandTestCase, closed_pipe, full_device, main

TRACE = '{"at_ns":0,"event":"engine_start"}\n'

SUMMARY = """\
delivered                   0  atoms that the stats service took
failed                      0  atoms whose report failed or ended without a status
dropped                     0  atoms that never reached the stats service
blocked by the cap          0  errors after the first 10 of their kind in a cycle
cycles ended                0
findings                    0  nothing looks wrong
"""

LOG = """\
00:00:00      log      E sensor-vela: IStats service is not registered.
00:00:00      log      E sensor-vela: Failed to get IStats service. Atoms are dropped.
"""

JSON_LINES = """\
{"kind":"replay","version":1}
{"kind":"summary","delivered":0,"failed":0,"did_not_fit":0,"dropped":0,"left_in_buffer":0,"lost_in_buffer":0,"blocked_by_cap":0,"cycles_ended":0,"findings":0,"outages":0,"away_ns":0}
"""

# A run of which several kinds of lines are printed, one of them about an error past the cap.
ERRORS_TRACE = TRACE + """\
{"at_ns":1,"event":"sensor_name","sensor_high":1,"sensor_low":2,"name":"left"}
{"at_ns":1,"event":"service_registered"}
{"at_ns":2,"event":"hal_error","sensor_high":1,"sensor_low":2,"call":3,"error":4,"count":11}
{"at_ns":3,"event":"firmware_state","subject_id":1,"state":4,"detail_code":77777}
"""

ERRORS = """\
00:00:00.000000002  atom     SensorHalErrorDetected  left (1/2) hal_call=3 error_code=4  (10 times)
00:00:00.000000002  BLOCKED  hal_error of left (1/2), past the cap, line 4
"""

FIRMWARE_STATE = """\
00:00:00.000000003  atom     SensorFirmwareStateChanged  subject_id=1 state=4 detail_code=77777
"""

ERRORS_SUMMARY = """\
delivered                  11  atoms that the stats service took
failed                      0  atoms whose report failed or ended without a status
dropped                     0  atoms that never reached the stats service
blocked by the cap          1  errors after the first 10 of their kind in a cycle
cycles ended                0
findings                    1  what looks wrong: --findings lists it
"""

# On a terminal of 58 columns, which the longest line fills. The braces stand for the beginning and the end of
# a colour.
ERRORS_ON_TERMINAL = """\
00:00:00.000000002  atom     SensorHalErrorDetected  left
              (1/2) hal_call=3 error_code=4  (10 times)
{}00:00:00.000000002  BLOCKED  hal_error of left (1/2), past
              the cap, line 4{}

delivered                  11  atoms that the stats
                               service took
failed                      0  atoms whose report failed
                               or ended without a status
dropped                     0  atoms that never reached
                               the stats service
blocked by the cap          1  errors after the first 10
                               of their kind in a cycle
cycles ended                0
findings                    1  what looks wrong:
                               --findings lists it
"""

# The output of this run fits into no buffer, so a write that must fail does so before the run's end.
LONG_NOTE = "long " * 50
LONG_TRACE = TRACE + f'{{"at_ns":0,"event":"note","text":"{LONG_NOTE}"}}\n' * 2000

EVENTS_END = "]}\n"

NO_SPACE_FOR_OUTPUT = "sensorvela-replay: cannot write to standard output: No space left on device\n"
NO_SPACE_FOR_FILE = "sensorvela-replay: cannot write /dev/full: No space left on device\n"


class ReplayCommandTest(CommandTestCase):
    def assert_events_written(self):
        events = self.read("events.json")
        self.assertIn("traceEvents", json.loads(events))
        self.assertTrue(events.endswith(EVENTS_END), events[-1000:])

    def run_on_terminal(self, *arguments, **variables):
        """Returns the exit status and what the tool shows on a terminal."""
        terminal, tools_end = pty.openpty()
        with open(terminal, "rb", buffering=0) as screen:
            with open(tools_end, "wb") as tools_screen:
                process = subprocess.Popen(
                    [*self.tool, *arguments], cwd=self.folder, env={**os.environ, **variables},
                    stdin=subprocess.DEVNULL, stdout=tools_screen, stderr=tools_screen)
            shown = b""
            try:
                while chunk := screen.read(4096):
                    shown += chunk
            except OSError as error:
                # The tool has closed its end.
                self.assertEqual(error.errno, errno.EIO)
            return process.wait(), shown.decode().replace("\r\n", "\n")

    def test_prints_the_run(self):
        self.assert_run("-", stdin=TRACE, out="\n" + SUMMARY)
        self.assert_run("-", "--log", stdin=TRACE, out=LOG + "\n" + SUMMARY)
        self.assert_run("-", "--format", "jsonl", stdin=TRACE, out=JSON_LINES)
        self.assert_run("-", "--summary", "--log", stdin=ERRORS_TRACE, out=ERRORS_SUMMARY)

    def test_prints_one_sensor_or_one_kind_of_atom(self):
        for sensor in ["left", "1/2", "left (1/2)"]:
            self.assert_run("-", "--log", "--only", sensor, stdin=ERRORS_TRACE,
                            out=ERRORS + "\n" + ERRORS_SUMMARY)
        for atom in ["SensorFirmwareStateChanged", "100244"]:
            self.assert_run("-", "--log", f"--only={atom}", stdin=ERRORS_TRACE,
                            out=FIRMWARE_STATE + "\n" + ERRORS_SUMMARY)

    def test_prints_help_and_version(self):
        status, printed, complained = self.run_tool("--help")
        self.assertEqual((status, complained), (0, ""))
        self.assertRegex(printed, r"(?s)\n  --only WHAT .*\n\nEvents:\n  engine_start ")
        status, printed, complained = self.run_tool("--version")
        self.assertEqual((status, complained), (0, ""))
        self.assertRegex(printed, r"\Asensorvela-replay \d+\.\d+\.\d+\n\Z")

    def test_prints_what_looks_wrong(self):
        explanation = ("These errors were not reported, only logged: see the ten before them, which were.")
        self.assert_run("-", "--findings", stdin=TRACE)
        self.assert_run("-", "--findings", stdin=ERRORS_TRACE, status=3,
                        out="error_storm  left (1/2)  1 error, first at 00:00:00.000000002, line 4\n  " +
                            explanation + "\n")
        self.assert_run("-", "--findings", "--only", "3/4", stdin=ERRORS_TRACE, status=3)
        status, printed, _ = self.run_tool("-", "--findings", "--format", "jsonl", stdin=ERRORS_TRACE)
        self.assertEqual(status, 3)
        self.assertEqual([json.loads(line) for line in printed.splitlines()], [
            {"kind": "replay", "version": 1},
            {"kind": "finding", "at_ns": 2, "name": "error_storm", "sensor_high": 1, "sensor_low": 2,
             "sensor_name": "left", "count": 1, "counts": "errors", "trace_line": 4,
             "explanation": explanation}])
        self.assert_bad_usage("-", "--findings", "--check", stdin=TRACE, err="--findings excludes --check")

    def test_checks_a_trace(self):
        cut = '{"at_ns":0,"event":"recording","version":1}\n' + TRACE
        malformed = "malformed JSON at column 2: expected one JSON object\n"
        self.assert_run("--check", "-", stdin=TRACE)
        self.assert_run("--check", "-", stdin=TRACE + "nonsense", status=2, err="<stdin>:2: " + malformed)
        self.assert_run("--check", "-", stdin=cut, status=2,
                        err="<stdin>:2: the recording was cut after this line\n")
        self.assert_run("-", stdin="nonsense", status=2, err="<stdin>:1: " + malformed)

    def test_says_where_a_replay_differs_from_its_recording(self):
        recording = """{"at_ns": 0, "event": "recording", "version": 1}
{"at_ns": 0, "event": "engine_start", "supplier": "none"}
{"at_ns": 1, "event": "firmware_state", "subject_id": 1, "state": 3, "detail_code": 0}
{"at_ns": 1, "event": "lookup_found", "reports": 0}
{"at_ns": 2, "event": "lookup_found_none", "reports": %d}
{"at_ns": 3, "event": "end", "reports": %d}
"""
        for reports, at_end, line in ((1, 1, None), (2, 2, 5), (1, 1000, 6)):
            expected = {} if line is None else {"status": 3, "err": (
                f"<stdin>:{line}: the replay differs from the recording: the recorded engine had made "
                f"{at_end} reports by then, that of the replay 1\n")}
            self.assert_run("--check", "-", stdin=recording % (reports, at_end), **expected)
            status, _, complained = self.run_tool("-", stdin=recording % (reports, at_end))
            self.assertEqual((status, complained), (expected.get("status", 0), expected.get("err", "")))

    def test_starts_without_standard_streams(self):
        self.write("input", TRACE)
        for option in ["--trace-out"] + ["--picture"] * self.has_picture:
            started = subprocess.run(
                ["sh", "-c", 'exec "$@" 0<&- 1>&- 2>&-', "sh", *self.tool, option, "run", "input"],
                cwd=self.folder, check=False)
            self.assertEqual(started.returncode, 1)
            self.assertNotIn(SUMMARY, self.read("run"))

    def test_refuses_what_is_no_trace_file(self):
        for path, why in [("no/such", "No such file or directory"), ("/", "Is a directory")]:
            self.assert_run(path, status=2, err=f"{path}: {why}: expected a readable file\n")

    def test_refuses_bad_usage(self):
        self.assert_bad_usage(err="TRACE is required")
        self.assert_bad_usage("--bogus", err="--bogus")
        self.assert_bad_usage("-", "--format", "xml", stdin=TRACE, err="--format: xml not in ")
        self.assert_bad_usage("-", "--trace-out=", stdin=TRACE, err="FILE missing")
        self.assert_bad_usage("--check", "-", "--trace-out", "events.json", stdin=TRACE,
                              err="--trace-out excludes --check")
        self.assert_run("-", "--trace-out", "-", stdin=TRACE, status=2,
                        err="sensorvela-replay: --trace-out -: expected the name of a file\n")
        self.assert_run("-", "--wide", "--format", "jsonl", stdin=ERRORS_TRACE, status=2,
                        err="sensorvela-replay: --wide, --summary and --only: expected with --format text\n")
        for check in [[], ["--check"]]:
            self.assert_run(*check, "-", "--only", "right", stdin=ERRORS_TRACE, status=2,
                            err="sensorvela-replay: --only right: expected a sensor's name or HIGH/LOW, "
                                "or an atom's name or identifier\n")

    def test_writes_a_file_for_viewers(self):
        self.assert_run("-", "--trace-out", "events.json", stdin=TRACE, out="\n" + SUMMARY)
        self.assert_events_written()
        self.assert_run("-", "--trace-out", "/dev/full", stdin=TRACE, status=1, out="\n" + SUMMARY,
                        err=NO_SPACE_FOR_FILE)

    def test_writes_a_picture(self):
        if not self.has_picture:
            self.skipTest("the tool can draw no pictures")
        self.assert_run("-", "--picture", "run.html", "--trace-out", "events.json", stdin=TRACE,
                        out="\n" + SUMMARY)
        self.assert_events_written()
        self.assertRegex(self.read("run.html"), r"(?s)\A<!DOCTYPE html>.*</html>\n\Z")
        self.assert_run("-", "--picture", "/dev/full", stdin=TRACE, status=1, out="\n" + SUMMARY,
                        err=NO_SPACE_FOR_FILE)
        self.assert_run("-", "--picture", "same", "--trace-out", "./same", stdin=TRACE, status=2,
                        err="sensorvela-replay: --picture and --trace-out: expected two files\n")
        self.assert_bad_usage("--check", "-", "--picture", "run.html", stdin=TRACE,
                              err="--picture excludes --check")

    def test_says_that_it_draws_no_pictures(self):
        if self.has_picture:
            self.skipTest("the tool can draw pictures")
        self.assert_run("-", "--picture", "run.html", stdin=TRACE, status=2,
                        err="sensorvela-replay: --picture: this build has none, for want of a library to "
                            "draw with (Debian: node-d3-axis, node-d3-scale, node-d3-zoom)\n")

    def test_does_not_overwrite_the_trace(self):
        for option in ["--trace-out", "--picture"] if self.has_picture else ["--trace-out"]:
            for trace in ["-", "input"]:
                self.assert_run(trace, option, "input", stdin=TRACE, status=2,
                                err=f"sensorvela-replay: {option} would overwrite the trace\n")
                self.assertEqual(self.read("input"), TRACE)

    def test_fits_a_terminal(self):
        self.write("trace", ERRORS_TRACE)
        for no_color, term, begin, end in [("", "xterm", "\x1b[33m", "\x1b[0m"),
                                           ("1", "xterm", "", ""),
                                           ("", "dumb", "", "")]:
            with self.subTest(no_color=no_color, term=term):
                status, shown = self.run_on_terminal(
                    "--only", "1/2", "trace", COLUMNS="58", TERM=term, NO_COLOR=no_color)
                self.assertEqual(shown, ERRORS_ON_TERMINAL.format(begin, end))
                self.assertEqual(status, 0)

    def test_reads_files_and_pipes_plain_and_compressed(self):
        for content in [TRACE.encode(), gzip.compress(TRACE.encode(), mtime=0)]:
            for trace, is_piped in [("input", False), ("-", False), ("-", True)]:
                with self.subTest(content=content, is_piped=is_piped):
                    self.assert_run("--log", trace, stdin=content, is_piped=is_piped,
                                    out=LOG + "\n" + SUMMARY)

    def test_says_that_the_output_cannot_be_written(self):
        with full_device() as full:
            self.assert_run("--help", into=full, status=1, out=None, err=NO_SPACE_FOR_OUTPUT)

    # A run ends where a write fails: it prints no summary, and does not finish the viewer's file.

    def test_ends_where_the_output_cannot_be_written(self):
        with full_device() as full:
            self.assert_run("input", "--wide", "--trace-out", "events.json", stdin=LONG_TRACE, into=full,
                            status=1, out=None, err=NO_SPACE_FOR_OUTPUT)
        self.assertFalse(self.read("events.json").endswith(EVENTS_END))

    def test_ends_where_the_file_for_viewers_cannot_be_written(self):
        status, printed, complained = self.run_tool(
            "-", "--wide", "--trace-out", "/dev/full", stdin=LONG_TRACE)
        self.assertEqual((status, complained), (1, NO_SPACE_FOR_FILE))
        self.assertTrue(printed.endswith("# " + LONG_NOTE + "\n"), printed[-1000:])

    def test_finishes_the_file_for_viewers_when_nobody_reads_the_output(self):
        with closed_pipe() as pipe:
            self.assert_run("input", "--wide", "--trace-out", "events.json", stdin=LONG_TRACE, into=pipe,
                            status=1, out=None)
        self.assert_events_written()

    def test_says_that_it_cannot_start_a_thread(self):
        if len(self.tool) > 1 or self.is_instrumented:
            self.skipTest("emulators do not pass the limit on, and sanitizers need another address space")
        # The system refuses every thread, because no address space holds a stack of this size, in KiB.
        self.tool = ["sh", "-c", 'ulimit -s 137438953472 && exec "$0" "$@"', *self.tool]
        self.assert_run("-", stdin=TRACE, status=1,
                        err="sensorvela-replay: cannot start a thread: Resource temporarily unavailable\n")


if __name__ == "__main__":
    main()
