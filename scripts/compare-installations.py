#!/usr/bin/env python3
"""Compares two installations that ran the same steps against the same service data, one by the
Windows build (under Wine) and one by the Linux build: every file the program wrote must be the
same, byte for byte, CR LF included.

Only these are normalised, in the texts that name paths or times (the logs, Rondex.ini and the
runs' printed output), and nowhere else:
  - the installation's base folder ("C:\\Trading Desk\\" / "/.../Tessaly/") becomes "<BASE>/",
    and in those texts a backslash becomes a slash;
  - "YYYY-MM-DD hh:mm:ss" and "hh:mm:ss" become "<TIME>", "Elapsed time: N Seconds" "<ELAPSED>".
Left out, with the reason printed: what the installer put there (programs, help pages, Stats.csv,
README.md, the uninstaller), the run lock (holds nothing), the merge index (it records the
system's device and inode numbers and file times of the files it checked), and the converter
batches, whose lines quote paths for cmd.exe on Windows and for sh on Linux (their calls are
compared after unquoting).

usage: compare-installations.py WINDOWS_BASE WINDOWS_BASE_TEXT LINUX_BASE LINUX_BASE_TEXT
       [--extra NAME WINDOWS_FILE LINUX_FILE ...]
"""
import re
import sys
from pathlib import Path

INSTALLED = re.compile(r"^Rondex/([^/]+\.exe|Docs/.*|Stats\.csv|README\.md)$", re.IGNORECASE)
LEFT_OUT = {
    "Rondex/RunLock.txt": "the run lock",
    "CSVFiles/Base/MergeIndex.txt": "device/inode numbers and file times of this system",
}
TEXTS_WITH_PATHS = re.compile(r"(^|/)(LogFile\.txt|MSXlog\.txt|Rondex\.ini|Settings.*\.txt)$",
                              re.IGNORECASE)
BATCH = re.compile(r"\.bat$", re.IGNORECASE)


def files_of(base: Path) -> dict:
    return {p.relative_to(base).as_posix(): p for p in sorted(base.rglob("*")) if p.is_file()}


def normalise(data: bytes, base_text: str) -> bytes:
    text = data.decode("utf-8", errors="surrogateescape")
    text = text.replace(base_text, "<BASE>/").replace("\\", "/")
    text = re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", "<TIME>", text)
    text = re.sub(r"\b\d\d?:\d\d:\d\d\b", "<TIME>", text)
    text = re.sub(r"Elapsed time: [0-9.]+ Seconds", "<ELAPSED>", text)
    return text.encode("utf-8", errors="surrogateescape")


def batch_calls(data: bytes, base_text: str) -> list:
    """A converter batch's lines with the shell's quotes taken off the paths."""
    text = normalise(data, base_text).decode("utf-8", errors="surrogateescape")
    return [line.replace('"', "").replace("'", "") for line in text.split("\r\n")]


def first_difference(a: bytes, b: bytes) -> str:
    lines_a, lines_b = a.split(b"\n"), b.split(b"\n")
    for number, (x, y) in enumerate(zip(lines_a, lines_b), 1):
        if x != y:
            return f"line {number}: windows {x[:160]!r} / linux {y[:160]!r}"
    return f"{len(lines_a)} lines / {len(lines_b)} lines"


def main(argv: list) -> int:
    windows_base, windows_text, linux_base, linux_text = argv[1:5]
    extras = argv[5:]
    windows, linux = files_of(Path(windows_base)), files_of(Path(linux_base))
    differences = []
    counts = {"byte for byte": 0, "normalised": 0, "batch calls": 0}
    for name in sorted(set(windows) | set(linux)):
        if INSTALLED.match(name) and name not in linux:
            continue
        if name in LEFT_OUT:
            continue
        if name not in linux or name not in windows:
            differences.append(f"{name}: only in the {'windows' if name in windows else 'linux'} "
                               "installation")
            continue
        a, b = windows[name].read_bytes(), linux[name].read_bytes()
        if BATCH.search(name):
            counts["batch calls"] += 1
            if batch_calls(a, windows_text) != batch_calls(b, linux_text):
                differences.append(f"{name}: {first_difference(a, b)}")
            continue
        if TEXTS_WITH_PATHS.search(name):
            counts["normalised"] += 1
            a, b = normalise(a, windows_text), normalise(b, linux_text)
        else:
            counts["byte for byte"] += 1
        if a != b:
            differences.append(f"{name}: {first_difference(a, b)}")
    for i in range(0, len(extras), 3):
        label, a_path, b_path = extras[i:i + 3]
        counts["normalised"] += 1
        a = normalise(Path(a_path).read_bytes(), windows_text)
        b = normalise(Path(b_path).read_bytes(), linux_text)
        if a != b:
            differences.append(f"{label}: {first_difference(a, b)}")
    print("-- compared: " + ", ".join(f"{n} {what}" for what, n in counts.items()) +
          "; left out: " + "; ".join(f"{k} ({v})" for k, v in LEFT_OUT.items()) +
          "; the installer's own files")
    for line in differences:
        print("DIFFERENT " + line)
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
