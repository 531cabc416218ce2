#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Repeats what builders of images check of packages.

Each FOLDER is one unpacked package and has its name; those that end with -dbgsym hold debug information. Prints a line
"NAME: PACKAGE: FILE: what" for each finding, and then the oldest system on which the files load. Exit status 1 if there
is a finding.
"""
import argparse
import gzip
import os
import re
import sys

from elf_findings import Elf, version

ABSOLUTE = re.compile(r"(^|[=\s\"]|-[IL])/")


class Checker:
    def __init__(self, arguments):
        self.build_paths = [os.fsencode(path) for path in arguments.build_path]
        self.max_glibc = arguments.max_glibc
        self.folders = {os.path.basename(os.path.normpath(folder)): folder for folder in arguments.folders}
        self.findings = []
        self.owners = {}
        self.libraries = {}
        self.kernel = ()
        self.elf_count = 0

    def find(self, name, package, path, what):
        self.findings.append(f"{name}: {package}: /{path}: {what}")

    def run(self):
        for package, folder in sorted(self.folders.items()):
            for directory, folders, files in os.walk(folder):
                folders.sort()
                links = [name for name in folders if os.path.islink(os.path.join(directory, name))]
                for name in sorted(files + links):
                    full = os.path.join(directory, name)
                    self.check_file(package, os.path.relpath(full, folder), full)

    def check_file(self, package, path, full):
        owner = self.owners.setdefault(path, package)
        if owner != package:
            self.find("owned-twice", package, path, "is in " + owner + " too")
        if os.path.islink(full):
            return
        with open(full, "rb") as stream:
            content = stream.read()
            contents = [content]
            if content.startswith(b"\x7fELF"):
                stream.seek(0)
                elf = Elf(stream)
                contents += elf.unpacked
                self.check_elf(package, path, elf)
        if path.endswith(".gz"):
            contents.append(gzip.decompress(content))
        for build_path in self.build_paths:
            if any(build_path in content for content in contents):
                self.find("build-path", package, path, "contains " + os.fsdecode(build_path))
        if path.endswith(".pc"):
            self.check_pc(package, path, content.decode())

    def check_elf(self, package, path, elf):
        if package.endswith("-dbgsym"):
            return
        self.elf_count += 1
        for name, what in elf.findings:
            self.find(name, package, path, what)
        if not elf.stripped:
            self.find("not-stripped", package, path, "still has its symbol table or debug information")
        if elf.build_id is None:
            self.find("no-build-id", package, path, "debug information cannot be matched to it")
        else:
            debug = f"usr/lib/debug/.build-id/{elf.build_id[:2]}/{elf.build_id[2:]}.debug"
            folder = self.folders.get(package + "-dbgsym")
            if folder is None or not os.path.exists(os.path.join(folder, debug)):
                self.find("no-debug-file", package, path, f"{package}-dbgsym has no /{debug}")
        glibc = elf.libraries.get("GLIBC", ())
        if self.max_glibc and glibc > self.max_glibc:
            self.find("glibc-too-new", package, path, "needs the C library " + dotted(glibc))
        if path.endswith("/libIPLKernel.so"):
            print(f"{path}: Oldest system: {oldest(elf.libraries, elf.kernel or ())}")
        for family, needed in elf.libraries.items():
            self.libraries[family] = max(self.libraries.get(family, ()), needed)
        self.kernel = max(self.kernel, elf.kernel or ())

    def check_pc(self, package, path, text):
        if "${pcfiledir}" not in text:
            self.find("pc-not-relocatable", package, path, "does not begin at its own place, ${pcfiledir}")
        for line in text.splitlines():
            if ABSOLUTE.search(line) and not line.startswith("#"):
                self.find("pc-not-relocatable", package, path, "names a fixed place: " + line)


def oldest(libraries, kernel):
    return (f"C library {dotted(libraries.get('GLIBC', ()))}, C++ library {dotted(libraries.get('GLIBCXX', ()))}, "
            f"Linux {dotted(kernel)}")


def dotted(numbers):
    return ".".join(map(str, numbers)) or "any"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--max-glibc", type=version, metavar="X.Y", help="the newest C library that may be needed")
    parser.add_argument("--build-path", action="append", default=[], metavar="PATH", help="may be in no file")
    parser.add_argument("folders", nargs="+", metavar="FOLDER", help="an unpacked package")
    checker = Checker(parser.parse_args())
    checker.run()
    for finding in checker.findings:
        print(finding)
    if checker.elf_count == 0:
        print("nothing-checked: no package has a program or library")
        return 1
    print(f"{checker.elf_count} programs and libraries. Oldest system: {oldest(checker.libraries, checker.kernel)}")
    return 1 if checker.findings else 0


if __name__ == "__main__":
    sys.exit(main())
