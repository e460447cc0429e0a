"""What the tests of the whole desktop program share: real windows on a display of their own, real keys and
clicks, the desktop's services on a private bus, and afterwards a look at the library on disk."""

import os
import plistlib
import re
import resource
import shutil
import sys
import unittest

from desktop_program import DesktopProgram
from desktop_services import DesktopServices
from photo_library import PhotoLibrary
from private_session import Display, Home, on_private_bus, wait_until

LIBRARY_WINDOW = "Sample.photolibrary — Photo Library"
CORVANE_WINDOW = "Corvane For iPhoto"
INSIDE = "CORVANE_PRIVATE_BUS"  # set once the script runs on a bus of its own


class DesktopTestCase(unittest.TestCase):
    corvane = ""
    corvane_cli = ""
    crashreceiver = ""
    crash_at_signal = ""

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

    def start_program(self, **more):
        """With more variables in its environment."""
        command = [self.corvane, str(self.library.path)]
        environment = self.environment | more
        self.program = self.made(DesktopProgram(command, environment, self.services))
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

    def quit(self):
        self.program.press(LIBRARY_WINDOW, "ctrl+q")
        self.assertEqual(self.program.exit_status(), 0)

    def settings(self):
        return plistlib.loads(self.home.settings.read_bytes())

    def write_settings(self, **settings):
        """Before the program starts."""
        self.home.settings.parent.mkdir(parents=True, exist_ok=True)
        self.home.settings.write_bytes(plistlib.dumps(settings))


def main(test):
    """Runs the tests of that class, as the script's arguments say."""
    missing = [tool for tool in ("Xvfb", "xdotool", "dbus-run-session") if not shutil.which(tool)]
    if missing:
        sys.exit(f"not installed: {' '.join(missing)}. \"./dev setup\" installs them.")
    if INSIDE not in os.environ:
        os.environ[INSIDE] = "1"
        return on_private_bus([sys.executable, *sys.argv])
    # No core is left, and with a limit of one byte none is handed to a program either.
    resource.setrlimit(resource.RLIMIT_CORE, (1, 1))
    test.corvane, test.corvane_cli, test.crashreceiver, test.crash_at_signal = sys.argv[1:5]
    names = [f"{test.__name__}.{name}" for name in sys.argv[5:]]
    return 0 if unittest.main(argv=[sys.argv[0], *names], exit=False).result.wasSuccessful() else 1
