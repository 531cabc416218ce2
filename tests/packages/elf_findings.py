# SPDX-License-Identifier: Apache-2.0
"""What is wrong with an ELF file of a package, and what it needs."""
from elftools.elf.elffile import ELFFile
from elftools.elf.dynamic import DynamicSection
from elftools.elf.gnuversions import GNUVerNeedSection
from elftools.elf.sections import SymbolTableSection

DF_TEXTREL = 4

# The C library's functions that have a variant with 64-bit time: undefined under these names they are the 32-bit ones.
NARROW_TIME = frozenset("""
adjtime adjtimex asctime_r clock_adjtime clock_getres clock_gettime clock_nanosleep clock_settime cnd_timedwait ctime
ctime_r difftime fcntl fcntl64 fstat fstat64 fstatat fstatat64 ftime fts_open futimens futimes futimesat getitimer
getrusage gettimeofday glob gmtime gmtime_r ioctl localtime localtime_r lstat lstat64 lutimes mktime mq_timedreceive
mq_timedsend msgctl mtx_timedlock nanosleep ntp_adjtime ntp_gettime ppoll prctl pselect pthread_clockjoin_np
pthread_cond_clockwait pthread_cond_timedwait pthread_mutex_clocklock pthread_mutex_timedlock pthread_rwlock_clockrdlock
pthread_rwlock_clockwrlock pthread_rwlock_timedrdlock pthread_rwlock_timedwrlock pthread_timedjoin_np recvmmsg recvmsg
sched_rr_get_interval select sem_clockwait sem_timedwait semctl semtimedop sendmmsg sendmsg setitimer setsockopt
getsockopt settimeofday shmctl sigtimedwait stat stat64 statx_time thrd_sleep time timegm timelocal timer_gettime
timer_settime timerfd_gettime timerfd_settime timespec_get timespec_getres utime utimensat utimes wait3 wait4
""".split())


def version(text):
    """Of "2.34": (2, 34). None for what is no version."""
    try:
        return tuple(int(part) for part in text.split("."))
    except ValueError:
        return None


def _dynamic_findings(elf):
    tags = {}
    for section in elf.iter_sections():
        if isinstance(section, DynamicSection):
            for tag in section.iter_tags():
                tags.setdefault(tag.entry.d_tag, tag)
    for name in ("DT_RPATH", "DT_RUNPATH"):
        if name in tags:
            yield "runpath", "looks for libraries in " + getattr(tags[name], name[3:].lower())
    if "DT_TEXTREL" in tags or ("DT_FLAGS" in tags and tags["DT_FLAGS"].entry.d_val & DF_TEXTREL):
        yield "text-relocation", "the loader has to write into its code"
    if tags and ("DT_GNU_HASH" not in tags or "DT_HASH" in tags):
        yield "hash-style", "its symbol table is not hashed in the GNU style alone"


def _narrow_time(elf):
    symbols = elf.get_section_by_name(".dynsym")
    if elf.elfclass != 32 or not isinstance(symbols, SymbolTableSection):  # in split debug information it has no content
        return
    for symbol in symbols.iter_symbols():
        if symbol.entry.st_shndx == "SHN_UNDEF" and symbol.name in NARROW_TIME:
            yield "32-bit-time", "calls " + symbol.name


def _notes(elf):
    for section in elf.iter_sections():
        if section["sh_type"] == "SHT_NOTE":
            yield from section.iter_notes()


class Elf:
    """One file: its findings, as pairs of name and detail, its build-id, and the oldest system it runs on."""

    def __init__(self, stream):
        elf = ELFFile(stream)
        self.findings = list(_dynamic_findings(elf)) + list(_narrow_time(elf))
        self.build_id, self.kernel, self.libraries = None, None, {}
        for note in _notes(elf):
            if note["n_type"] == "NT_GNU_BUILD_ID":
                self.build_id = note["n_desc"]
            elif note["n_type"] == "NT_GNU_ABI_TAG":
                self.kernel = tuple(note["n_desc"][field] for field in ("abi_major", "abi_minor", "abi_tiny"))
        for section in elf.iter_sections():
            if isinstance(section, GNUVerNeedSection):
                self._take_versions(section)
        self.stripped = not any(elf.get_section_by_name(name) for name in (".symtab", ".debug_info"))
        # What the debug information says is compressed: a path in it would not be seen.
        self.unpacked = [section.data() for section in elf.iter_sections() if section.compressed]

    def _take_versions(self, section):
        for _, needed in section.iter_versions():
            for one in needed:
                family, _, number = one.name.partition("_")
                if version(number):
                    self.libraries[family] = max(self.libraries.get(family, ()), version(number))
