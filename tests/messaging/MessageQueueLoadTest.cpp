// SPDX-License-Identifier: Apache-2.0

#include "support/TestThread.h"

class MessageQueueLoadTest : public ThreadFixture {
 protected:
  /// Eight producers put a message for each element of their rows of counters, which the consumers count up.
  void Run(size_t consumers, size_t each, bool sends) {
    constexpr unsigned long kProducers = 8;
    IPLKernel::MessageQueue* queue = kernel->CreateMessageQueue();
    std::vector<std::vector<int>> counters(kProducers, std::vector<int>(each));
    std::atomic<int> waiting{0};  // bounds the list; relaxed, so that it orders nothing that the queue does not order
    const auto produce = [&](unsigned long producer) {
      for (int& counter : counters[producer]) {
        if (sends) {
          producer % 2 == 0 ? queue->Send(producer, &counter) : queue->SendFront(producer, &counter);
          EXPECT_EQ(counter, 1) << "the reply";
          continue;
        }
        while (waiting.load(std::memory_order_relaxed) > 300) {
          sched_yield();
        }
        waiting.fetch_add(1, std::memory_order_relaxed);
        queue->Post(producer, &counter);
      }
    };
    const auto consume = [&] {
      Outcome(true);
      std::vector<int*> last(kProducers);
      for (unsigned long producer = 0; producer != kProducers;) {
        IPLKernel::Message* message = queue->Receive(kForever);
        EXPECT_EQ(Outcome(true), kDone) << "where another consumer took the message, nothing is stored";
        if (message == nullptr) {
          continue;
        }
        producer = message->GetID();
        if (producer != kProducers) {
          auto* counter = static_cast<int*>(message->GetData());
          EXPECT_LT(last[producer], counter) << "overtaken";
          last[producer] = counter;
          ++*counter;
          waiting.fetch_sub(1, std::memory_order_relaxed);
        }
        queue->ReleaseMessage(message);
      }
    };
    std::list<TestThread> receivers;
    std::list<TestThread> senders;
    for (size_t i = 0; i < consumers; ++i) {
      receivers.emplace_back(consume);
    }
    for (unsigned long i = 0; i < kProducers; ++i) {
      senders.emplace_back([&, i] { produce(i); });
    }
    senders.clear();
    for (size_t i = 0; i < consumers; ++i) {
      queue->Post(kProducers, nullptr);  // stops one
    }
    receivers.clear();
    kernel->DestroyMessageQueue(queue);
    EXPECT_EQ(counters, std::vector<std::vector<int>>(kProducers, std::vector<int>(each, 1)));
  }
};

TEST_F(MessageQueueLoadTest, PostLosesDoublesAndReordersNothing) { Run(8, 20000, false); }
TEST_F(MessageQueueLoadTest, SendBringsEachReplyHome) { Run(3, 10000, true); }
