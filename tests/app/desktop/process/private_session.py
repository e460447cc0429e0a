"""A desktop session of a test's own: display, message bus, home folder. Nothing of it is the machine's."""

import os
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

PATIENCE = 120.0  # seconds; machines that run tests are busy

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""  # no folders of services: what is not started by the test is not there


def wait_until(condition, what, seconds=PATIENCE):
    """What the condition answers as soon as that is true; fails when it takes too long."""
    deadline = time.monotonic() + seconds
    while True:
        found = condition()
        if found:
            return found
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain: {what}")
        time.sleep(0.05)


def on_private_bus(command):
    """Runs the command with a session bus that is its own; answers its exit status."""
    with tempfile.NamedTemporaryFile("w", suffix=".conf") as configuration:
        configuration.write(BUS_CONFIGURATION)
        configuration.flush()
        return subprocess.call(
            ["dbus-run-session", f"--config-file={configuration.name}", "--", *command]
        )


class Display:
    """An X server without a screen, on a display that was free."""

    def __init__(self):
        reading, writing = os.pipe()
        self._server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1600x1200x24", "-nolisten", "tcp"],
            pass_fds=[writing],
            stderr=subprocess.DEVNULL,
        )
        os.close(writing)
        with os.fdopen(reading) as numbers:
            self.name = f":{numbers.readline().strip()}"
        if self.name == ":":
            raise AssertionError("Xvfb did not start")

    def close(self):
        self._server.terminate()
        self._server.wait()


class Home:
    """A home folder with everything below it that XDG variables name."""

    def __init__(self):
        self.path = Path(tempfile.mkdtemp(prefix="corvane-desktop-"))
        self.pictures = self.path / "Pictures"
        self.settings = self.path / ".config" / "corvane" / "defaults.plist"
        self.crash_logs = self.path / ".local" / "state" / "corvane" / "Logs" / "DiagnosticReports"
        self.pictures.mkdir()
        (self.path / "run").mkdir(mode=0o700)

    def environment(self, display):
        """The test's own variables, but for those that lead to the machine's desktop."""
        strange = ("QT_", "XDG_", "KDE_", "GNOME_", "GTK_", "WAYLAND_", "DESKTOP_", "SESSION_")
        kept = {name: value for name, value in os.environ.items() if not name.startswith(strange)}
        return kept | {
            "HOME": str(self.path),
            "XDG_CONFIG_HOME": str(self.path / ".config"),
            "XDG_STATE_HOME": str(self.path / ".local" / "state"),
            "XDG_DATA_HOME": str(self.path / ".local" / "share"),
            "XDG_CACHE_HOME": str(self.path / ".cache"),
            "XDG_RUNTIME_DIR": str(self.path / "run"),
            "DBUS_SYSTEM_BUS_ADDRESS": os.environ["DBUS_SESSION_BUS_ADDRESS"],
            "DISPLAY": display.name,
            "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "LC_ALL": "C.UTF-8",
        }

    def close(self):
        shutil.rmtree(self.path)
