#!/usr/bin/python3
"""Whole sessions with the desktop program, and how it is stopped in their midst.

desktop_process_test.py CORVANE CORVANE_CLI CRASHRECEIVER CRASH_AT_SIGNAL [NAME]: runs the test of that name, or
all of them. CRASH_AT_SIGNAL is a library that is loaded into the program to make it crash."""

import os
import re
import signal
import sys

sys.dont_write_bytecode = True  # nothing is left among the sources

from desktop_test_case import CORVANE_WINDOW, LIBRARY_WINDOW, DesktopTestCase, main
from private_session import wait_until

HALF_SIZE = 2  # index of the output size's cell


class DesktopProcessTest(DesktopTestCase):
    def expect_stopped_in_order(self):
        """Some photos are copied whole, the others are as they were, and nothing is left over."""
        copies = self.library.copies()
        self.assertGreaterEqual(len(copies), 1)
        self.assertLess(len(copies), len(self.originals))
        for copy in copies:
            self.assertFalse(copy["missing"])
            self.assertEqual(copy["albums"].count("Corvane For iPhoto"), 1)
        tagged = [p for p in self.library.originals() if "Corvane Original" in p["keywords"]]
        self.assertEqual(len(tagged), len(copies))
        self.assertEqual(len(self.library.originals()), len(self.originals))
        info = self.library.info()
        self.assertEqual(info["problems"], [])
        self.assertEqual(info["trash"]["photos"], 0)
        self.assertTrue(info["writable"])
        self.assertEqual(self.services.notifications, [])
        self.assertEqual(self.services.held_inhibitors(), [])

    def test_aWholeSessionConvertsTellsAndLetsTheMachineSleepAgain(self):
        self.start(photos=3, megapixels=0.5)
        self.select_raw()
        self.program.press(CORVANE_WINDOW, "alt+l")
        wait_until(lambda: self.control("radio button", "Half").is_checked, "half size")
        self.program.press(CORVANE_WINDOW, "alt+v")
        wait_until(lambda: self.control("check box", "Remove originals").is_checked, "removal")
        self.assertEqual(self.services.inhibitors, [])
        self.program.click(self.control("push button", "Convert to JPEG"))

        alert = self.program.dialog_with("All Done")
        told = "\n".join(alert.texts())
        self.assertIn("Corvane finished processing.", told)
        megabytes = sum(photo["bytes"] for photo in self.originals) / 2**20
        self.assertIn(f"Originals: {megabytes:.2f} MB", told)
        self.program.click(alert.find("push button", name="OK"))
        wait_until(lambda: self.label("Selected photos") == "0", "the originals are gone")

        self.check_what_the_desktop_was_asked()
        self.program.press(LIBRARY_WINDOW, "ctrl+q")
        self.assertEqual(self.program.exit_status(), 0)
        self.check_the_library_after_the_session()
        settings = self.settings()
        self.assertEqual(settings["JpegOutputSize"], HALF_SIZE)
        self.assertIs(settings["TrashEnabled"], True)

    def check_what_the_desktop_was_asked(self):
        program = "io.github.corvane.Corvane"  # the name of its desktop entry and icon
        text = "Corvane has finished processing."
        told = ("Corvane", program, program, "Conversion Complete", text)
        self.assertEqual(self.services.notifications, [told])
        services = sorted(inhibitor.service for inhibitor in self.services.inhibitors)
        self.assertEqual(services, ["login", "screen saver", "session"])
        self.assertEqual(self.services.held_inhibitors(), [])

    def check_the_library_after_the_session(self):
        info = self.library.info()
        self.assertEqual(info["problems"], [])
        self.assertEqual(info["trash"]["photos"], len(self.originals))
        self.assertEqual(self.library.originals(), [])
        copies = {copy["name"]: copy for copy in self.library.copies()}
        self.assertEqual(sorted(copies), sorted(photo["name"] for photo in self.originals))
        for photo in self.originals:
            copy = copies[photo["name"]]
            self.assertFalse(copy["missing"])
            self.assertEqual(copy["comment"], photo["comment"])
            for side in ("width", "height"):
                self.assertAlmostEqual(copy[side], photo[side] / 2, delta=1)

    def test_aScanByEventAsksForTheLibraryAndTheEmptiedTrashFreesSpace(self):
        self.start(photos=2, megapixels=0.5)
        self.select_raw()
        self.program.press(CORVANE_WINDOW, "alt+e")
        self.program.press(CORVANE_WINDOW, "alt+v")
        self.program.press(CORVANE_WINDOW, "alt+c")
        prompt = self.program.window("Read Access Required")
        self.program.click(wait_until(lambda: self.file_in(prompt), "the library is offered"))
        answer = prompt.find("push button", name="Open")
        wait_until(lambda: answer.is_enabled, "the library is picked")
        self.program.click(answer)
        alert = self.program.dialog_with("All Done")
        self.program.click(alert.find("push button", name="OK"))
        for photo in self.originals:
            [copy] = [copy for copy in self.library.copies() if copy["name"] == photo["name"]]
            self.assertIn(photo["roll"]["name"], copy["albums"])

        wait_until(lambda: self.trash_can_be_emptied(), "the trash can be emptied")
        self.program.press(LIBRARY_WINDOW, "alt+l", "e")
        question = self.program.dialog_with("Delete 2 photos for good?")
        self.program.click(question.find("push button", name="Delete"))
        wait_until(lambda: self.library.info()["trash"]["photos"] == 0, "the trash is empty")
        self.program.press(LIBRARY_WINDOW, "ctrl+q")
        self.assertEqual(self.program.exit_status(), 0)
        self.assertEqual(self.library.info()["problems"], [])
        for photo in self.originals:
            self.assertFalse(os.path.exists(photo["originalPath"]))

    def file_in(self, panel):
        """The library among the files of an open panel."""
        files = panel.find("tree", name="Files")
        return files and files.find("tree item", name=self.library.path.name)

    def trash_can_be_emptied(self):
        window = self.program.window(LIBRARY_WINDOW)
        return window.find("menu item", name="Empty Trash…").is_enabled

    def test_closingTheWindowDuringAScanAsksAndEndsTheProgramWhenToldSo(self):
        self.start(photos=8, megapixels=1.5)
        self.start_scan_and_wait_for_a_copy()
        self.program.close_window(CORVANE_WINDOW)
        question = self.program.dialog_with("A scan is running. Stop it and quit?")
        self.program.click(question.find("push button", name="Stop and Quit"))
        self.assertEqual(self.program.exit_status(), 0)
        self.expect_stopped_in_order()

    def test_aScanThatLosesItsLibraryIsAbortedAndLetsTheMachineSleepAgain(self):
        self.start(photos=8, megapixels=1.5)
        self.start_scan_and_wait_for_a_copy()
        elsewhere = self.home.path / "Elsewhere"
        self.library.path.rename(elsewhere)
        alert = self.program.dialog_with("Conversion Aborted")
        wait_until(lambda: not self.services.held_inhibitors(), "the machine may sleep")
        self.assertEqual(len(self.services.inhibitors), 3)
        self.assertEqual(self.services.notifications, [])
        self.program.click(alert.find("push button", name="OK"))
        self.program.send_signal(signal.SIGTERM)
        self.assertEqual(self.program.exit_status(), 128 + signal.SIGTERM)
        self.assertFalse(self.library.path.exists(), "nothing is made where the library was")
        self.library.path = elsewhere
        self.assertEqual(len(self.library.originals()), len(self.originals))

    def test_aSignalDuringAScanEndsTheProgramInOrder(self):
        self.start(photos=8, megapixels=1.5)
        self.start_scan_and_wait_for_a_copy()
        self.program.send_signal(signal.SIGTERM)
        self.assertEqual(self.program.exit_status(), 128 + signal.SIGTERM)
        self.expect_stopped_in_order()

    def test_theSecondSignalEndsTheProgramAtOnceAndTheLibraryStaysSound(self):
        self.start(photos=8, megapixels=1.5)
        self.start_scan_and_wait_for_a_copy()
        self.program.send_signal(signal.SIGTERM)
        self.program.send_signal(signal.SIGINT)  # two of a kind might arrive as one
        self.assertIn(self.program.exit_status(), (-signal.SIGTERM, -signal.SIGINT))
        self.assertLess(len(self.library.copies()), len(self.originals))
        self.assertEqual(len(self.library.originals()), len(self.originals))
        self.assertEqual(self.library.info()["problems"], [])

    def test_aSignalWithoutAScanEndsTheProgram(self):
        self.start(photos=1, megapixels=0.5)
        self.program.send_signal(signal.SIGINT)
        self.assertEqual(self.program.exit_status(), 128 + signal.SIGINT)
        self.assertEqual(self.library.info()["problems"], [])


if __name__ == "__main__":
    sys.exit(main(DesktopProcessTest))
