#!/usr/bin/env python3
"""scripts/check-floors notices each kind of violation. Run as: check_floors_test.py PATH_OF_CHECK_FLOORS"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK_FLOORS = sys.argv.pop()
PUBLIC = "#pragma once\n"


class CheckFloors(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.write("include/corvane/foundation/Mutex.h", PUBLIC + "#include <pthread.h>\n#include <string>\n")
        self.write("include/corvane/Window.h", PUBLIC)
        self.write("platform/input/include/corvane/input/InputDriver.h", PUBLIC)

    def write(self, path, text):
        file = pathlib.Path(self.folder.name, path)
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def check(self):
        return subprocess.run([CHECK_FLOORS, self.folder.name], capture_output=True, text=True)

    def assert_refused(self, path, text, message):
        self.write(path, text)
        result = self.check()
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn(path, result.stdout)
        self.assertIn(message, result.stdout)

    def test_accepts_a_tree_in_order(self):
        self.write("src/window/Window.cpp", "#include <corvane/Window.h>\n#include <corvane/foundation/Mutex.h>\n")
        result = self.check()
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertIn("4 files checked, 0 break", result.stdout)

    def test_refuses_a_tree_without_files(self):
        with tempfile.TemporaryDirectory() as empty:
            self.assertEqual(subprocess.run([CHECK_FLOORS, empty], capture_output=True).returncode, 1)

    def test_refuses_an_include_from_above(self):
        self.assert_refused("src/application/State.cpp", "#include <corvane/Window.h>\n", "floor 3 includes floor 4")

    def test_refuses_a_private_header_from_above(self):
        self.write("src/window/Walk.h", PUBLIC)
        self.assert_refused("platform/common/src/Sink.cpp", '#include "../../../src/window/Walk.h"\n',
                            "floor 2 includes floor 4")

    def test_refuses_the_window_that_knows_its_runner(self):
        self.write("include/corvane/WindowExec.h", PUBLIC)
        self.assert_refused("src/window/Window.cpp", "#include <corvane/WindowExec.h>\n", "floor 4 includes floor 6")

    def test_refuses_an_input_library_that_knows_the_process_manager(self):
        self.write("platform/procman/include/corvane/procman/ORUClient.h", PUBLIC)
        self.assert_refused("platform/input/src/Driver.cpp", "#include <corvane/procman/ORUClient.h>\n",
                            "know nothing of each other")

    def test_refuses_a_directfb_adapter_that_knows_a_window(self):
        self.assert_refused("src/directfb/Cursor.cpp", "#include <corvane/Window.h>\n", "floor 7 stands on")

    def test_refuses_a_tool_that_uses_a_private_header(self):
        self.write("src/server/Guard.h", PUBLIC)
        self.assert_refused("tools/corvanectl/main.cpp", '#include "../../src/server/Guard.h"\n', "floor 8 uses public")

    def test_lets_a_tool_use_its_own_folder(self):
        self.write("tools/corvanectl/Output.h", PUBLIC)
        self.write("tools/corvanectl/main.cpp", '#include "Output.h"\n#include <corvane/Window.h>\n')
        self.assertEqual(self.check().returncode, 0, self.check().stdout)

    def test_refuses_a_room_of_the_process_manager_that_knows_the_one_above(self):
        self.write("daemons/procmand/box/Box.h", PUBLIC)
        self.write("daemons/procmand/box/Box.cpp", '#include "box/Box.h"\n')
        self.assertEqual(self.check().returncode, 0, self.check().stdout)
        self.assert_refused("daemons/procmand/launch/Launcher.cpp", '#include "box/Box.h"\n', "this room is above")

    def test_refuses_another_library_in_a_public_header(self):
        self.assert_refused("include/corvane/foundation/Text.h", PUBLIC + "#include <json/json.h>\n", "keeps other")

    def test_accepts_the_keys_of_directfb_in_the_one_public_header_that_gives_them(self):
        keys = "platform/input/include/corvane/input/DFBInputEvents.h"
        self.write(keys, PUBLIC + "#include <directfb_keyboard.h>\n")
        self.assertEqual(self.check().returncode, 0, self.check().stdout)
        self.assert_refused(keys, PUBLIC + "#include <directfb.h>\n", "keeps other")

    def test_refuses_the_keys_of_directfb_in_another_public_header(self):
        self.assert_refused("include/corvane/DFBCursor.h", PUBLIC + "#include <directfb_keyboard.h>\n", "keeps other")

    def test_refuses_another_library_in_the_wrong_place(self):
        self.assert_refused("src/server/Reply.cpp", "#include <simdjson.h>\n", "not for this place")

    def test_refuses_a_private_header_in_a_public_one(self):
        self.write("src/foundation/Quote.h", PUBLIC)
        self.assert_refused("include/corvane/foundation/Text.h", PUBLIC + "#include <Quote.h>\n", "public headers only")

    def test_refuses_a_public_header_without_pragma_once(self):
        self.assert_refused("include/corvane/foundation/Text.h", "#include <string>\n", "has no #pragma once")

    def test_refuses_a_file_without_a_floor(self):
        self.assert_refused("src/sound/Mixer.cpp", "", "belongs to no floor")

    def test_refuses_a_public_header_that_does_not_exist(self):
        self.assert_refused("src/window/Window.cpp", "#include <corvane/Widnow.h>\n", "no such header")


unittest.main(verbosity=2)
