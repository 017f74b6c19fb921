#!/usr/bin/env python3
"""Checks that every include between the source folders points down the layers.

    base < values <-> text < frontend < vm < objects < compiler < tables < sql
         < builtins < runtime < shell, examples, tests, bench

A folder may include its own headers and those of the folders before it. The
one link both ways is values <-> text: a String carries its Charset. A lower
layer reaches a higher one only through an interface it declares and the
runtime installs (docs/ARCHITECTURE.md).

Usage: check_includes.py [--root DIR]. Prints each include against the
layers as "file:line: #include "...": <folder> may not include <folder>" and
exits 1 when there is any; exits 0 otherwise.
"""
import argparse
import os
import re
import sys

LAYERS = ["base", "values", "text", "frontend", "vm", "objects", "compiler",
          "tables", "sql", "builtins", "runtime"]
# Hosts of the library and its tests: they may include anything.
TOP = ["shell", "examples", "tests", "bench"]
# Includes that run up a layer by design.
DECLARED_EXCEPTIONS = {("values", "text")}

SOURCE_SUFFIXES = (".h", ".cpp", ".y", ".def", ".inc")
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"/]+)/[^"]*"')


def rank(folder):
    if folder in LAYERS:
        return LAYERS.index(folder)
    if folder in TOP:
        return len(LAYERS)
    return None


def allowed(source, target):
    if source in TOP or source == target or (source, target) in DECLARED_EXCEPTIONS:
        return True
    source_rank, target_rank = rank(source), rank(target)
    if target_rank is None or target_rank >= len(LAYERS):
        return False  # only the layers are there to be included
    return target_rank < source_rank


def check_file(path, folder, shown_as):
    problems = []
    with open(path, encoding="utf-8", errors="replace") as text:
        for number, line in enumerate(text, 1):
            match = INCLUDE.match(line)
            if match and not allowed(folder, match.group(1)):
                include = line.strip()
                problems.append(f"{shown_as}:{number}: {include}: {folder} may not include {match.group(1)}")
    return problems


def check_tree(root):
    problems, files = [], 0
    for folder in LAYERS + TOP:
        top = os.path.join(root, folder)
        for directory, subdirectories, names in os.walk(top):
            subdirectories.sort()
            for name in sorted(names):
                if not name.endswith(SOURCE_SUFFIXES):
                    continue
                path = os.path.join(directory, name)
                files += 1
                problems += check_file(path, folder, os.path.relpath(path, root))
    return problems, files


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", default=os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
    root = parser.parse_args().root
    problems, files = check_tree(root)
    for problem in problems:
        print(problem)
    if problems:
        print(f"{len(problems)} include(s) against the layers", file=sys.stderr)
        return 1
    print(f"{files} files: every include points down the layers")
    return 0


if __name__ == "__main__":
    sys.exit(main())
