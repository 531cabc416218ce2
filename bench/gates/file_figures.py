# SPDX-License-Identifier: Apache-2.0
"""What the library's file holds, and what the dynamic loader does with it. Both return {name: {measure: figure}}."""
import os
import re
import subprocess
import tempfile

from probe_figures import run


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


def facts_of_start(emulator, program, folder):
    """What the loader does for a run of a program with the libraries of folder: until main, and in all."""
    settings = ["LD_DEBUG=files:statistics", f"LD_LIBRARY_PATH={folder}"]
    if emulator:
        start = [*emulator, *(word for setting in settings for word in ("-E", setting))]
    else:
        start = ["env", *settings]
    log = run([*start, program], stderr=subprocess.STDOUT)
    return [{"relocations": int(re.findall(r"number of relocations: (\d+)", text)[-1]),
             "libraries": text.count("generating link map")}
            for text in (log.partition("transferring control")[0], log)]


def facts_of_host(emulator, host, bare, library):
    """Of a program that starts and stops a kernel, where the platform's library is found and where it is not; and of
    one that has no kernel."""
    folder = os.path.dirname(os.path.abspath(library))
    figures = {}
    with tempfile.TemporaryDirectory() as alone:
        for name in (os.path.basename(library), "libiconv.so.2"):
            os.symlink(f"{folder}/{name}", f"{alone}/{name}")
        for name, program, libraries in (("host", host, folder), ("host-alone", host, alone), ("bare", bare, folder)):
            figures[f"{name}-start"], figures[f"{name}-all"] = facts_of_start(emulator, program, libraries)
    return figures
