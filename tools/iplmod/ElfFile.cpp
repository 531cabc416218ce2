// SPDX-License-Identifier: Apache-2.0
#include "ElfFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

// Has libelf read the whole file, so that the descriptor need not stay open.
std::shared_ptr<Elf> Open(const std::string& path) {
  elf_version(EV_CURRENT);
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const int error = file >= 0 ? EIO : errno;
  std::shared_ptr<Elf> elf(elf_begin(file, ELF_C_READ, nullptr), &elf_end);
  const bool read = elf != nullptr && elf_cntl(elf.get(), ELF_C_FDREAD) == 0;
  ::close(file);
  return read ? elf : throw std::system_error(error, std::generic_category(), "cannot read '" + path + "'");
}

std::string KindText(const GElf_Ehdr& header) {
  const std::map<int, std::string> machines = {{EM_ARM, "ARM"}, {EM_X86_64, "x86-64"}, {EM_AARCH64, "AArch64"}};
  const auto machine = machines.find(header.e_machine);
  return (header.e_ident[EI_CLASS] == ELFCLASS32 ? "32-bit " : "64-bit ") +
         (machine != machines.end() ? machine->second : "machine " + std::to_string(header.e_machine)) +
         (header.e_ident[EI_DATA] == ELFDATA2LSB ? "" : ", big-endian");
}

std::string Text(const ElfFile& file, size_t names, size_t offset) {
  const char* text = elf_strptr(file.elf.get(), names, offset);
  return text != nullptr ? text : "";
}

void ReadDynamic(ElfFile& file, Elf_Data* data, size_t names) {
  GElf_Dyn entry;
  for (int i = 0; gelf_getdyn(data, i, &entry) != nullptr && entry.d_tag != DT_NULL; ++i) {
    const uint64_t value = entry.d_un.d_val;
    if (const auto tag = file.texts.find(entry.d_tag); tag != file.texts.end()) {
      tag->second.push_back(Text(file, names, value));
    } else if (entry.d_tag == DT_FLAGS_1 && (value & (DF_1_PIE | DF_1_NOOPEN)) != 0) {
      throw std::invalid_argument("this is a program, or was linked with -z nodlopen");
    }
    file.textRelocations |= entry.d_tag == DT_TEXTREL || (entry.d_tag == DT_FLAGS && (value & DF_TEXTREL) != 0);
  }
}

void ReadVersionNeeds(ElfFile& file, Elf_Data* data, size_t names) {
  GElf_Verneed need;
  for (int at = 0, more = 1; more > 0 && gelf_getverneed(data, at, &need) != nullptr; at += more) {
    more = static_cast<int>(need.vn_next);
    GElf_Vernaux part;
    int place = at + static_cast<int>(need.vn_aux);
    for (int i = 0; i < need.vn_cnt && gelf_getvernaux(data, place, &part) != nullptr; ++i) {
      place += static_cast<int>(part.vna_next);
      file.versionNames[part.vna_other] = Text(file, names, part.vna_name);
      if ((part.vna_flags & VER_FLG_WEAK) == 0) {
        file.versionNeeds.emplace_back(Text(file, names, need.vn_file), Text(file, names, part.vna_name));
      }
    }
  }
}

void ReadVersions(ElfFile& file, Elf_Data* data, size_t names) {
  GElf_Verdef version;
  for (int at = 0, more = 1; more > 0 && gelf_getverdef(data, at, &version) != nullptr; at += more) {
    more = static_cast<int>(version.vd_next);
    GElf_Verdaux name;
    // The base version is the library's own name; symbols with it have no version.
    if ((version.vd_flags & VER_FLG_BASE) == 0 &&
        gelf_getverdaux(data, at + static_cast<int>(version.vd_aux), &name) != nullptr) {
      file.versions.insert(file.versionNames[version.vd_ndx] = Text(file, names, name.vda_name));
    }
  }
}

void ReadSymbols(ElfFile& file, Elf_Data* data, size_t names) {
  GElf_Sym symbol;
  for (int i = 1; gelf_getsym(data, i, &symbol) != nullptr; ++i) {  // the first is none
    const int binding = GELF_ST_BIND(symbol.st_info);
    GElf_Versym index = 0;  // there is no section of them if nothing has a version
    gelf_getversym(file.sections[SHT_GNU_versym].first, i, &index);
    const auto version = file.versionNames.find(index & 0x7FFF);
    ElfSymbol made = {Text(file, names, symbol.st_name), version != file.versionNames.end() ? version->second : "",
                      binding, symbol.st_value};
    if (binding != STB_LOCAL && symbol.st_shndx != SHN_UNDEF) {
      file.definitions.emplace(made.name, made.version);
      file.defined.push_back(std::move(made));
    } else if (binding == STB_GLOBAL) {  // what is weak may be missing
      file.undefined.push_back(std::move(made));
    }
  }
}

}  // namespace

ElfFile::ElfFile(const std::string& file) : path(file), elf(Open(file)) {
  texts = {{DT_NEEDED, {}}, {DT_SONAME, {}}, {DT_RPATH, {}}, {DT_RUNPATH, {}}, {DT_AUXILIARY, {}}, {DT_FILTER, {}}};
  GElf_Ehdr header;
  GElf_Shdr shape;
  for (Elf_Scn* scan = nullptr; (scan = elf_nextscn(elf.get(), scan)) != nullptr && gelf_getshdr(scan, &shape);) {
    sections[shape.sh_type] = {elf_getdata(scan, nullptr), shape};
  }
  if (gelf_getehdr(elf.get(), &header) == nullptr || header.e_type != ET_DYN || sections.count(SHT_DYNSYM) == 0) {
    throw std::invalid_argument("this is no shared library");
  }
  kind = KindText(header);
  floatAbi = header.e_machine == EM_ARM ? header.e_flags & (EF_ARM_ABI_FLOAT_HARD | EF_ARM_ABI_FLOAT_SOFT) : 0;
  // The symbols come last: they need the names of the versions. What is not there reads as empty.
  ReadDynamic(*this, sections[SHT_DYNAMIC].first, sections[SHT_DYNAMIC].second.sh_link);
  ReadVersionNeeds(*this, sections[SHT_GNU_verneed].first, sections[SHT_GNU_verneed].second.sh_link);
  ReadVersions(*this, sections[SHT_GNU_verdef].first, sections[SHT_GNU_verdef].second.sh_link);
  ReadSymbols(*this, sections[SHT_DYNSYM].first, sections[SHT_DYNSYM].second.sh_link);
}

bool ElfFile::Defines(const ElfSymbol& symbol) const {
  const auto first = definitions.lower_bound({symbol.name, ""});
  // A definition without a version serves every reference, and a reference without one takes any definition.
  return first != definitions.end() && first->first == symbol.name &&
         (symbol.version.empty() || first->second.empty() || definitions.count({symbol.name, symbol.version}) != 0);
}
