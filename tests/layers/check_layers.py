#!/usr/bin/env python3
"""Fails when a folder of src/core/ includes from a folder above it.

Usage: check_layers.py SRC_CORE_DIR
Prints every offending line as FILE:LINE: and exits 1; exits 0 when every include points down or
sideways.
"""
import pathlib
import re
import sys

# Bottom to top; a folder may include from its own folder and from those before it.
LAYERS = ["platform", "state", "ui", "lists", "download", "stats", "indicators", "pricefiles", "app"]

INCLUDE = re.compile(r'^\s*#\s*include\s*"core/([^/"]+)/')


def main() -> int:
    if len(sys.argv) != 2:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    root = pathlib.Path(sys.argv[1])
    rank = {folder: i for i, folder in enumerate(LAYERS)}
    problems = []
    folders = sorted(p.name for p in root.iterdir() if p.is_dir())
    for folder in folders:
        if folder not in rank:
            problems.append(f"{root / folder}: folder has no place in the layers of check_layers.py")
    for path in sorted(root.glob("*/*")):
        if path.suffix not in (".h", ".cpp") or path.parent.name not in rank:
            continue
        here = path.parent.name
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), start=1):
            match = INCLUDE.match(line)
            if not match:
                continue
            there = match.group(1)
            if there not in rank:
                problems.append(f"{path}:{number}: includes core/{there}/, which is no layer")
            elif rank[there] > rank[here]:
                problems.append(f"{path}:{number}: {here}/ includes from {there}/, a layer above it")
    for problem in problems:
        print(problem)
    if problems:
        print("Layers, bottom to top: " + " -> ".join(LAYERS))
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
