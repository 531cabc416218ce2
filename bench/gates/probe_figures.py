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
ENVIRONMENT = {"PATH": os.environ["PATH"], "LC_ALL": "C", "GLIBC_TUNABLES": PLAIN_PROCESSOR}


class Probe:
    """The program, run in the folder of its module: the length of that folder's name, which the kernel compares and
    copies, does not count."""

    def __init__(self, program, module):
        self.folder, name = os.path.split(os.path.abspath(module))
        self.program, self.module = os.path.abspath(program), f"./{name}"

    def command(self, rounds):
        return [self.program, str(rounds), self.module]

    def run(self, before, rounds, **options):
        return run([*before, *self.command(rounds)], cwd=self.folder, env=ENVIRONMENT, **options)


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
    for line in probe.run(emulator, rounds, preexec_fn=share_one_processor).splitlines():
        _, name, *counts = line.split()
        figures[name] = {measure: int(count) / rounds for measure, count in zip(counts[::2], counts[1::2])}
    return figures


def instructions_of_callgrind(probe, rounds):
    with tempfile.TemporaryDirectory() as folder:
        probe.run(["valgrind", "--tool=callgrind", "--separate-threads=yes", f"--callgrind-out-file={folder}/out"], rounds,
                  stderr=subprocess.DEVNULL)
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
    # One line for each instruction, with the thread's number, and one for each system call. The first thread makes the
    # marks.
    command = [*emulator[:1], "-singlestep", "-d", "nochain,exec,strace", *emulator[1:], *probe.command(rounds)]
    figures = collections.Counter()
    with subprocess.Popen(command, cwd=probe.folder, env=ENVIRONMENT, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          text=True, errors="replace") as log:
        for operation, _ in marks_of(names, log.stderr, lambda line: line.startswith("Trace 0:")):
            figures[operation] += 1
    return {name: {"instructions": (count - figures["nothing"]) / rounds} for name, count in figures.items()}


def calls_of_strace(probe, rounds, names):
    with tempfile.NamedTemporaryFile("r") as log:
        probe.run(["strace", "-f", "-qq", "-e", "signal=none", "-o", log.name], rounds)
        figures = {}
        marker = log.readline().split()[0]  # the first thread
        for operation, line in marks_of(names, log, lambda line: "resumed>" not in line):
            call = re.match(r"(\d+) +(\w+)\(", line)
            if call:
                counts = figures.setdefault(operation, collections.Counter())
                counts["calls"] += (call[1] == marker) / rounds
                counts[call[2]] += 1 / rounds
        return {name: figures.get(name, collections.Counter()) for name in names}
