// SPDX-License-Identifier: Apache-2.0
#include <ipl/PLHashTable.h>

#include "support/AllocControl.h"
#include "support/KernelFixture.h"

namespace probe {

/// A key whose comparisons are written down: the search for an absent key shows a whole chain.
struct Key {
  int number;
};
std::vector<int> g_compared;

uint32_t PLHashTable_KeyHash(const Key& key) { return static_cast<uint32_t>(key.number); }
bool PLHashTable_KeyCompare(const Key& left, const Key& right) {
  g_compared.push_back(left.number);
  return left.number == right.number;
}

}  // namespace probe

using probe::Key;
using Chain = std::vector<int>;

class PLHashTableTest : public KernelFixture {
 protected:
  using Table = PLHashTable<Key, std::string>;

  static Chain ChainOf(const Table& table, int bucket) {
    std::string value;
    probe::g_compared.clear();
    EXPECT_FALSE(table.Lookup({bucket + 4096}, value));
    return probe::g_compared;
  }
  static void Add(Table& table, int first, int last) {
    for (int i = first; i <= last; ++i) {
      table.SetAt({i}, std::to_string(i));
    }
  }
  static void ExpectAll(const Table& table, int count) {
    EXPECT_EQ(table.GetCount(), static_cast<unsigned long>(count));
    for (int i = 0; i < count; ++i) {
      std::string value;
      EXPECT_TRUE(table.Lookup({i}, value));
      EXPECT_EQ(value, std::to_string(i));
    }
  }
};

TEST_F(PLHashTableTest, The25thAndThe49thEntryDoubleTheBuckets) {
  Table table;
  Add(table, 0, 23);
  EXPECT_EQ(ChainOf(table, 0), (Chain{16, 8, 0})) << "8 buckets, the newest entry first";
  Add(table, 24, 24);
  EXPECT_EQ(ChainOf(table, 0), (Chain{16, 0})) << "16 buckets; what stays keeps its order";
  EXPECT_EQ(ChainOf(table, 8), (Chain{8, 24})) << "what moves is turned round";
  Add(table, 25, 47);
  EXPECT_EQ(ChainOf(table, 0), (Chain{32, 16, 0}));
  Add(table, 48, 48);
  EXPECT_EQ(ChainOf(table, 16), (Chain{16, 48})) << "32 buckets";
  ExpectAll(table, 49);
  table.RemoveAllEntries();
  Add(table, 0, 16);
  EXPECT_EQ(ChainOf(table, 0), Chain{0}) << "the buckets stay";
}

TEST_F(PLHashTableTest, RemovesEntriesAtEveryPlaceOfAChain) {
  AllocControl memory(kernel);
  {
    Table table;
    for (int number : {8, 16, 24, 32, 40, 24}) {
      table.SetAt({number}, "a value that is too long to lie in the string itself");
    }
    const std::pair<int, Chain> kRemovals[] = {
        {40, {32, 24, 16, 8}}, {24, {32, 16, 8}}, {8, {32, 16}}, {16, {32}}, {32, {}}};
    for (const auto& removal : kRemovals) {
      EXPECT_TRUE(table.RemoveAt({removal.first}));
      EXPECT_FALSE(table.RemoveAt({removal.first}));
      EXPECT_EQ(ChainOf(table, 0), removal.second);
      EXPECT_EQ(table.GetCount(), removal.second.size());
    }
    EXPECT_EQ(memory.Held(), 1) << "the buckets";
    Add(table, 0, 30);
  }
  EXPECT_EQ(memory.Held(), 0);
}

TEST_F(PLHashTableTest, PointerKeysAreTheirAddresses) {
  const char texts[][5] = {"same", "same"};
  PLHashTable<const char*, int> table;
  table.SetAt(texts[0], 0);
  table.SetAt(texts[1], 1);
  int value = -1;
  EXPECT_TRUE(table.Lookup(texts[0], value) && value == 0);
  EXPECT_EQ(PLHashTable_KeyHash(reinterpret_cast<char*>(0x12345678)), 0x1234567U);
}

TEST_F(PLHashTableTest, WithoutMemoryItStaysConsistent) {
  AllocControl memory(kernel);
  memory.FailAfter(0);
  Table table;
  for (long successes : {0, 1}) {  // the second lets it have its buckets, but no entry
    memory.FailAfter(successes);
    Add(table, 0, 0);
    EXPECT_FALSE(table.RemoveAt({0}));
    EXPECT_EQ(ChainOf(table, 0), Chain{});
    ExpectAll(table, 0);
  }
  memory.FailAfter(24);
  Add(table, 0, 24);
  table.SetAt({3}, "replaced");
  table.SetAt({3}, "3");
  ExpectAll(table, 24);
  memory.FailAfter(1);  // the entry, but no new buckets
  Add(table, 24, 24);
  ExpectAll(table, 25);
  EXPECT_EQ(ChainOf(table, 0), (Chain{24, 16, 8, 0}));
  memory.FailAfter(memory.kNever);
  Add(table, 25, 25);
  ExpectAll(table, 26);
  EXPECT_EQ(ChainOf(table, 8), (Chain{8, 24}));
}
