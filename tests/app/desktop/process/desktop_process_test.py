#!/usr/bin/python3
"""The whole desktop program as a process: real windows on a display of their own, real keys and clicks,
the desktop's services on a private bus, and afterwards a look at the library on disk.

desktop_process_test.py CORVANE CORVANE_CLI CRASHRECEIVER [NAME]: runs the test of that name, or all of them."""

import datetime
import os
import plistlib
import re
import resource
import shutil
import signal
import sys
import unittest

sys.dont_write_bytecode = True  # nothing is left among the sources

from crash_receiver import CrashReceiver
from desktop_program import DesktopProgram
from desktop_services import DesktopServices
from photo_library import PhotoLibrary
from private_session import Display, Home, on_private_bus, wait_until

LIBRARY_WINDOW = "Sample.photolibrary — Photo Library"
CORVANE_WINDOW = "Corvane For iPhoto"
INSIDE = "CORVANE_PRIVATE_BUS"  # set once this script runs on a bus of its own
SUBMISSION_URL = "ZTBCrashReporterCrashSubmissionURL"
LAST_REPORT = "ZTBCrashReporterLastCrashReportDate"
HALF_SIZE = 2  # index of the output size's cell


class DesktopProcessTest(unittest.TestCase):
    corvane = ""
    corvane_cli = ""
    crashreceiver = ""

    def setUp(self):
        self.services = self.made(DesktopServices())
        self.home = self.made(Home())
        self.environment = self.home.environment(self.made(Display()))

    def made(self, thing):
        self.addCleanup(thing.close)
        return thing

    def start(self, photos, megapixels):
        """The program with a library that has so many RAW photos and half as many others."""
        self.library = PhotoLibrary(
            self.corvane_cli, self.home.pictures, self.environment, photos, megapixels
        )
        self.originals = self.library.originals()
        self.assertEqual(len(self.originals), photos)
        self.start_program()

    def start_program(self):
        command = [self.corvane, str(self.library.path)]
        self.program = self.made(DesktopProgram(command, self.environment, self.services))
        self.program.window(LIBRARY_WINDOW)

    def select_raw(self):
        """Selects the RAW photos in the library window and opens Corvane's."""
        self.program.press(LIBRARY_WINDOW, "ctrl+r")
        chosen = re.compile(f"Selected: {len(self.originals)} of ")
        wait_until(
            lambda: any(map(chosen.match, self.program.window(LIBRARY_WINDOW).texts())),
            "RAW photos are selected",
        )
        self.program.press(LIBRARY_WINDOW, "ctrl+j")
        count = str(len(self.originals))
        wait_until(lambda: self.label("Selected photos") == count, "Corvane's window counts them")

    def label(self, description):
        """The text of a label of Corvane's window."""
        found = self.program.window(CORVANE_WINDOW).find("label", description=description)
        return found.name if found else None

    def control(self, role, name):
        """A control of Corvane's window."""
        return self.program.window(CORVANE_WINDOW).find(role, name=name)

    def start_scan_and_wait_for_a_copy(self):
        """Returns while the second photo or a later one is worked on."""
        self.select_raw()
        self.program.press(CORVANE_WINDOW, "alt+c")
        wait_until(lambda: self.library.copies(), "the first copy")
        self.assertTrue(self.services.held_inhibitors())

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
        settings = plistlib.loads(self.home.settings.read_bytes())
        self.assertEqual(settings["JpegOutputSize"], HALF_SIZE)
        self.assertIs(settings["TrashEnabled"], True)

    def check_what_the_desktop_was_asked(self):
        told = ("Corvane", "Conversion Complete", "Corvane has finished processing.")
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

    def settings(self):
        return plistlib.loads(self.home.settings.read_bytes())

    def write_settings(self, **settings):
        """Before the program starts."""
        self.home.settings.parent.mkdir(parents=True, exist_ok=True)
        self.home.settings.write_bytes(plistlib.dumps(settings))

    def crash(self):
        """Ends the program as a fault does; answers the log that it leaves."""
        self.program.send_signal(signal.SIGSEGV)
        self.assertEqual(self.program.exit_status(), -signal.SIGSEGV)
        [log] = self.home.crash_logs.iterdir()
        self.assertRegex(log.name, r"^Corvane_[0-9_-]+\.crash$")
        text = log.read_text(encoding="utf-8")
        self.assertTrue(text.startswith("Program:      corvane (Corvane)\n"), text[:200])
        self.assertIn("\nSignal:       11 SIGSEGV\n", text)
        self.assertTrue(text.endswith("\nEnd of the log\n"), text[-200:])
        self.assertNotIn(str(self.home.path), text)
        return log

    def crash_window(self):
        """The window that offers a log; none where there is none."""
        return self.program.window_beginning("Crash Reporter: Corvane")

    def test_aCrashDuringAScanLeavesTheLibrarySoundAndIsOfferedAtTheNextStart(self):
        self.write_settings(**{SUBMISSION_URL: "http://127.0.0.1:9/"})
        self.start(photos=8, megapixels=1.5)
        self.start_scan_and_wait_for_a_copy()
        log = self.crash()
        self.assertLess(len(self.library.copies()), len(self.originals))
        self.assertEqual(len(self.library.originals()), len(self.originals))
        self.assertEqual(self.library.info()["problems"], [])

        self.start_program()
        window = wait_until(self.crash_window, "the log is offered")
        self.assertTrue(window.find("text", name="Crash log").is_showing)
        self.program.click(window.find("push button", name="Ignore"))
        wait_until(lambda: not self.crash_window(), "the window goes")
        self.assertTrue(log.exists())
        self.program.press(LIBRARY_WINDOW, "ctrl+q")
        self.assertEqual(self.program.exit_status(), 0)
        self.assertEqual(self.library.info()["problems"], [])

    def test_aCrashIsReportedToTheReceiverAndNotOfferedAgain(self):
        receiver = self.made(CrashReceiver(self.crashreceiver, self.home.path / "reports"))
        last = datetime.datetime(2026, 1, 31)
        self.write_settings(**{SUBMISSION_URL: receiver.url, LAST_REPORT: last})
        self.start(photos=1, megapixels=0.5)
        log = self.crash()
        content, name, modified = log.read_bytes(), log.name, int(log.stat().st_mtime)

        self.start_program()
        window = wait_until(self.crash_window, "the log is offered")
        self.program.press(window.name, *"fell")
        self.program.click(window.find("push button", name="Report"))
        thanks = self.program.dialog_with("The crash report was successfully submitted.")
        self.program.click(thanks.find("push button", name="OK"))
        wait_until(lambda: not self.crash_window(), "the window goes")

        [report] = receiver.reports()
        self.assertEqual(report.log, content)
        self.assertEqual(report.facts["crashLog"]["name"], name)
        self.assertEqual(report.facts["fields"]["comments"], "fell")
        self.assertEqual(report.facts["fields"]["applicationName"], "Corvane")
        self.assertEqual(list(self.home.crash_logs.iterdir()), [])
        self.program.press(LIBRARY_WINDOW, "ctrl+q")
        self.assertEqual(self.program.exit_status(), 0)
        last = self.settings()[LAST_REPORT].replace(tzinfo=datetime.timezone.utc)
        self.assertEqual(last.timestamp(), modified)

        self.start_program()
        self.program.press(LIBRARY_WINDOW, "ctrl+j")  # the main loop has turned by then
        self.program.window(CORVANE_WINDOW)
        self.assertIsNone(self.crash_window())
        self.program.press(LIBRARY_WINDOW, "ctrl+q")
        self.assertEqual(self.program.exit_status(), 0)
        self.assertEqual(len(receiver.reports()), 1)


def main():
    missing = [tool for tool in ("Xvfb", "xdotool", "dbus-run-session") if not shutil.which(tool)]
    if missing:
        sys.exit(f"not installed: {' '.join(missing)}. \"./dev setup\" installs them.")
    if INSIDE not in os.environ:
        os.environ[INSIDE] = "1"
        return on_private_bus([sys.executable, *sys.argv])
    # No core is left, and with a limit of one byte none is handed to a program either.
    resource.setrlimit(resource.RLIMIT_CORE, (1, 1))
    test = DesktopProcessTest
    test.corvane, test.corvane_cli, test.crashreceiver = sys.argv[1:4]
    names = [f"DesktopProcessTest.{name}" for name in sys.argv[4:]]
    return 0 if unittest.main(argv=[sys.argv[0], *names], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
