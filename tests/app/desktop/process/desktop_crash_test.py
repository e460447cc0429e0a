#!/usr/bin/python3
"""Crashes of the desktop program: from the crash over the log and its window to the report that is received.

desktop_crash_test.py CORVANE CORVANE_CLI CRASHRECEIVER CRASH_AT_SIGNAL [NAME]: runs the test of that name, or
all of them. CRASH_AT_SIGNAL is a library that is loaded into the program to make it crash."""

import datetime
import os
import signal
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # nothing is left among the sources

from crash_receiver import CrashReceiver
from desktop_test_case import CORVANE_WINDOW, LIBRARY_WINDOW, DesktopTestCase, main
from private_session import wait_until

SUBMISSION_URL = "ZTBCrashReporterCrashSubmissionURL"
LAST_REPORT = "ZTBCrashReporterLastCrashReportDate"
LIBRARY_CHECK = Path(__file__).resolve().parents[5] / "shared" / "accept" / "librarycheck.py"

# Ways to crash: the signal that each ends with, and what its log tells besides.
CRASHES = {
    "segv": (signal.SIGSEGV, "] writeToNowhere + 0x"),
    "bus": (signal.SIGBUS, "] readBehindFile + 0x"),
    "ill": (signal.SIGILL, "] executeRubbish + 0x"),
    "fpe": (signal.SIGFPE, "] divideByZero + 0x"),
    "abort": (signal.SIGABRT, "] abort + 0x"),
    "trap": (signal.SIGTRAP, " SI_TKILL: "),
    "sys": (signal.SIGSYS, " SI_TKILL: "),
    "overflow": (signal.SIGSEGV, "] recurse + 0x"),
    "heap": (signal.SIGABRT, "] freeRubbish + 0x"),
    "exception": (signal.SIGABRT, '\nText:         No "<text>" there\n'),
}


class DesktopCrashTest(DesktopTestCase):
    def start_program_to_crash(self, kind):
        """At SIGUSR1 it will crash in that way; a sanitizer is to leave that to the program."""
        handled = ("segv", "sigbus", "sigill", "sigfpe", "abort", "sigtrap")
        sanitizer = ":".join(["verify_asan_link_order=0", "abort_on_error=1"])
        sanitizer += "".join(f":handle_{name}=0" for name in handled)
        names = ("ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS")
        options = {name: f"{os.environ.get(name, '')}:{sanitizer}" for name in names}
        self.start_program(LD_PRELOAD=self.crash_at_signal, CORVANE_CRASH=kind, **options)

    def crash(self, sent=signal.SIGSEGV, ends_by=signal.SIGSEGV):
        """Ends the program as a fault does; answers the log that it leaves."""
        self.program.send_signal(sent)
        self.assertEqual(self.program.exit_status(), -ends_by)
        [log] = self.home.crash_logs.iterdir()
        self.assertRegex(log.name, r"^Corvane_[0-9_-]+\.crash$")
        text = log.read_text(encoding="utf-8")
        self.assertTrue(text.startswith("Program:      corvane (Corvane)\n"), text[:200])
        self.assertIn(f"\nSignal:       {int(ends_by)} {ends_by.name}\n", text)
        self.assertTrue(text.endswith("\nEnd of the log\n"), text[-200:])
        self.assertNotIn(str(self.home.path), text)
        return log

    def crash_window(self):
        """The window that offers a log; none where there is none."""
        return self.program.window_beginning("Crash Reporter: Corvane")

    def expect_accepted_library(self):
        """By a checker that knows nothing of the program, where it lies beside the sources."""
        if LIBRARY_CHECK.exists():
            check = [sys.executable, "-B", str(LIBRARY_CHECK), str(self.library.path)]
            found = subprocess.run(check, stdout=subprocess.PIPE, text=True, check=False)
            self.assertEqual(found.returncode, 0, found.stdout)

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
        self.quit()
        self.assertEqual(self.library.info()["problems"], [])
        self.library.open_to_write()  # what lagged behind the databases catches up
        self.expect_accepted_library()

    def start_receiver(self):
        """To which the program will report all crashes from now on."""
        receiver = self.made(CrashReceiver(self.crashreceiver, self.home.path / "reports"))
        last = datetime.datetime(2026, 1, 31)
        self.write_settings(**{SUBMISSION_URL: receiver.url, LAST_REPORT: last})
        return receiver

    def report(self, log, receiver):
        """Reports the log in the window that offers it; the log is gone then, and its date is kept."""
        content, name, modified = log.read_bytes(), log.name, int(log.stat().st_mtime)
        window = wait_until(self.crash_window, "the log is offered")
        self.program.press(window.name, *"fell")
        self.program.click(window.find("push button", name="Report"))
        thanks = self.program.dialog_with("The crash report was successfully submitted.")
        self.program.click(thanks.find("push button", name="OK"))
        wait_until(lambda: not self.crash_window(), "the window goes")

        reports = receiver.reports()
        [report] = [one for one in reports if one.facts["crashLog"]["name"] == name]
        self.assertEqual(report.log, content)
        self.assertEqual(report.facts["fields"]["comments"], "fell")
        self.assertEqual(report.facts["fields"]["applicationName"], "Corvane")
        self.assertEqual(list(self.home.crash_logs.iterdir()), [])
        last = self.settings()[LAST_REPORT].replace(tzinfo=datetime.timezone.utc)
        self.assertEqual(last.timestamp(), modified)

    def expect_no_log_is_offered(self):
        """By the program that was just started."""
        self.program.press(LIBRARY_WINDOW, "ctrl+j")  # the main loop has turned by then
        self.program.window(CORVANE_WINDOW)
        self.assertIsNone(self.crash_window())

    def test_aCrashIsReportedToTheReceiverAndNotOfferedAgain(self):
        receiver = self.start_receiver()
        self.start(photos=1, megapixels=0.5)
        log = self.crash()
        self.start_program()
        self.report(log, receiver)
        self.quit()

        self.start_program()
        self.expect_no_log_is_offered()
        self.quit()
        self.assertEqual(len(receiver.reports()), 1)

    def go_the_whole_way(self, *kinds):
        """Each way to crash leads from the crash over the next start to a report, and no further."""
        receiver = self.start_receiver()
        self.start(photos=1, megapixels=0.5)
        self.quit()
        for kind in kinds:
            with self.subTest(kind):
                self.start_program_to_crash(kind)
                self.expect_no_log_is_offered()
                ends_by, told = CRASHES[kind]
                log = self.crash(signal.SIGUSR1, ends_by)
                text = log.read_text(encoding="utf-8")
                self.assertIn(told, text)
                self.assertNotIn("anna", text)
                self.start_program()
                self.report(log, receiver)
                self.quit()
        self.start_program()
        self.expect_no_log_is_offered()
        self.quit()
        self.assertEqual(len(receiver.reports()), len(kinds))

    def test_faultsOfTheProcessorGoTheWholeWay(self):
        self.go_the_whole_way("segv", "bus", "ill", "fpe")

    def test_signalsThatAProgramSendsItselfGoTheWholeWay(self):
        self.go_the_whole_way("abort", "trap", "sys")

    def test_anExceptionAnOverflowAndADamagedHeapGoTheWholeWay(self):
        self.go_the_whole_way("exception", "overflow", "heap")


if __name__ == "__main__":
    sys.exit(main(DesktopCrashTest))
