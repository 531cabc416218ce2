#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Compares what operations cost, in figures that do not depend on the machine's speed, with a file of budgets.

A line of that file: TARGET FIGURE MEASURE BUDGET, where TARGET is native, arm or both. A budget that is exceeded, and one
whose figure was not measured, is a failure. Measures:

  instructions   of the calling thread: by callgrind on native, counted one by one by the emulator on arm
  calls          system calls of the calling thread; MEASURE may also be the name of one, as futex: then of all threads
  allocations    calls of malloc, calloc and realloc, of all threads, as all that follows
  switches       how often a thread gave up its processor to wait, with all of them on one
  clocks         readings by clock_gettime
  deadlines      readings by gettimeofday, with which a wait begins
  converters     of character sets that are opened
  relocations    symbols that the dynamic loader looked up
  libraries      that it loaded
  bytes, count   of the library's file, as size and readelf tell them
"""
import argparse
import collections
import sys

sys.dont_write_bytecode = True  # beside the sources

import file_figures
import probe_figures

# What is compared beside the operations themselves: the difference of two of them, divided.
DIFFERENCES = {  # (these) less (those), divided
    "length-unit": (("length-ascii-3840",), ("length-ascii-1920",), 1920),
    "post-receive-entry": (("post-receive-2000",), ("post-receive-1000",), 1000),
    "alloc-free-more": (("alloc-free",), ("malloc-free",), 1),
    "new-delete-more": (("new-delete",), ("malloc-free",), 1),
    "module-fresh-more": (("module-fresh",), ("dlopen-fresh",), 1),
    # Each is two calls of SetTimeGMT, which look at kernel time, and two passes.
    "timer-pass": (("timer-fire-1",), ("kernel-time", "kernel-time"), 2),
    "timer-pass-few": (("timer-fire-10",), ("timer-fire-1",), 9),
    "timer-pass-many": (("timer-fire-100",), ("timer-fire-1",), 99),
    # What the C++ library costs is not ours.
    "host-start-more": (("host-start",), ("bare-start",), 1),
    "host-all-more": (("host-all",), ("bare-all",), 1),
    "host-alone-more": (("host-alone-all",), ("bare-all",), 1),
}
for _text in ("ascii", "latin", "cjk", "emoji", "mixed"):
    for _work in ("utf8-decode", "utf8-encode"):  # without the count of the units that is part of both
        DIFFERENCES[f"{_work}-{_text}-byte"] = ((f"{_work}-{_text}-3840", f"length-{_text}-1920"),
                                                (f"{_work}-{_text}-1920", f"length-{_text}-3840"), 1920)


def add_differences(figures):
    for name, (more, less, divisor) in DIFFERENCES.items():
        for measure in set.intersection(*(set(figures[part]) for part in more + less)):
            difference = sum(figures[part][measure] for part in more) - sum(figures[part][measure] for part in less)
            figures[name][measure] = difference / divisor


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("target", "probe", "module", "host", "bare", "library", "budgets", "readelf"):
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("--emulator", default="")
    options = parser.parse_args()
    emulator = options.emulator.split()
    probe = probe_figures.Probe(options.probe, options.module)

    counted = probe_figures.counts_of_probe(emulator, probe, 20)
    names = list(counted)
    measured = [counted, file_figures.facts_of_library(options.library, options.readelf),
                file_figures.facts_of_host(emulator, options.host, options.bare, options.library)]
    if options.target == "arm":
        measured.append(probe_figures.instructions_of_emulator(emulator, probe, 3, names))
    else:
        measured.append(probe_figures.instructions_of_callgrind(probe, 100))
        measured.append(probe_figures.calls_of_strace(probe, 100, names))
    figures = collections.defaultdict(dict)
    for some in measured:
        for name, counts in some.items():
            figures[name].update(counts)
    add_differences(figures)

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
