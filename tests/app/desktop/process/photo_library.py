"""A sample library and what the program for the terminal says of it."""

import json
import subprocess


class PhotoLibrary:
    def __init__(self, corvane_cli, folder, environment, photos, megapixels):
        self._corvane_cli, self._environment = corvane_cli, environment
        size = ["--photos", str(photos), "--megapixels", str(megapixels)]
        self._run("sample", str(folder), "--quiet", *size)
        self.path = folder / "Sample.photolibrary"

    def info(self):
        return json.loads(self._run("info", "--json", str(self.path)))

    def photos(self):
        return json.loads(self._run("list", "--json", str(self.path)))["photos"]

    def open_to_write(self):
        """As any command does that writes; nothing lies in the trash."""
        self._run("trash", str(self.path), "--restore")

    def originals(self):
        """RAW photos out of the trash."""
        return [photo for photo in self.photos() if photo["raw"]]

    def copies(self):
        """Photos that the program made; the picture that defines the keywords has both."""
        marks = {"Corvane Processed", "Corvane Original"}
        return [
            photo
            for photo in self.photos()
            if marks & set(photo["keywords"]) == {"Corvane Processed"}
        ]

    def _run(self, *arguments):
        finished = subprocess.run(
            [self._corvane_cli, *arguments],
            env=self._environment,
            stdout=subprocess.PIPE,
            text=True,
            check=True,
        )
        return finished.stdout
