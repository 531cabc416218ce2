#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""check_interface.py XML_DIR: every public operation says on which threads it may be called and which lock it takes.

Its own comment does, or that of its class or file: "[any thread" or "[owner]", and the word lock or mutex. A class also
speaks for the classes within it as far as locks go.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

TAG = re.compile(r"\[(any thread|owner)\b")
LOCK = re.compile(r"\b(locks?|mutex(es)?)\b")


def comment(node):
    parts = [node.find(name) for name in ("briefdescription", "detaileddescription", "inbodydescription")]
    return " ".join("".join(part.itertext()) for part in parts if part is not None)


def main(folder):
    compounds = []
    for file in sorted(pathlib.Path(folder).glob("*.xml")):
        compounds += ElementTree.parse(file).getroot().findall("compounddef[@id]")
    comments = {compound.findtext("compoundname"): comment(compound) for compound in compounds}
    count, mistakes = 0, []
    for compound in compounds:
        name = compound.findtext("compoundname")
        if compound.get("kind") not in ("class", "struct", "file", "namespace"):
            continue
        outer = [comments.get("::".join(name.split("::")[:i]), "") for i in range(1, name.count("::") + 1)]
        for member in compound.iter("memberdef"):
            own = comment(member)
            destructor = "~" in member.findtext("name")
            if member.get("kind") != "function" or member.get("prot") != "public" or (destructor and not own.strip()):
                continue
            if re.search(r"=\s*delete", member.findtext("argsstring")):
                continue
            count += 1
            place = f"{member.find('location').get('file')}:{member.find('location').get('line')}"
            operation = f"{place}: {name}, {member.findtext('name')}"
            if not TAG.search(own + comments[name]):
                mistakes.append(f"{operation}: says neither [any thread] nor [owner]")
            if not LOCK.search(" ".join([own, comments[name], *outer])):
                mistakes.append(f"{operation}: names no lock and does not say that it takes none")
    print(*mistakes, sep="\n", file=sys.stderr, end="\n" if mistakes else "")
    if count < 150:
        sys.exit(f"only {count} operations were found")
    print(f"{count} operations say their threads and locks")
    sys.exit(bool(mistakes))


main(sys.argv[1])
