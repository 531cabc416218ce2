// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_PLHASHTABLE_H
#define IPL_PLHASHTABLE_H

#include <stdint.h>

#include <ipl/PLArray.h>
#include <ipl/PLMem.h>

/// @file
/// A hash table.

/// Hash of pointer keys: of the address, never of what it points to. [any thread] Takes no lock.
template <typename T>
uint32_t PLHashTable_KeyHash(T* const& key) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(key) >> 4);
}
/// Equality of pointer keys: of the addresses. [any thread] Takes no lock.
template <typename T>
bool PLHashTable_KeyCompare(T* const& left, T* const& right) {
  return left == right;
}

/// A hash table of values by key, with chains. It owns copies of the keys and values, not what they point to.
///
/// K is a pointer, or a class for which
///
///     uint32_t PLHashTable_KeyHash(const K& key);
///     bool PLHashTable_KeyCompare(const K& left, const K& right);
///
/// are declared in the class's namespace. V has to be copyable. The table doubles its buckets as soon as they hold more
/// than three entries on average.
///
/// No operation reports a failure. When memory for an entry is exhausted SetAt changes nothing, and when memory for
/// more buckets is exhausted the chains become longer. It is used only while the kernel object exists.
/// [owner] No lock is taken: a table is not shared between threads without its owner's lock.
template <typename K, typename V>
class PLHashTable {
 public:
  /// One entry of a chain.
  struct TableEntry {
    K key;             ///< owned
    V value;           ///< owned
    TableEntry* next;  ///< null at the end of the chain
  };

  /// An empty table with 8 buckets.
  PLHashTable() : m_count(0) { m_buckets.SetSize(kFirstBucketCount); }
  virtual ~PLHashTable() { RemoveAllEntries(); }  // slots 0, 1

  PLHashTable(const PLHashTable&) = delete;
  PLHashTable& operator=(const PLHashTable&) = delete;

  /// Copies the value of key out. Returns false, and leaves value alone, if the key is not there.
  bool Lookup(const K& key, V& value) const {
    if (m_buckets.GetSize() == 0) {
      return false;
    }
    const TableEntry* entry = FindInChain(m_buckets[BucketOf(key)], key);
    if (entry == nullptr) {
      return false;
    }
    value = entry->value;
    return true;
  }

  /// Replaces the value of key, or adds an entry. An entry that is there keeps the key that it has.
  void SetAt(const K& key, const V& value) {
    if (m_buckets.GetSize() == 0) {  // the constructor found no memory
      m_buckets.SetSize(kFirstBucketCount);
      if (m_buckets.GetSize() == 0) {
        return;
      }
    }
    TableEntry*& head = m_buckets[BucketOf(key)];
    TableEntry* entry = FindInChain(head, key);
    if (entry != nullptr) {
      entry->value = value;
      return;
    }
    entry = new (nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr)) TableEntry{key, value, head};
    if (entry == nullptr) {
      return;
    }
    head = entry;
    ++m_count;
    if (m_count > 3 * static_cast<uint64_t>(m_buckets.GetSize())) {
      GrowTable();
    }
  }

  /// Removes the entry of key. Returns false if the key is not there.
  bool RemoveAt(const K& key) {
    if (m_buckets.GetSize() == 0) {
      return false;
    }
    TableEntry** link = &m_buckets[BucketOf(key)];
    while (*link != nullptr) {
      TableEntry* entry = *link;
      if (PLHashTable_KeyCompare(entry->key, key)) {
        *link = entry->next;
        FreeEntry(entry);
        --m_count;
        return true;
      }
      link = &entry->next;
    }
    return false;
  }

  /// Removes every entry; the buckets stay.
  void RemoveAllEntries() {
    for (unsigned long bucket = 0; bucket < m_buckets.GetSize(); ++bucket) {
      TableEntry* entry = m_buckets[bucket];
      m_buckets[bucket] = nullptr;
      while (entry != nullptr) {
        TableEntry* next = entry->next;
        FreeEntry(entry);
        entry = next;
      }
    }
    m_count = 0;
  }

  /// Returns the number of entries.
  unsigned long GetCount() const { return m_count; }

  /// Doubles the number of buckets and distributes the entries again; SetAt calls it. Entries that stay in their bucket
  /// keep their order, entries that move arrive in reverse order.
  void GrowTable() {
    const unsigned long oldCount = m_buckets.GetSize();
    m_buckets.SetSize(2 * oldCount);
    if (m_buckets.GetSize() == oldCount) {
      return;
    }
    for (unsigned long bucket = oldCount; bucket < 2 * oldCount; ++bucket) {
      m_buckets[bucket] = nullptr;
    }
    for (unsigned long bucket = 0; bucket < oldCount; ++bucket) {
      TableEntry** link = &m_buckets[bucket];
      while (*link != nullptr) {
        TableEntry* entry = *link;
        const unsigned long newBucket = BucketOf(entry->key);
        if (newBucket == bucket) {
          link = &entry->next;
        } else {
          *link = entry->next;
          entry->next = m_buckets[newBucket];
          m_buckets[newBucket] = entry;
        }
      }
    }
  }

 private:
  template <typename>
  friend struct PLContractLayout;

  enum : uint32_t { kFirstBucketCount = 8 };

  unsigned long BucketOf(const K& key) const { return PLHashTable_KeyHash(key) % m_buckets.GetSize(); }

  static TableEntry* FindInChain(TableEntry* entry, const K& key) {
    while (entry != nullptr && !PLHashTable_KeyCompare(entry->key, key)) {
      entry = entry->next;
    }
    return entry;
  }

  static void FreeEntry(TableEntry* entry) { PLTypes_ScalarDelete(entry, nullptr, 0); }

  uint32_t m_count;
  PLArray<TableEntry*> m_buckets;  // the heads of the chains, null for an empty one
};

#endif  // IPL_PLHASHTABLE_H
