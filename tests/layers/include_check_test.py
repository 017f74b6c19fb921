#!/usr/bin/env python3
"""The include check names every include against the layers and only those.

Usage: include_check_test.py SOURCE_ROOT. Runs scripts/check_includes.py on a
small tree of its own and on a copy of the source tree with one include
turned upward, checks that docs/ARCHITECTURE.md lists the layers as the check
orders them, and exits 1 with the reason when anything answers wrongly.
"""
import importlib.util
import os
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.abspath(sys.argv[1])
CHECK = os.path.join(ROOT, "scripts", "check_includes.py")


def run_check(root):
    done = subprocess.run([sys.executable, CHECK, "--root", root], capture_output=True, text=True)
    return done.returncode, done.stdout.splitlines()


def write(root, path, lines):
    full = os.path.join(root, path)
    os.makedirs(os.path.dirname(full), exist_ok=True)
    with open(full, "w", encoding="utf-8") as out:
        out.write("".join(line + "\n" for line in lines))


def expect(condition, reason, output):
    if not condition:
        print("FAILED:", reason)
        print("\n".join(output))
        sys.exit(1)


def small_tree_names_exactly_the_wrong_includes(scratch):
    tree = os.path.join(scratch, "small")
    write(tree, "base/floor.h", ['#pragma once', '#include "values/string.h"'])
    write(tree, "values/string.h", ['#include "text/charset.h"', '#include "base/floor.h"'])
    write(tree, "text/charset.h", ['#include "values/string.h"'])
    write(tree, "vm/loop.cpp", ['#include <vector>', '#include "local.h"', '#include "vm/loop.h"',
                                '#include "objects/object.h"'])
    write(tree, "tables/dbf.cpp", ['#include "compiler/library.h"', '#include "vm/loop.h"'])
    write(tree, "compiler/library.cpp", ['#include "tables/dbf.h"'])
    write(tree, "builtins/table.cpp", ['#include "tests/unit/support/error_number.h"'])
    write(tree, "tests/unit/any_test.cpp", ['#include "runtime/runtime.h"', '#include "../support/x.h"'])
    code, output = run_check(tree)
    expect(code == 1, "the check passed a tree with upward includes", output)
    expected = [
        'base/floor.h:2: #include "values/string.h": base may not include values',
        'vm/loop.cpp:4: #include "objects/object.h": vm may not include objects',
        'compiler/library.cpp:1: #include "tables/dbf.h": compiler may not include tables',
        'builtins/table.cpp:1: #include "tests/unit/support/error_number.h": builtins may not include tests',
    ]
    expect(output == expected, "the check named other includes than the four wrong ones", output)


def copy_of_the_tree_fails_on_one_upward_include(scratch):
    tree = os.path.join(scratch, "copy")
    for folder in ("base", "values", "text", "frontend", "vm", "objects", "compiler", "tables", "sql",
                   "builtins", "runtime"):
        if os.path.isdir(os.path.join(ROOT, folder)):
            shutil.copytree(os.path.join(ROOT, folder), os.path.join(tree, folder))
    code, output = run_check(tree)
    expect(code == 0, "the copy of the tree fails before any change", output)
    victim = os.path.join(tree, "vm", "vm_run.cpp")
    with open(victim, encoding="utf-8") as text:
        lines = text.read().splitlines()
    lines.insert(1, '#include "runtime/runtime.h"')
    write(tree, "vm/vm_run.cpp", lines)
    code, output = run_check(tree)
    expect(code == 1 and output == ['vm/vm_run.cpp:2: #include "runtime/runtime.h": vm may not include runtime'],
           "the check missed the VM reaching into the runtime", output)


def architecture_lists_the_layers_of_the_check():
    spec = importlib.util.spec_from_file_location("check_includes", CHECK)
    check = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(check)
    with open(os.path.join(ROOT, "docs", "ARCHITECTURE.md"), encoding="utf-8") as text:
        page = text.read()
    table = page[page.index("## The layers"):page.index("## The doors")]
    listed = [name for row in table.splitlines() if row.startswith("| `")
              for name in re.findall(r"`(\w+)/`", row.split("|")[1])]
    expect(listed == check.LAYERS + check.TOP, "docs/ARCHITECTURE.md orders the layers otherwise than the check",
           listed)


def main():
    with tempfile.TemporaryDirectory() as scratch:
        small_tree_names_exactly_the_wrong_includes(scratch)
        copy_of_the_tree_fails_on_one_upward_include(scratch)
    architecture_lists_the_layers_of_the_check()
    print("the include check fails on upward includes and passes on the tree")
    return 0


if __name__ == "__main__":
    sys.exit(main())
