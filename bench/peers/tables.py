"""What was measured, as Markdown."""
import datetime
import os
import platform
import re
import subprocess

from measuring import MEGABYTE
from programs import (CHAIN, DARKTABLE, FLOOR, HALF_CHAIN, OURS, RAWTHERAPEE,
                      RAWTHERAPEE_MATCHED)

BEGIN, END = "<!-- measured -->", "<!-- end of what was measured -->"
LARGE = 8e6  # pixels from which on the bounds hold
BASE_MEMORY = 60 * MEGABYTE


class Figures:
    """Of one file."""

    def __init__(self, source, costs, outputs):
        self.source, self.costs, self.outputs = source, costs, outputs
        self.colours, self.bytes, self.pixels = {}, {}, 0
        self.same_bytes, self.proof, self.conversion, self.turn = True, 0.0, None, None

    @property
    def is_large(self):
        return self.pixels >= LARGE

    def sizes_of_files(self):
        self.bytes = {key: os.path.getsize(path) for key, path in self.outputs.items()}
        width, height = jpeg_size(self.outputs[OURS, False])
        self.pixels = width * height

    def ratio(self, figure, name, half=False):
        """Theirs over ours; nothing where the program did not run."""
        if (name, half) not in self.costs:
            return None
        return getattr(self.costs[name, half], figure) / getattr(self.costs[OURS, half], figure)


def jpeg_size(path):
    """Width and height from the frame header (ITU-T T.81, B.2.2)."""
    with open(path, "rb") as file:
        data = file.read()
    place = 2
    while data[place] == 0xFF:
        marker, length = data[place + 1], int.from_bytes(data[place + 2:place + 4], "big")
        if 0xC0 <= marker <= 0xC2:
            return (int.from_bytes(data[place + 7:place + 9], "big"),
                    int.from_bytes(data[place + 5:place + 7], "big"))
        place += 2 + length
    raise ValueError(f"{path} has no frame")


def row(*cells):
    return "| " + " | ".join(cells) + " |"


def heading(*cells):
    return [row(*cells), row(*(["---"] + ["---:"] * (len(cells) - 1)))]


def number(value, digits):
    return "–" if value is None else f"{value:.{digits}f}"


def cost_rows(figures):
    for (name, half), cost in figures.costs.items():
        colour = figures.colours.get((name, half), {})
        yield row(name + (", half" if half and name == OURS else ""),
                  number(cost.wall, 2), number(cost.cpu, 2), number(cost.peak / MEGABYTE, 0),
                  number(figures.bytes[name, half] / MEGABYTE, 2),
                  number(figures.ratio("wall", name, half), 1),
                  number(figures.ratio("cpu", name, half), 1),
                  number(colour.get("mean"), 1), number(colour.get("p95"), 1),
                  number(colour.get("dL"), 1))


def file_table(figures):
    return ["", f"### {os.path.basename(figures.source)}, {figures.pixels / MEGABYTE:.1f} MP", "",
            *heading("program", "wall s", "CPU s", "peak MB", "JPEG MB", "wall ×", "CPU ×",
                     "ΔE mean", "ΔE p95", "ΔL"),
            *cost_rows(figures)]


def bounds_of(figures):
    """What is aimed at: what, measured, bound, whether more is better."""
    ours, half = figures.costs[OURS, False], figures.costs[OURS, True]
    floor, halved = figures.costs.get((FLOOR, False)), figures.costs.get((HALF_CHAIN, True))
    yield f"CPU of {DARKTABLE} over ours", figures.ratio("cpu", DARKTABLE), 10, True
    for name in (RAWTHERAPEE, RAWTHERAPEE_MATCHED):
        yield f"CPU of {name} over ours", figures.ratio("cpu", name), 8, True
    yield f"wall of {CHAIN} over ours", figures.ratio("wall", CHAIN), 2, True
    yield ("our CPU without the proof over the floor's",
           (ours.cpu - figures.proof) / floor.cpu if floor else None, 1.5, False)
    yield ("CPU milliseconds a megapixel of the proof",
           1000 * figures.proof / (figures.pixels / MEGABYTE), 7.5, False)
    yield (f"our CPU at half size over that of {HALF_CHAIN}",
           half.cpu / halved.cpu if halved else None, 1.2, False)
    yield ("peak at full size, bytes a pixel above 60 MB",
           (ours.peak - BASE_MEMORY) / figures.pixels, 8, False)
    yield ("peak at half size, bytes a pixel above 60 MB",
           (half.peak - BASE_MEMORY) / figures.pixels, 5, False)
    yield ("CPU of a photo's turn in a scan over conversion and proof",
           figures.turn.cpu / figures.conversion.cpu, 1.2, False)


def bounds_table(large):
    columns = [list(bounds_of(figures)) for figures in large]
    lines = heading("", "aim", *(os.path.basename(figures.source) for figures in large))
    for same in zip(*columns):
        what, _, bound, more = same[0]
        cells = []
        for _, value, _, _ in same:
            kept = value is not None and (value >= bound if more else value <= bound)
            cells.append(number(value, 2) if kept or value is None else f"**{value:.2f}**")
        lines.append(row(what, ("≥ " if more else "≤ ") + str(bound), *cells))
    return lines


def machine():
    model = platform.machine()
    with open("/proc/cpuinfo", encoding="ascii", errors="replace") as file:
        found = re.search(r"^model name\s*: (.*)$", file.read(), re.MULTILINE)
    if found:
        model = " ".join(found[1].split())
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 1e9
    return f"{model}, {len(os.sched_getaffinity(0))} cores, {memory:.0f} GB of memory"


def versions():
    packages = ("darktable", "rawtherapee", "libraw-bin", "libraw20", "libjpeg-turbo-progs",
                "libimage-exiftool-perl")
    told = subprocess.run(["dpkg-query", "-W", "-f", "${db:Status-Abbrev}${Package} ${Version}\\n",
                           *packages], capture_output=True, text=True).stdout.splitlines()
    return ", ".join(line[2:].strip() for line in told if line.startswith("ii"))


def document(all_figures, start, arguments):
    load = os.getloadavg()[1]
    large = [figures for figures in all_figures if figures.is_large]
    lines = [f"{datetime.date.today():%-d %B %Y}, {machine()}, load {load:.1f}; medians of "
             f"{arguments.runs} runs, quality {arguments.quality}.", "", f"{versions()}.", ""]
    if large:
        lines += ["What is missed stands in bold.", "", *bounds_table(large), ""]
    differing = [os.path.basename(figures.source) for figures in all_figures
                 if not figures.same_bytes]
    lines.append("The same bytes in all runs, on all cores and on one: "
                 + (f"not for {', '.join(differing)}." if differing else "yes, for every file."))
    lines.append("Start: " + ", ".join(
        f"`corvane-cli {name}` {cost.wall * 1000:.0f} ms of wall, {cost.cpu * 1000:.0f} ms of CPU"
        for name, cost in start.items()) + " (aim: at most 50 ms of wall).")
    for figures in all_figures:
        lines += file_table(figures)
    return "\n".join(lines) + "\n"


def parts(path):
    with open(path, encoding="utf-8") as file:
        text = file.read()
    if text.count(BEGIN) != 1 or text.count(END) != 1 or text.index(BEGIN) > text.index(END):
        return None
    return text[:text.index(BEGIN) + len(BEGIN)], text[text.index(END):]


def is_document(path):
    return os.path.isfile(path) and parts(path) is not None


def replace_part(path, text):
    before, after = parts(path)
    with open(path, "w", encoding="utf-8") as file:
        file.write(before + "\n" + text + "\n" + after)
