"""Tests the command line of sensorvela-log: its exit status and what it writes to each stream.

For the usage see command_test_case.py.
"""

import bz2
import gzip
import lzma
import random

from command_test_case import CommandTestCase, closed_pipe, full_device, main

ONLINE = "I/sensor-vela( 812): IStats service online.\n"

ONLINE_JSON_LINES = (
    '{"kind":"log_summary","version":1,"lines":1,"library_lines":1,"unknown_lines":0,"engine_starts":1,'
    '"lost_drains":0,"failed_reports":0,"errors_reported":0,"errors_blocked":0,"errors_not_in_log":0}\n'
    '{"kind":"engine_start","pid":812,"tid":null,"service":"online","wait_ms":null,"started":null,'
    '"wait_ended":{"line":1,"time":null}}\n')


def text_report(lines):
    """What the tool prints of a log that has the line ONLINE so many times and no other."""
    report = f"""\
           {lines}  lines
           {lines}  library lines
           0  unknown lines
           {lines}  engine starts
           0  lost drains
           0  failed reports
           0  errors reported
           0  errors blocked
           0  errors not in log
"""
    if lines > 0:
        report += "\nEngine starts\n  pid  tid  service  wait ms  started  wait ended\n"
    for line in range(1, lines + 1):
        report += f"  812  -    online   -        -        line {line}\n"
    return report


class LogCommandTest(CommandTestCase):
    def test_prints_what_the_lines_say_together(self):
        self.assert_run("-", stdin=ONLINE, out=text_report(lines=1))
        self.assert_run("-", "--format", "jsonl", stdin=ONLINE, out=ONLINE_JSON_LINES)
        self.assert_run("-", "input", stdin=ONLINE, out=text_report(lines=2))
        self.assert_run("-", stdin="", out=text_report(lines=0))

    def test_prints_help_and_version(self):
        status, printed, complained = self.run_tool("--help")
        self.assertEqual((status, complained), (0, ""))
        self.assertIn("threadtime", printed)
        status, printed, complained = self.run_tool("--version")
        self.assertEqual((status, complained), (0, ""))
        self.assertRegex(printed, r"\Asensorvela-log \d+\.\d+\.\d+\n\Z")

    def test_refuses_what_is_no_file(self):
        self.assert_run("no/such", status=1, err="sensorvela-log: no/such: No such file or directory\n")
        self.assert_run("-", "/", stdin=ONLINE, status=1, err="sensorvela-log: /: Is a directory\n")

    def test_refuses_bad_usage(self):
        self.assert_bad_usage(err="FILE is required")
        self.assert_bad_usage("-", "--format", "xml", err="--format: xml not in ")

    def test_reads_text_with_a_byte_order_mark_and_compressed_text(self):
        compressed = gzip.compress(ONLINE.encode(), mtime=0)
        for content in [ONLINE.encode("utf-8-sig"), compressed, compressed + bytes(512)]:
            for log, is_piped in [("input", False), ("-", False), ("-", True)]:
                with self.subTest(content=content, is_piped=is_piped):
                    self.assert_run(log, stdin=content, is_piped=is_piped, out=text_report(lines=1))

    def test_reads_files_that_were_put_together(self):
        compressed = gzip.compress(ONLINE.encode(), mtime=0)
        self.assert_run("-", stdin=compressed * 2, out=text_report(lines=2))
        self.assert_run("-", stdin=f"\x1b[38;5;40m{ONLINE[:-1]}\x1b[0m\n{ONLINE}", out=text_report(lines=2))

    def test_refuses_what_is_no_text(self):
        log = (ONLINE * 10_000).encode()
        compressed = gzip.compress(log, mtime=0)
        damaged = "its gzip data is cut or damaged, or something else follows it"
        zstd_magic = bytes.fromhex("28b52ffd")
        rng = random.Random(1)
        for content, why in [(b"\xff\xfeI", "is UTF-16: convert it to UTF-8 first"),
                             (ONLINE.encode("utf-16-le"), "is no text"),
                             (b"PK\x03\x04", "is a zip archive: decompress it first"),
                             (b"\x1f\x8b\x08", damaged),
                             (gzip.compress(bytes(range(32, 96)) * 30_000)[:-9], damaged),
                             (compressed + ONLINE.encode(), damaged),
                             (compressed + log, damaged),
                             (compressed + b"\0" * 512 + log, damaged),
                             (gzip.compress(compressed), "is gzip data: decompress it first"),
                             (log + compressed, "from line 10001 on is gzip data: decompress it first"),
                             (bz2.compress(log, 1), "is bzip2 data: decompress it first"),
                             (log + bz2.compress(log), "from line 10001 on is bzip2 data: decompress it first"),
                             (lzma.compress(log), "is xz data: decompress it first"),
                             (zstd_magic, "is zstd data: decompress it first"),
                             (rng.randbytes(100), "is no text"),
                             (rng.randbytes(1_000_000), "is no text"),
                             (bytes(100), "is no text")]:
            with self.subTest(content=content[:20]):
                self.assert_run("-", stdin=content, status=1, err=f"sensorvela-log: -: {why}\n")

    def test_reads_a_log_with_some_bytes_of_no_text(self):
        log = (ONLINE * 10_000).encode()
        for content, lines in [(ONLINE.encode() + bytes([1]), 2), (log + bytes(8192), 10_001)]:
            with self.subTest(content=content[-20:]):
                status, printed, complained = self.run_tool("-", stdin=content)
                self.assertEqual((status, complained), (0, ""))
                self.assertIn(f"{lines:12}  lines\n", printed)

    def test_says_that_the_output_cannot_be_written(self):
        for arguments in [["--version"], ["-"]]:
            with full_device() as full:
                self.assert_run(
                    *arguments, stdin=ONLINE, into=full, status=1, out=None,
                    err="sensorvela-log: cannot write to standard output: No space left on device\n")

    def test_says_nothing_when_nobody_reads_the_output(self):
        with closed_pipe() as pipe:
            self.assert_run("-", stdin=ONLINE, into=pipe, status=1, out=None)


if __name__ == "__main__":
    main()
