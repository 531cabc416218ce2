// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "messaging/TimerList.h"
#include "support/KernelFixture.h"

using TimerListTest = KernelFixture;

TEST_F(TimerListTest, KeepsTheOrderOfInsertionAmongEqualTimes) {
  const auto before = [](const TimerRecord* a, const TimerRecord* b) { return a->fireTime < b->fireTime; };
  const int cases[][2] = {{0, 0}, {1, 0}, {1, 1}, {40, 16}, {40, 17}, {100, 0}, {100, 5}, {100, 100}};
  for (const auto& [removed, kept] : cases) {
    PLArray<TimerRecord*> list;
    TimerRecord records[100];
    std::vector<TimerRecord*> model;
    for (int i = 0; i < 100; ++i) {
      records[i].fireTime = (i * 7) % 11;
      EXPECT_TRUE(TimerList::Insert(list, &records[i]));
      model.push_back(&records[i]);
    }
    std::stable_sort(model.begin(), model.end(), before);
    ASSERT_TRUE(std::equal(model.begin(), model.end(), &list[0], &list[0] + list.GetSize()));
    TimerRecord* chain = nullptr;
    TimerRecord** link = &chain;
    for (int i = 0; i < kept; ++i) {
      TimerRecord* record = list[static_cast<unsigned long>(i)];
      record->fireTime = 3 + (i * 5) % 9;
      model.push_back(record);
      *link = record;
      link = &record->next;
    }
    model.erase(model.begin(), model.begin() + removed);
    std::stable_sort(model.begin(), model.end(), before);
    TimerList::Rearm(list, static_cast<unsigned long>(removed), chain, static_cast<unsigned long>(kept));
    EXPECT_TRUE(std::equal(model.begin(), model.end(), &list[0], &list[0] + list.GetSize())) << removed << ' ' << kept;
  }
}
