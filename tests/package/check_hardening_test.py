#!/usr/bin/env python3
"""Builds a program with and without each part of the hardening, and sees whether scripts/check-hardening notices.

    check_hardening_test.py CHECK_HARDENING COMPILER
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

SOURCE = """
#include <cstdio>
#define FUNCTION(number) void function##number(const char* text) { char line[80]; \\
    std::snprintf(line, sizeof line, "%s", text); std::printf("%d %s\\n", number, line); }
FUNCTION(0) FUNCTION(1) FUNCTION(2) FUNCTION(3) FUNCTION(4) FUNCTION(5) FUNCTION(6) FUNCTION(7) FUNCTION(8) FUNCTION(9)
int main(int, char** argv) { function0(argv[0]); }
"""
HARDENED = ["-O2", "-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=2", "-fstack-protector-strong", "-fcf-protection=full", "-fPIE",
            "-pie", "-Wl,-z,relro", "-Wl,-z,now"]


class CheckHardening(unittest.TestCase):
    def check(self, *weaker):
        """@return what is said of a program that these options, which come last, weaken"""
        with tempfile.TemporaryDirectory() as folder:
            source, program = pathlib.Path(folder, "source.cpp"), pathlib.Path(folder, "program")
            source.write_text(SOURCE)
            subprocess.run([COMPILER, source, "-o", program, *HARDENED, *weaker], check=True)
            result = subprocess.run([CHECK, program], text=True, capture_output=True, check=False)
            self.assertEqual(result.returncode != 0, bool(weaker), result.stdout)
            return result.stdout

    def test_finds_nothing_where_all_is_hardened(self):
        self.assertIn("1 files checked, 0 problems", self.check())

    def test_notices_each_part_that_is_missing(self):
        for weaker, problem in ((["-Wl,-z,norelro"], "its relocations stay writable"),
                                (["-Wl,-z,lazy"], "its functions are bound late"),
                                (["-Wl,-z,execstack"], "its stack is executable"),
                                (["-fno-PIE", "-no-pie"], "it has a fixed address"),
                                (["-fno-stack-protector"], "its stack has no canaries"),
                                (["-U_FORTIFY_SOURCE"], "it calls printf unchecked"),
                                (["-fcf-protection=none"], "its branches may end anywhere")):
            self.assertIn(problem, self.check(*weaker))


CHECK, COMPILER = sys.argv[1:3]
unittest.main(argv=sys.argv[:1])
