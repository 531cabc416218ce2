// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_WORDCOUNT_WORDTABLE_H
#define IPL_EXAMPLES_WORDCOUNT_WORDTABLE_H

#include <stdint.h>

#include <ipl/IPLKernel.h>
#include <ipl/PLArray.h>
#include <ipl/PLHashTable.h>

namespace pipeline {

/// A word as a key: its units and their hash, computed once.
struct WordKey {
  const unsigned short* units;
  unsigned long length;
  uint32_t hash;
};
uint32_t PLHashTable_KeyHash(const WordKey& key);
bool PLHashTable_KeyCompare(const WordKey& left, const WordKey& right);

/// Counts how often each word occurs. Used by one thread at a time.
class WordTable {
 public:
  struct Entry {
    WordKey word;  // owned, zero-terminated
    uint64_t count;
  };

  explicit WordTable(IPLKernel* kernel) : m_pKernel(kernel) {}
  ~WordTable();
  WordTable(const WordTable&) = delete;
  WordTable& operator=(const WordTable&) = delete;

  /// Counts one occurrence of a word. Returns false, and counts nothing, if memory is exhausted.
  bool Add(const unsigned short* units, unsigned long length);

  /// Sorts the entries: the most frequent first, and those of one frequency by their units. Nothing is added after it.
  void Sort();
  unsigned long GetSize() const { return m_entries.GetSize(); }
  const Entry& GetAt(unsigned long index) const { return m_entries[index]; }

 private:
  bool AddNew(const WordKey& key);

  IPLKernel* const m_pKernel;
  PLArray<Entry> m_entries;                       // in the order of their first occurrence, until they are sorted
  PLHashTable<WordKey, unsigned long> m_indexes;  // of the entries; the keys point to the entries' units
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_WORDCOUNT_WORDTABLE_H
