#!/usr/bin/env python3
"""Shows that the tests catch faults: applies each one-line break of scripts/mutants.txt to a
scratch copy of the sources, rebuilds the one test binary that should notice, runs the tests named
for it, and prints whether they caught the break.

The checkout is never written: the copy lives in build-mutants/tree (synced from the checkout at
start, so a run killed half-way leaves nothing behind that the next run does not undo), and it is
built in build-mutants/tree/build, beside the copy as build/ is beside the checkout, so ccache
serves the first build from the objects of an ordinary one.

    python3 scripts/mutants.py              every break
    python3 scripts/mutants.py 3 17 merge   breaks by number, or those whose file or words hold a text
    python3 scripts/mutants.py --list       the breaks, without running anything
    python3 scripts/mutants.py --baseline   runs each break's tests once on the unbroken copy
"""

import argparse
import os
import shutil
import signal
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "build-mutants"
TREE = WORK / "tree"
BUILD = TREE / "build"
TEST_BINARIES = ("core_tests", "cli_tests", "tools_tests")


@dataclass
class Break:
    number: int
    file: str
    binary: str
    test_filter: str
    what: str
    original: str
    replacement: str
    line: int  # in mutants.txt


def read_breaks(path):
    """Entries are a header `file | binary | gtest filter | what it breaks`, then the original
    text after "- " and its replacement after "+ "; '#' lines and blank lines are left out."""
    breaks, header, original = [], None, None
    problems = []
    for number, raw in enumerate(path.read_text().splitlines(), 1):
        text = raw.rstrip()
        if not text or text.startswith("#"):
            continue
        if text.startswith("- "):
            original = text[2:]
        elif text.startswith("+ ") or text == "+":
            if header is None or original is None:
                problems.append(f"{path.name}:{number}: a replacement without a header and original")
                continue
            file, binary, test_filter, what, at = header
            breaks.append(Break(len(breaks) + 1, file, binary, test_filter, what, original,
                                text[2:], at))
            header, original = None, None
        else:
            fields = [field.strip() for field in text.split("|")]
            if len(fields) != 4 or fields[1] not in TEST_BINARIES:
                problems.append(f"{path.name}:{number}: not `file | binary | filter | what`")
                continue
            header, original = (*fields, number), None
    return breaks, problems


def run(command, **kwargs):
    return subprocess.run(command, cwd=kwargs.pop("cwd", ROOT), **kwargs)


def checkout_files():
    listed = run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                 capture_output=True)
    if listed.returncode != 0:
        sys.exit("mutants: the checkout must be a git work tree")
    return [name for name in listed.stdout.decode().split("\0")
            if name and (ROOT / name).is_file()]


def sync_tree():
    """Makes the copy hold exactly the checkout's files. A file is rewritten only when its
    content differs, and then with a fresh time, so the build recompiles what changed alone."""
    wanted = set(checkout_files())
    for name in sorted(wanted):
        source, copy = ROOT / name, TREE / name
        data = source.read_bytes()
        if copy.is_file() and copy.read_bytes() == data:
            continue
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_bytes(data)
        shutil.copymode(source, copy)
    for path in sorted(TREE.rglob("*"), reverse=True):
        relative = path.relative_to(TREE)
        if relative.parts[0] == "build":
            continue
        if path.is_file() and relative.as_posix() not in wanted:
            path.unlink()
        elif path.is_dir() and not any(path.iterdir()):
            path.rmdir()


def build(targets, jobs, quiet=True):
    result = run(["cmake", "--build", str(BUILD), "-j", str(jobs), "--target", *targets],
                 capture_output=quiet, text=True)
    return result.returncode == 0, (result.stdout or "") + (result.stderr or "") if quiet else ""


def configure():
    flags = ["-DCORVANET_BUILD_GUI=OFF"]
    if shutil.which("ccache"):
        flags.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
    # Each break relinks a test binary and the programs it runs: lld does that in a fraction of
    # the time of the default linker.
    if shutil.which("ld.lld"):
        flags.append("-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld")
    result = run(["cmake", "-S", str(TREE), "-B", str(BUILD), *flags], capture_output=True,
                 text=True)
    if result.returncode != 0:
        sys.exit("mutants: cmake failed on the copy\n" + result.stdout + result.stderr)


