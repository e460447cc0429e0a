"""The receiver of crash reports, as a process on a port of its own."""

import json
import subprocess
import sys
from collections import namedtuple

Report = namedtuple("Report", "facts log")


class CrashReceiver:
    def __init__(self, program, folder):
        self._folder = folder
        self._process = subprocess.Popen(
            [sys.executable, "-B", program, str(folder), "--port", "0"],
            stdout=subprocess.PIPE,
            text=True,
        )
        port = self._process.stdout.readline().split()[-1]
        self.url = f"http://127.0.0.1:{port}/"

    def reports(self):
        """What came, in the order of the names that it got."""
        folders = sorted(path for path in self._folder.iterdir() if path.is_dir())
        return [self._report(folder) for folder in folders]

    @staticmethod
    def _report(folder):
        facts = json.loads((folder / "report.json").read_text(encoding="ascii"))
        return Report(facts, (folder / facts["crashLog"]["file"]).read_bytes())

    def close(self):
        self._process.terminate()
        self._process.wait()
        self._process.stdout.close()
