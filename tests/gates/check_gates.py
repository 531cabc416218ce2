#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Compares what operations cost, in figures that do not depend on the machine's speed, with a file of budgets.

A line of that file: TARGET FIGURE MEASURE BUDGET, where TARGET is native, arm or both. A budget that is exceeded, and one
whose figure was not measured, is a failure. Measures:

  instructions   of the calling thread: by callgrind on native, counted one by one by the emulator on arm
  calls          system calls of the calling thread; MEASURE may also be the name of one, as futex: then of all threads
  allocations    calls of malloc, calloc and realloc
  bytes, count   of the library's file, as size and readelf tell them
"""
import argparse
import collections
import os
import pathlib
import re
import subprocess
import sys
import tempfile

# The same code of the C library on every machine: none of what some processors have.
PLAIN_PROCESSOR = "glibc.cpu.hwcaps=-AVX2,-AVX512F,-ERMS,-FSRM:glibc.cpu.x86_rep_movsb_threshold=1000000000"

# What is compared beside the operations themselves: the difference of two of them, divided.
DIFFERENCES = {  # (these) less (those), divided
    "utf8-decode-byte": (("utf8-decode-3072", "length-1024"), ("utf8-decode-1024", "length-3072"), 2048),
    "utf8-encode-byte": (("utf8-encode-3072", "length-1024"), ("utf8-encode-1024", "length-3072"), 2048),
    "length-unit": (("length-3072",), ("length-1024",), 2048),
    "post-receive-entry": (("post-receive-2000",), ("post-receive-1000",), 1000),
    "alloc-free-more": (("alloc-free",), ("malloc-free",), 1),
    "new-delete-more": (("new-delete",), ("malloc-free",), 1),
    "module-fresh-more": (("module-fresh",), ("dlopen-fresh",), 1),
}


def run(command, **options):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def instructions_of_callgrind(probe, rounds):
    with tempfile.TemporaryDirectory() as folder:
        run(["valgrind", "--tool=callgrind", "--separate-threads=yes", f"--callgrind-out-file={folder}/out", probe[0],
             str(rounds), *probe[1:]], stderr=subprocess.DEVNULL, env={**os.environ, "GLIBC_TUNABLES": PLAIN_PROCESSOR})
        figures = {}
        for dump in pathlib.Path(folder).glob("out.*-01"):
            text = dump.read_text()
            name = re.search(r"^desc: Trigger: Client Request: (\S+)", text, re.M)
            if name:
                figures[name[1]] = int(re.search(r"^(?:totals|summary): (\d+)", text, re.M)[1]) / rounds
        return figures


def marks_of(names, lines, is_step):
    """Yields (operation, line) for the steps between an operation's two marks."""
    operation = None
    for line in lines:
        mark = re.search(r"close\(-(\d+)", line)
        if mark:
            number, is_end = divmod(int(mark[1]) - 1000, 2)
            operation = None if is_end else names[number]
        elif operation and is_step(line):
            yield operation, line


def instructions_of_emulator(emulator, probe, rounds, names):
    # One line for each instruction, and one for each system call, of the thread that makes the marks: no other thread
    # runs in the operations that are counted so.
    command = [*emulator[:1], "-singlestep", "-d", "nochain,exec,strace", *emulator[1:], probe[0], str(rounds), *probe[1:]]
    figures = collections.Counter()
    with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, errors="replace") as log:
        for operation, _ in marks_of(names, log.stderr, lambda line: line.startswith("Trace")):
            figures[operation] += 1
    return {name: count / rounds for name, count in figures.items()}


def calls_of_strace(probe, rounds, names):
    with tempfile.NamedTemporaryFile("r") as log:
        run(["strace", "-f", "-qq", "-e", "signal=none", "-o", log.name, probe[0], str(rounds), *probe[1:]])
        figures = {}
        marker = log.readline().split()[0]  # the first thread
        for operation, line in marks_of(names, log, lambda line: "resumed>" not in line):
            call = re.match(r"(\d+) +(\w+)\(", line)
            if call:
                counts = figures.setdefault(operation, collections.Counter())
                counts["calls"] += (call[1] == marker) / rounds
                counts[call[2]] += 1 / rounds
        return {name: figures.get(name, collections.Counter()) for name in names}


def facts_of_library(library, readelf):
    size, strip = (readelf.replace("readelf", tool) for tool in ("size", "strip"))
    with tempfile.TemporaryDirectory() as folder:
        stripped = f"{folder}/library"
        run([strip, "-o", stripped, library])
        text, data, bss = run([size, stripped]).splitlines()[1].split()[:3]
        exports = sum(1 for line in run([readelf, "--dyn-syms", "-W", stripped]).splitlines()
                      if re.search(r"\b(GLOBAL|WEAK|UNIQUE)\b.* (?!UND)\S+ \S+$", line) and " UND " not in line)
        needed = re.findall(r"NEEDED.*\[(.*)\]", run([readelf, "-dW", stripped]))
        own = ("libc.so", "libgcc_s.so", "libstdc++.so", "libiconv.so", "ld-linux")
        return {"library-text": {"bytes": int(text)}, "library-data": {"bytes": int(data) + int(bss)},
                "library-relocations": {"count": len(re.findall(r"^[0-9a-f]{8,} ", run([readelf, "-rW", stripped]), re.M))},
                "library-exports": {"count": exports},
                "library-needs-beyond": {"count": sum(1 for name in needed if not name.startswith(own))}}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("target", "probe", "module", "library", "budgets", "readelf"):
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("--emulator", default="")
    options = parser.parse_args()
    emulator = options.emulator.split()
    probe = [options.probe, options.module]

    figures = collections.defaultdict(dict)
    counted = [line.split() for line in run([*emulator, probe[0], "20", *probe[1:]]).splitlines()]
    names = [name for _, name, _ in counted]
    for _, name, allocations in counted:
        figures[name]["allocations"] = int(allocations) / 20
    if options.target == "arm":
        instructions = instructions_of_emulator(emulator, probe, 3, names)
    else:
        instructions = instructions_of_callgrind(probe, 100)
        for name, counts in calls_of_strace(probe, 100, names).items():
            figures[name].update(counts)
    for name, count in instructions.items():
        figures[name]["instructions"] = count - instructions["nothing"]
    for name, (more, less, divisor) in DIFFERENCES.items():
        for measure in set.intersection(*(set(figures[part]) for part in more + less)):
            difference = sum(figures[part][measure] for part in more) - sum(figures[part][measure] for part in less)
            figures[name][measure] = difference / divisor
    figures.update(facts_of_library(options.library, options.readelf))

    failures = 0
    for number, line in enumerate(open(options.budgets, encoding="utf-8"), 1):
        fields = line.partition("#")[0].split()
        if not fields or fields[0] not in (options.target, "both"):
            continue
        _, name, measure, budget = fields
        found = figures.get(name, {}).get(measure, 0.0 if name in names and measure not in
                                          ("instructions", "allocations") and options.target == "native" else None)
        fails = found is None or round(found, 3) > float(budget)
        failures += fails
        shown = "not measured" if found is None else f"{found:.2f}"
        print(f"{'EXCEEDED' if fails else 'ok':8} {name:24} {measure:12} {shown:>12} of {budget}"
              + (f"   ({options.budgets}:{number})" if fails else ""))
    sys.exit(1 if failures else 0)


main()
