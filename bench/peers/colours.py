"""How far the colours of each program's JPEG are from the camera's own preview: an outside script
measures it, which takes a RAW photo and JPEGs and prints a line of JSON for each JPEG."""
import json
import subprocess

# Debian's, for which Debian's packages are; another one may come first in PATH.
PYTHON = "/usr/bin/python3"


def missing(script):
    """Why the script cannot be used; nothing where it can."""
    tried = subprocess.run([PYTHON, script], capture_output=True, text=True)
    lines = tried.stderr.strip().splitlines()
    wanting = [line for line in lines if "ModuleNotFoundError" in line]
    return wanting[0] if wanting else None


def distances(script, source, outputs):
    """By program and size: mean and p95 (CIEDE2000) and dL (bias of L*). Empty where the file has
    no preview that shows its scene."""
    command = [PYTHON, script, source, *outputs.values()]
    lines = subprocess.run(command, capture_output=True, text=True).stdout.splitlines()
    by_path = {line["candidate"]: line for line in map(json.loads, lines)}
    found = {key: by_path.get(path) for key, path in outputs.items()}
    return {key: line for key, line in found.items() if line and "error" not in line}
