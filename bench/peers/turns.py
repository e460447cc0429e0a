"""What of corvane is measured by itself: proof, a photo's whole turn in a scan, start."""
import os
import shutil
import statistics
import subprocess

import programs
from measuring import less, median, run

TIMES = 4  # photos, or conversions in one process, whose first is not counted
STARTS = 21


def one_photo(arguments, verb, *rest):
    return [os.path.join(arguments.binaries, "one_photo"), verb, "--quality",
            str(arguments.quality / 100), *rest]


def command_line(arguments, *rest):
    return [os.path.join(arguments.binaries, "corvane-cli"), *rest]


def same_on_one_core(comparison, arguments):
    """Whether one core makes the same bytes as all."""
    target = os.path.join(comparison.work, "one-core.jpg")
    command = one_photo(arguments, "convert", comparison.source, target)
    core = str(min(os.sched_getaffinity(0)))
    run([[["taskset", "-c", core, *command]]], comparison.environment, comparison.log)
    before = comparison.same_bytes
    comparison.compare_bytes(target, comparison.outputs[programs.OURS, False])
    same, comparison.same_bytes = comparison.same_bytes, before
    return same


def proof_seconds(comparison, arguments):
    """CPU seconds, median."""
    command = one_photo(arguments, "prove", comparison.source)
    outputs = [subprocess.run(command, env=comparison.environment, capture_output=True, text=True,
                              check=True).stdout for _ in range(arguments.runs)]
    return statistics.median(float(output) for output in outputs)


def library(comparison, arguments, photos):
    """Makes a library that holds the photo so many times; answers its path."""
    package = os.path.join(comparison.work, f"{photos}.photolibrary")
    run([[one_photo(arguments, "library", "--times", str(photos), comparison.source, package)]],
        comparison.environment, comparison.log)
    return package


def scan(comparison, arguments, package):
    copy = package + "-copy"
    shutil.copytree(package, copy)
    command = command_line(arguments, "scan", copy, "--raw", "--quiet", "--scale", "1", "--quality",
                           str(arguments.quality / 100))
    try:
        return run([[command]], comparison.environment, comparison.log)
    finally:
        shutil.rmtree(copy)


def turn(comparison, arguments):
    """What one more photo costs: in a process that only converts, and in a scan of a library. The
    first of a process also pays for its start, a scan's first for the backup too."""
    target = os.path.join(comparison.work, "turn.jpg")
    packages = [library(comparison, arguments, photos) for photos in (1, TIMES)]
    conversions, scans = ([], []), ([], [])
    for _ in range(arguments.runs):
        for index, times in enumerate((1, TIMES)):
            command = one_photo(arguments, "convert", "--times", str(times), comparison.source,
                                target)
            conversions[index].append(
                run([[command]], comparison.environment, comparison.log))
            scans[index].append(scan(comparison, arguments, packages[index]))
    return tuple(less(median(many), median(one), TIMES - 1) for one, many in (conversions, scans))


def starts(arguments, environment, home):
    """What it takes until the program has told its version, and listed a sample; medians."""
    sample = os.path.join(home, "sample")
    log = os.path.join(home, "log")
    os.makedirs(sample)
    run([[command_line(arguments, "sample", sample, "--quiet", "--megapixels", "1")]], environment,
        log)
    package = os.path.join(sample, "Sample.photolibrary")
    found = {}
    for name, rest in (("--version", ()), ("list", (package,))):
        costs = [run([[command_line(arguments, name, *rest)]], environment, log)
                 for _ in range(STARTS)]
        found[name] = median(costs)
    return found
