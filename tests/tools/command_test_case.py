"""What the tests of the commands share.

Usage of a test: NAME_test.py [--instrumented] [--picture] -- TOOL...
TOOL are the words that start the tool: its file, after those of the emulator that runs it, if any.
"""

import argparse
import contextlib
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest


@contextlib.contextmanager
def closed_pipe():
    """The end to write to of a pipe that nobody reads any more."""
    reader, writer = os.pipe()
    os.close(reader)
    with open(writer, "wb") as pipe:
        yield pipe


@contextlib.contextmanager
def full_device():
    with open("/dev/full", "wb") as device:
        yield device


class CommandTestCase(unittest.TestCase):
    """Runs the tool, each test in a folder of its own. `main` sets what the command line says."""

    maxDiff = None
    tool = []
    is_instrumented = False
    has_picture = False

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, content):
        """Writes a text or bytes to a file in the folder."""
        (self.folder / name).write_bytes(content.encode() if isinstance(content, str) else content)

    def read(self, name):
        return (self.folder / name).read_text(encoding="utf-8")

    def run_tool(self, *arguments, stdin="", is_piped=False, into=subprocess.PIPE):
        """Returns the exit status and what the tool writes to its two streams.

        The file `input` has what is on standard input, a text or bytes, and is standard input unless a pipe
        is. If the output goes `into` something else than the pipe of this test, there is None for it.
        """
        self.write("input", stdin)
        with open(self.folder / "input", "rb") as file:
            source = {"input": file.read()} if is_piped else {"stdin": file}
            ended = subprocess.run([*self.tool, *arguments], cwd=self.folder, stdout=into,
                                   stderr=subprocess.PIPE, check=False, **source)
        out = None if ended.stdout is None else ended.stdout.decode()
        return ended.returncode, out, ended.stderr.decode()

    def assert_run(self, *arguments, status=0, out="", err="", **streams):
        """Runs the tool and compares its exit status and all that it writes."""
        with self.subTest(arguments=arguments):
            ended_with, printed, complained = self.run_tool(*arguments, **streams)
            self.assertEqual(complained, err)
            self.assertEqual(printed, out)
            self.assertEqual(ended_with, status)

    def assert_bad_usage(self, *arguments, err, **streams):
        """The tool must end with status 2, print nothing and complain, among other words, of `err`."""
        with self.subTest(arguments=arguments):
            status, printed, complained = self.run_tool(*arguments, **streams)
            self.assertIn(err, complained)
            self.assertEqual(printed, "")
            self.assertEqual(status, 2)


def main():
    """Runs the tests of the script that calls it. The script fails if no test has run."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--instrumented", action="store_true", help="the tool is built with a sanitizer")
    parser.add_argument("--picture", action="store_true", help="the tool can draw pictures")
    parser.add_argument("tool", nargs="+", metavar="TOOL", help="the words that start the tool")
    options = parser.parse_args()
    CommandTestCase.tool = [*options.tool[:-1], os.path.abspath(options.tool[-1])]
    CommandTestCase.is_instrumented = options.instrumented
    CommandTestCase.has_picture = options.picture
    result = unittest.main(argv=sys.argv[:1], exit=False).result
    if result.testsRun == len(result.skipped):
        sys.exit("no test has run")
    sys.exit(0 if result.wasSuccessful() else 1)
