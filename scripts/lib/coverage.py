#!/usr/bin/env python3
"""Prints what gcov has counted of src in build/coverage, for scripts/coverage.

A file that several programs have in them counts once: a line or a branch is reached when any of them
reaches it.
"""

import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "coverage"


def documents():
    """What gcov says of each object that was run."""
    counts = sorted(BUILD.rglob("*.gcda"))
    if not counts:
        sys.exit("Nothing has been counted yet: run scripts/coverage")
    for path in counts:
        run = subprocess.run(
            ["gcov", "--json-format", "--branch-probabilities", "--stdout", path],
            cwd=BUILD, capture_output=True, text=True, check=True)
        for line in run.stdout.splitlines():
            yield json.loads(line)


def collect():
    """By file of src: lines as {number: count}, branches as {(number, which): count}."""
    files = {}
    for document in documents():
        for entry in document["files"]:
            path = (BUILD / entry["file"]).resolve()
            if not path.is_relative_to(ROOT / "src"):
                continue
            lines, branches = files.setdefault(str(path.relative_to(ROOT)), ({}, {}))
            for line in entry["lines"]:
                number = line["line_number"]
                lines[number] = lines.get(number, 0) + line["count"]
                for which, branch in enumerate(line["branches"]):
                    # Each instance of a template has its own; those of one place come in one order.
                    key = (number, which)
                    branches[key] = branches.get(key, 0) + branch["count"]
    return files


def share(counts):
    if not counts:
        return "      -"
    return f"{100 * sum(count > 0 for count in counts) / len(counts):6.1f}%"


def print_row(name, lines, branches):
    print(f"{name:36} {len(lines):6} {share(lines)} {len(branches):8} {share(branches)}")


def print_missing(name, lines, branches):
    source = (ROOT / name).read_text().splitlines()
    for number in sorted(lines):
        missing = sum(count == 0 for (at, _), count in branches.items() if at == number)
        if lines[number] == 0 or missing:
            what = "line" if lines[number] == 0 else f"{missing} br."
            print(f"  {name}:{number}: {what:6} {source[number - 1].strip()}")


def main():
    files = collect()
    print(f"{'':36} {'lines':>6} {'':>7} {'branches':>8}")
    for name, (lines, branches) in sorted(files.items()):
        print_row(name, lines.values(), branches.values())
    print_row("all", [count for lines, _ in files.values() for count in lines.values()],
              [count for _, branches in files.values() for count in branches.values()])
    if "--lines" in sys.argv[1:]:
        print("\nNot reached:")
        for name, (lines, branches) in sorted(files.items()):
            print_missing(name, lines, branches)


main()
