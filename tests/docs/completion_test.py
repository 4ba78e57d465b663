#!/usr/bin/env python3
"""Completion of corvanectl, in an interactive bash at a terminal. Run as: completion_test.py ROOT CORVANECTL HELLO_WINDOW"""
import os
import pathlib
import pty
import re
import select
import subprocess
import sys
import tempfile
import time
import unittest

HELLO_WINDOW = sys.argv.pop()
CORVANECTL = sys.argv.pop()
ROOT = pathlib.Path(sys.argv.pop())
DEADLINE = 20


class Shell:
    """A bash that a person types into."""

    def __init__(self, environment):
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.execvpe("bash", ["bash", "--norc", "--noprofile", "-i"], environment)
        self.type(f"PS1='ready> '; bind 'set bell-style none'; source '{ROOT}/packaging/completion/corvanectl.bash'\n")
        self.read_until(r"\r\nready> $")

    def type(self, text):
        os.write(self.terminal, text.encode())

    def read_until(self, pattern):
        text = ""
        end = time.monotonic() + DEADLINE
        while not re.search(pattern, text):
            if not select.select([self.terminal], [], [], max(0, end - time.monotonic()))[0]:
                raise AssertionError(f"{pattern!r} did not appear in {text!r}")
            text += os.read(self.terminal, 4096).decode(errors="replace")
        return text

    def complete(self, line, completed):
        """Types the line and a tab, waits for what it becomes, and takes it back."""
        self.type(line + "\t")
        self.read_until(re.escape(completed))
        self.type("\x15")

    def close(self):
        self.type("\x15exit\n")
        os.close(self.terminal)
        os.waitpid(self.pid, 0)


class Completion(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        path = f"{os.path.dirname(CORVANECTL)}:{os.environ['PATH']}"
        self.environment = {**os.environ, "CORVANE_RUNTIME_DIR": folder.name, "PATH": path, "TERM": "dumb"}
        window = subprocess.Popen([HELLO_WINDOW, "--application-type=demo", "--authorization-token=kitchen"],
                                  env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(window.wait)
        self.addCleanup(window.kill)
        end = time.monotonic() + DEADLINE
        while subprocess.run([CORVANECTL, "state", "kitchen"], env=self.environment, capture_output=True).returncode != 0:
            self.assertLess(time.monotonic(), end, "hello-window does not serve")
        self.shell = Shell(self.environment)
        self.addCleanup(self.shell.close)

    def test_completes_what_it_should(self):
        for line, completed in (
            ("corvanectl visi", "corvanectl visibility "),
            ("corvanectl state kit", "corvanectl state kitchen "),
            ("corvanectl --json state kitchen TERMINATI", "TERMINATING "),
            ("corvanectl call kitchen IWindow::setOp", "IWindow::setOpacity "),
            ("corvanectl key kitchen KEY_VOLUMEU", "KEY_VOLUMEUP "),
            ("corvanectl launch --resta", "launch --restart "),
            ("corvanectl launch --restart on", "on-failure "),
            ("corvanectl token cre", "token create "),
            ("corvanectl launch corvanec", "launch corvanectl "),
        ):
            with self.subTest(line):
                self.shell.complete(line, completed)


unittest.main()
