// SPDX-License-Identifier: Apache-2.0
// The two kinds of unwind tables: ARM has its own, everything else has call frame information.
#include <cstdlib>
#include <cstring>

#include <elfutils/libdw.h>

#include "ElfFile.h"

namespace {

// The table has entries of two words, sorted: the distance to where a range of code starts, and how to unwind it.
bool HasArmEntry(const Elf_Data& table, uint64_t tableAddress, uint64_t function) {
  constexpr uint32_t kCannotUnwind = 1;
  uint32_t unwind = kCannotUnwind;
  for (size_t at = 0; at + 8 <= table.d_size; at += 8) {
    uint32_t entry[2];
    std::memcpy(entry, static_cast<const char*>(table.d_buf) + at, sizeof(entry));
    const int32_t distance = static_cast<int32_t>(entry[0] << 1) >> 1;  // 31 bits, signed
    unwind = static_cast<int64_t>(tableAddress + at) + distance <= static_cast<int64_t>(function) ? entry[1] : unwind;
  }
  return unwind != kCannotUnwind;
}

}  // namespace

bool ElfFile::HasUnwindEntry(uint64_t address) const {
  if (kind == "32-bit ARM") {
    const auto table = sections.find(SHT_ARM_EXIDX);
    return table != sections.end() && table->second.first != nullptr &&
           HasArmEntry(*table->second.first, table->second.second.sh_addr, address);
  }
  const std::unique_ptr<Dwarf_CFI, int (*)(Dwarf_CFI*)> table(dwarf_getcfi_elf(elf.get()), &dwarf_cfi_end);
  Dwarf_Frame* frame = nullptr;
  const bool found = table != nullptr && dwarf_cfi_addrframe(table.get(), address, &frame) == 0;
  std::free(frame);
  return found;
}
