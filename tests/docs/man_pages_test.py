#!/usr/bin/env python3
"""The man pages tell of each command, option and variable, and of none that is not there.

Run as: man_pages_test.py ROOT CORVANECTL PROCMAND
"""
import pathlib
import re
import subprocess
import sys
import unittest

PROCMAND = sys.argv.pop()
CORVANECTL = sys.argv.pop()
ROOT = pathlib.Path(sys.argv.pop())


def page(name):
    return (ROOT / "packaging/man" / name).read_text()


def options_in_page(name):
    return set(re.findall(r"Fl -([a-z][a-z-]*)|, -([a-z][a-z-]+)", page(name)))


def help_of(*words):
    return subprocess.run([*words, "--help"], capture_output=True, text=True, check=True).stdout


def options_in_help(text):
    return set(re.findall(r"^ +(?:-h,)?--([a-z-]+)", text, re.MULTILINE))


def commands_in_help(text):
    section = re.search(r"^Commands:\n((?:  .*\n)+)", text, re.MULTILINE)
    return re.findall(r"^  (\S+)", section[1], re.MULTILINE) if section else []


def all_help_of(*words):
    text = help_of(*words)
    return text + "".join(all_help_of(*words, command) for command in commands_in_help(text))


def without_arguments(item):
    """An item's commands: "stop Ar UID , Cm restart Ar UID" becomes "stop , Cm restart"."""
    return re.sub(r" Op Cm .*| Ar .*?(?= , |$)", "", item)


class ManPages(unittest.TestCase):
    def assert_options(self, name, text):
        told = {one or other for one, other in options_in_page(name)}
        there = options_in_help(text)
        self.assertTrue(there)
        self.assertEqual(there - told, set(), "the page does not tell of these")
        self.assertEqual(told - there, set(), "the program does not have these")

    def test_corvanectl_has_the_options_of_its_page(self):
        self.assert_options("corvanectl.1", all_help_of(CORVANECTL))

    def test_procmand_has_the_options_of_its_page(self):
        self.assert_options("corvane-procmand.8", help_of(PROCMAND))

    def test_corvanectl_has_the_commands_of_its_page(self):
        lines = re.findall(r"^\.It Cm (.*)", page("corvanectl.1"), re.MULTILINE)
        told = {word for line in lines for word in re.findall(r"(?:^|Cm |, )([a-z-]+)", without_arguments(line))}
        self.assertEqual(set(commands_in_help(help_of(CORVANECTL))), told)

    def test_the_overview_has_the_variables_that_the_libraries_read(self):
        read = set()
        for folder in ("src", "platform"):
            for source in (ROOT / folder).rglob("*.cpp"):
                read |= set(re.findall(r'"(CORVANE_[A-Z_]+)"', source.read_text()))
        self.assertTrue(read)
        self.assertEqual(set(re.findall(r"^\.It Ev (CORVANE_\w+)", page("corvane.7"), re.MULTILINE)), read)


unittest.main()
