// SPDX-License-Identifier: Apache-2.0
#include "WordCount/WordTable.h"

#include <ipl/PLMem.h>

namespace pipeline {

namespace {

uint32_t HashUnits(const unsigned short* units, unsigned long length) {
  uint32_t hash = 2166136261U;  // FNV-1a
  for (unsigned long i = 0; i < length; ++i) {
    hash = (hash ^ units[i]) * 16777619U;
  }
  return hash;
}

int CompareUnits(const WordKey& left, const WordKey& right) {
  for (unsigned long i = 0; i < left.length && i < right.length; ++i) {
    if (left.units[i] != right.units[i]) {
      return left.units[i] < right.units[i] ? -1 : 1;
    }
  }
  return left.length == right.length ? 0 : (left.length < right.length ? -1 : 1);
}

int CompareEntries(const void* left, const void* right) {
  const WordTable::Entry& a = *static_cast<const WordTable::Entry*>(left);
  const WordTable::Entry& b = *static_cast<const WordTable::Entry*>(right);
  if (a.count != b.count) {
    return a.count > b.count ? -1 : 1;
  }
  return CompareUnits(a.word, b.word);
}

void FreeUnits(const unsigned short* units) {
  operator delete(const_cast<unsigned short*>(units), 0U, __FILE__, __LINE__,
                  static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
}

}  // namespace

uint32_t PLHashTable_KeyHash(const WordKey& key) { return key.hash; }

bool PLHashTable_KeyCompare(const WordKey& left, const WordKey& right) {
  return left.hash == right.hash && CompareUnits(left, right) == 0;
}

WordTable::~WordTable() {
  for (unsigned long i = 0; i < m_entries.GetSize(); ++i) {
    FreeUnits(m_entries[i].word.units);
  }
}

bool WordTable::Add(const unsigned short* units, unsigned long length) {
  const WordKey key = {units, length, HashUnits(units, length)};
  unsigned long index = 0;
  if (!m_indexes.Lookup(key, index)) {
    return AddNew(key);
  }
  ++m_entries[index].count;
  return true;
}

/// Every step of it may find memory exhausted, and tells it by a size that has not changed; the steps before it are
/// then undone.
bool WordTable::AddNew(const WordKey& key) {
  if (key.length >= UINT32_MAX / sizeof(*key.units)) {
    return false;
  }
  const unsigned int byteCount = static_cast<unsigned int>(key.length * sizeof(*key.units));
  unsigned short* units = static_cast<unsigned short*>(operator new(
      0, byteCount + sizeof(*units), __FILE__, __LINE__, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr)));
  if (units == nullptr) {
    return false;
  }
  m_pKernel->memcpy(units, key.units, byteCount);
  units[key.length] = 0;

  const Entry entry = {{units, key.length, key.hash}, 1};
  const unsigned long index = m_entries.GetSize();
  m_entries.Append(entry);
  if (m_entries.GetSize() == index) {
    FreeUnits(units);
    return false;
  }
  m_indexes.SetAt(entry.word, index);
  if (m_indexes.GetCount() != m_entries.GetSize()) {
    m_entries.RemoveAt(index);
    FreeUnits(units);
    return false;
  }
  return true;
}

void WordTable::Sort() {
  m_indexes.RemoveAllEntries();
  if (m_entries.GetSize() > 0) {
    m_pKernel->qsort(&m_entries[0], m_entries.GetSize(), sizeof(Entry), reinterpret_cast<void*>(CompareEntries));
  }
}

}  // namespace pipeline
