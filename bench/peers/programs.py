"""The programs that make a JPEG of a RAW photo, and how each is called."""
import os
import shutil
from dataclasses import dataclass
from typing import Callable

OURS = "corvane"
FLOOR = "floor"
DARKTABLE = "darktable-cli"
RAWTHERAPEE = "rawtherapee-cli, neutral"
RAWTHERAPEE_MATCHED = "rawtherapee-cli, auto-matched curve"
PROFILES = "/usr/share/rawtherapee/profiles"  # of Debian's package
CHAIN = "dcraw_emu, cjpeg, exiftool"
HALF_CHAIN = "dcraw_emu -h, cjpeg"


@dataclass
class Program:
    name: str
    needs: tuple  # of Debian's packages or of this build; left out where one is missing
    pipelines: Callable  # (source, target) -> pipelines, each a list of commands
    half: bool = False

    def missing(self):
        return [need for need in self.needs if not shutil.which(need)]


def cjpeg(quality, target):
    """With the settings of our own encoder."""
    return ["cjpeg", "-quality", str(quality), "-sample", "2x2", "-optimize", "-progressive",
            "-outfile", target]


def all_programs(binaries, work, quality):
    """Ours first. `quality` as libjpeg counts; 4:2:0 throughout."""
    one_photo, floor = os.path.join(binaries, "one_photo"), os.path.join(binaries, "floor")
    ours = [one_photo, "convert", "--quality", str(quality / 100)]

    def darktable(source, target):
        return [[["darktable-cli", source, target, "--core", "--disable-opencl", "--library",
                  ":memory:", "--configdir", os.path.join(work, "darktable"), "--conf",
                  f"plugins/imageio/format/jpeg/quality={quality}"]]]

    def rawtherapee(*profile):
        """Neutral without a profile."""
        def pipelines(source, target):
            return [[["rawtherapee-cli", "-q", "-Y", *profile, f"-j{quality}", "-js1", "-o", target,
                      "-c", source]]]
        return pipelines

    def chain(source, target):
        return [[["dcraw_emu", "-w", "-q", "2", "-Z", "-", source], cjpeg(quality, target)],
                [["exiftool", "-q", "-q", "-overwrite_original", "-TagsFromFile", source,
                  "-all:all", target]]]

    def half_chain(source, target):
        return [[["dcraw_emu", "-w", "-h", "-Z", "-", source], cjpeg(quality, target)]]

    return [
        Program(OURS, (one_photo,), lambda source, target: [[[*ours, source, target]]]),
        Program(FLOOR, (floor,), lambda source, target: [[[floor, str(quality), source, target]]]),
        Program(DARKTABLE, ("darktable-cli",), darktable),
        Program(RAWTHERAPEE, ("rawtherapee-cli",), rawtherapee()),
        Program(RAWTHERAPEE_MATCHED, ("rawtherapee-cli",),
                rawtherapee("-p", os.path.join(PROFILES, "Auto-Matched Curve - ISO Low.pp3"))),
        Program(CHAIN, ("dcraw_emu", "cjpeg", "exiftool"), chain),
        Program(OURS, (one_photo,),
                lambda source, target: [[[*ours, "--scale", "0.5", source, target]]], half=True),
        Program(HALF_CHAIN, ("dcraw_emu", "cjpeg"), half_chain, half=True),
    ]