def run_tests(item, timeout):
    """Returns 'pass', 'fail', 'time-out' or 'no test'."""
    process = subprocess.Popen([str(BUILD / "bin" / item.binary), f"--gtest_filter={item.test_filter}"],
                               cwd=BUILD, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               start_new_session=True)
    try:
        output, _ = process.communicate(timeout=timeout)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        return "time-out"
    except BaseException:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        raise
    finally:
        # Servers and programs the tests started stay in the group when the binary dies.
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
    if b"[==========] Running 0 tests" in output:
        return "no test"
    return "pass" if process.returncode == 0 else "fail"


def try_break(item, jobs, timeout):
    path = TREE / item.file
    if not path.is_file():
        return "stale", f"{item.file} is gone"
    text = path.read_text()
    found = text.count(item.original)
    if found != 1:
        return "stale", f"the original text is {'not found' if found == 0 else 'not unique'}"
    path.write_text(text.replace(item.original, item.replacement))
    try:
        built, log = build([item.binary], jobs)
        if not built:
            errors = [line for line in log.splitlines() if "error" in line][:3]
            return "no build", "; ".join(errors)
        outcome = run_tests(item, timeout)
    finally:
        path.write_text(text)
    return {"fail": ("caught", ""), "time-out": ("caught", "time-out"), "pass": ("missed", ""),
            "no test": ("no test", f"no test matches {item.test_filter}")}[outcome]


def chosen(breaks, picks):
    if not picks:
        return breaks
    return [item for item in breaks
            if any(pick == str(item.number) or (not pick.isdigit() and
                   (pick in item.file or pick in item.what)) for pick in picks)]


def stop_on_terminate(*_):
    raise KeyboardInterrupt


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("picks", nargs="*", help="break numbers, or texts of their file or words")
    parser.add_argument("--list", action="store_true", help="print the breaks and stop")
    parser.add_argument("--baseline", action="store_true",
                        help="run each break's tests on the unbroken copy instead")
    parser.add_argument("--timeout", type=int, default=120, help="seconds a break's tests may take")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 2)
    args = parser.parse_args()

    breaks, problems = read_breaks(ROOT / "scripts" / "mutants.txt")
    for problem in problems:
        print(problem)
    if problems:
        return 2
    breaks = chosen(breaks, args.picks)
    if args.list:
        for item in breaks:
            print(f"{item.number:3} {item.file}: {item.what}\n      - {item.original}\n"
                  f"      + {item.replacement}")
        return 0

    signal.signal(signal.SIGTERM, stop_on_terminate)
    TREE.mkdir(parents=True, exist_ok=True)
    started = time.monotonic()
    print(f"Copying the sources to {TREE.relative_to(ROOT)} and building the tests there ...",
          flush=True)
    sync_tree()
    configure()
    binaries = sorted({item.binary for item in breaks})
    built, _ = build(binaries, args.jobs, quiet=False)
    if not built:
        print("mutants: the unbroken copy does not build")
        return 2

    if args.baseline:
        failing = 0
        for item in breaks:
            outcome = run_tests(item, args.timeout)
            if outcome != "pass":
                failing += 1
                print(f"{item.number:3} {outcome:8} {item.binary} --gtest_filter={item.test_filter}")
        print(f"{len(breaks) - failing} of {len(breaks)} breaks have tests that pass unbroken.")
        return 1 if failing else 0

    tally = {}
    try:
        for item in breaks:
            began = time.monotonic()
            outcome, detail = try_break(item, args.jobs, args.timeout)
            tally.setdefault(outcome, []).append(item)
            note = f" ({detail})" if detail else ""
            print(f"{item.number:3} {outcome:8} {item.file}: {item.what}{note}"
                  f" [{time.monotonic() - began:.0f} s]", flush=True)
    except KeyboardInterrupt:
        print("\nInterrupted; the checkout was not changed.")
        return 130

    caught = len(tally.get("caught", []))
    print(f"\nCaught {caught} of {len(breaks)} breaks"
          f" in {(time.monotonic() - started) / 60:.0f} min.")
    for outcome in ("missed", "stale", "no build", "no test"):
        if outcome in tally:
            print(f"{outcome}: " + ", ".join(str(item.number) for item in tally[outcome]))
    bad = sum(len(tally.get(outcome, [])) for outcome in ("stale", "no build", "no test"))
    if bad:
        print(f"{bad} entries of scripts/mutants.txt need fixing (see above).")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
