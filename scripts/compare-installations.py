#!/usr/bin/env python3
"""Compares two installations that ran the same steps against the same service data, one by the
Windows build (under Wine) and one by the Linux build: every file the program wrote must be the
same, byte for byte, CR LF included.

Only these are normalised, in the texts that name paths or times (the logs, Rondex.ini and the
runs' printed output), and nowhere else:
  - the installation's base folder ("C:\\Trading Desk\\" / "/.../Tessaly/") becomes "<BASE>/",
    and in those texts a backslash becomes a slash;
  - "YYYY-MM-DD hh:mm:ss" and "hh:mm:ss" become "<TIME>", "Elapsed time: N Seconds" and
    "Elapsed Time = N Seconds" "<ELAPSED>";
  - in what the runs printed on the console (--extra), CR LF becomes LF: the Windows C runtime
    writes a console's lines so, which is no file of the program's.
Known differences, printed as such on every run but not failing it: the merge index's count of
merges that started where the last one stopped ("MergeIndex - N of M merge(s) ..."): on Windows a
datafile is always written whole, never compared with its old copy and appended to in place, so
no merge starts from the index and every merge reads its base copy whole.
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


KNOWN = [
    (re.compile(rb"MergeIndex - \d+ of (\d+) merge\(s\) started"),
     rb"MergeIndex - <N> of \1 merge(s) started",
     "Windows writes every datafile whole, so no merge starts where the last one stopped"),
]


def known_difference(a: bytes, b: bytes) -> str:
    """The reasons of the known differences that make up all there is between a and b; "" when
    something else differs too."""
    reasons = []
    for pattern, replacement, reason in KNOWN:
        a2, b2 = pattern.sub(replacement, a), pattern.sub(replacement, b)
        if (a2, b2) != (a, b):
            reasons.append(reason)
        a, b = a2, b2
    return "; ".join(reasons) if a == b else ""


def files_of(base: Path) -> dict:
    return {p.relative_to(base).as_posix(): p for p in sorted(base.rglob("*")) if p.is_file()}


def normalise(data: bytes, base_text: str) -> bytes:
    text = data.decode("utf-8", errors="surrogateescape")
    text = text.replace(base_text, "<BASE>/").replace("\\", "/")
    text = re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", "<TIME>", text)
    text = re.sub(r"\b\d\d?:\d\d:\d\d\b", "<TIME>", text)
    text = re.sub(r"Elapsed [Tt]ime(: | = )[0-9.]+ Seconds", "<ELAPSED>", text)
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
    normalised = []
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
            normalised.append(name)
            a, b = normalise(a, windows_text), normalise(b, linux_text)
        else:
            counts["byte for byte"] += 1
        if a != b:
            differences.append(f"{name}: {first_difference(a, b)}")
            if known_difference(a, b):
                differences[-1] = "KNOWN " + differences[-1] + " (" + known_difference(a, b) + ")"
    for i in range(0, len(extras), 3):
        label, a_path, b_path = extras[i:i + 3]
        counts["normalised"] += 1
        normalised.append(label)
        a = normalise(Path(a_path).read_bytes(), windows_text).replace(b"\r\n", b"\n")
        b = normalise(Path(b_path).read_bytes(), linux_text).replace(b"\r\n", b"\n")
        if a != b:
            differences.append(f"{label}: {first_difference(a, b)}")
            if known_difference(a, b):
                differences[-1] = "KNOWN " + differences[-1] + " (" + known_difference(a, b) + ")"
    print("-- compared: " + ", ".join(f"{n} {what}" for what, n in counts.items()) +
          "; left out: " + "; ".join(f"{k} ({v})" for k, v in LEFT_OUT.items()) +
          "; the installer's own files")
    print("   normalised: " + ", ".join(normalised))
    for line in differences:
        print(line if line.startswith("KNOWN ") else "DIFFERENT " + line)
    return 1 if any(not line.startswith("KNOWN ") for line in differences) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
