# SPDX-License-Identifier: Apache-2.0
"""What the operations of the probe cost, counted in four ways. Each returns {operation: {measure: figure}}."""
import collections
import os
import pathlib
import re
import subprocess
import tempfile

# The same code of the C library on every machine: none of what some processors have.
PLAIN_PROCESSOR = "glibc.cpu.hwcaps=-AVX2,-AVX512F,-ERMS,-FSRM:glibc.cpu.x86_rep_movsb_threshold=1000000000"


def run(command, **options):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def share_one_processor():
    """Called before the program and its first thread begin, so that all of its threads inherit it: they have one
    processor, and one that is woken does not run before the one that woke it waits."""
    os.sched_setaffinity(0, [max(os.sched_getaffinity(0))])
    os.sched_setscheduler(0, os.SCHED_BATCH, os.sched_param(0))


def counts_of_probe(emulator, probe, rounds):
    """What the probe counts itself. It finds the same switches each time, or fewer where another program takes the
    processor away between two threads."""
    figures = {}
    for line in run([*emulator, probe[0], str(rounds), *probe[1:]], preexec_fn=share_one_processor).splitlines():
        _, name, *counts = line.split()
        figures[name] = {measure: int(count) / rounds for measure, count in zip(counts[::2], counts[1::2])}
    return figures


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
        return {name: {"instructions": count - figures["nothing"]} for name, count in figures.items()}


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
    return {name: {"instructions": (count - figures["nothing"]) / rounds} for name, count in figures.items()}


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
