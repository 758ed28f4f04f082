#!/usr/bin/env python3
"""The statistic and price-file split of stat_files_bench done with pandas, for comparison.

    stat_split_pandas.py DIR OUT [--statistics-only]

Reads every datafile DIR/CSVFiles/<period>/<symbol>.csv of the master file DIR/Masterfile2.csv
once and writes the same files as the program: OUT/<statistic>/<period>/<symbol>-<statistic>.csv
(date, value) for the 34 statistics, and OUT/PX|PxEqWt/<period>/<symbol>.csv price files with the
ten-column header. Numbers are written the way pandas writes them; the work is the same. With
--statistics-only it writes the statistic files alone, as `corvanet-cli stats N` does.
"""
import os
import sys

import pandas as pd

PERIODS = ["Daily", "Weekly", "Monthly", "Quarterly"]
# Statistic name -> 0-based datafile column, in catalogue order.
STATISTICS = [
    ("UpTrends", 10), ("NewUpTrends", 11), ("DownTrends", 12), ("NewDownTrends", 13),
    ("Advances", 15), ("Declines", 16), ("Unchanged", 22), ("Traded", 21),
    ("UpVolume", 17), ("DownVolume", 18), ("TotalVolume", 14), ("NewHighs", 19),
    ("NewHighs1stDay", 45), ("NewLows", 20), ("NewLows1stDay", 46), ("QNewHighs", 43),
    ("QNewHighs1stDay", 47), ("QNewLows", 44), ("QNewLows1stDay", 48),
    ("Above200ma", 28), ("Below200ma", 29), ("Equal200ma", 30),
    ("Above30ma", 31), ("Below30ma", 32), ("Equal30ma", 33),
    ("Above18ma", 34), ("Below18ma", 35), ("Equal18ma", 36),
    ("Above9ma", 37), ("Below9ma", 38), ("Equal9ma", 39),
    ("Above4ma", 40), ("Below4ma", 41), ("Equal4ma", 42),
]
PRICE_KINDS = [
    ("PX", [3, 4, 5, 6, 14, 53]),       # open, high, low, close, total volume, trade volume
    ("PxEqWt", [49, 50, 51, 52, 14, 53]),
]
HEADER = "<ticker>,<name>,<per>,<date>,<open>,<high>,<low>,<close>,<vol>,<o/i>\r\n"


def main(root, out, price_files=True):
    master = pd.read_csv(os.path.join(root, "Masterfile2.csv"), header=None,
                         names=["name", "symbol"], skipinitialspace=True)
    for period in PERIODS:
        for name, _ in STATISTICS:
            os.makedirs(os.path.join(out, name, period), exist_ok=True)
        for kind, _ in PRICE_KINDS:
            os.makedirs(os.path.join(out, kind, period), exist_ok=True)
    for period in PERIODS:
        for issue, symbol in zip(master["name"], master["symbol"]):
            path = os.path.join(root, "CSVFiles", period, symbol + ".csv")
            if not os.path.exists(path):  # the quarterly files a run does not make
                continue
            frame = pd.read_csv(path, header=None, skiprows=1)
            dates = frame[1]
            for name, column in STATISTICS:
                target = os.path.join(out, name, period, f"{symbol}-{name}.csv")
                pd.DataFrame({0: dates, 1: frame[column]}).to_csv(
                    target, header=False, index=False, lineterminator="\r\n")
            if not price_files:
                continue
            per = frame[0].replace("Q", "M")
            for kind, columns in PRICE_KINDS:
                lines = pd.DataFrame({"t": symbol, "n": issue, "p": per, "d": dates})
                for i, column in enumerate(columns):
                    lines[i] = frame[column]
                target = os.path.join(out, kind, period, symbol + ".csv")
                with open(target, "w", newline="") as handle:
                    handle.write(HEADER)
                    lines.to_csv(handle, header=False, index=False, lineterminator="\r\n")


if __name__ == "__main__":
    if len(sys.argv) not in (3, 4) or sys.argv[3:] not in ([], ["--statistics-only"]):
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2], price_files=len(sys.argv) == 3)
