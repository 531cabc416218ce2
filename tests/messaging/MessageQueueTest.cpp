// SPDX-License-Identifier: Apache-2.0
#include "support/AllocControl.h"
#include "support/TestThread.h"

using Message = IPLKernel::Message;
using Queue = IPLKernel::MessageQueue;

class MessageQueueTest : public ThreadFixture {
 protected:
  ~MessageQueueTest() override { kernel->DestroyMessageQueue(queue); }
  void Post(const std::string& ids) {
    for (const char id : ids) {
      queue->Post(static_cast<unsigned long>(id), nullptr);
    }
  }
  /// Receives and releases all messages and returns their identifiers. The empty queue must then time out: one whose
  /// event is still set gives null without an error.
  std::string Drain() {
    std::string ids;
    while (Message* message = queue->Receive(0)) {
      ids += static_cast<char>(message->GetID());
      queue->ReleaseMessage(message);
    }
    EXPECT_EQ(Outcome(false), kTimeout) << "after " << ids;
    return ids;
  }

  Queue* queue = kernel->CreateMessageQueue();
};

TEST_F(MessageQueueTest, KeepsTheOrderAndSendersWaitForTheRelease) {
  Post("12");
  queue->PostFront('3', this);
  int reply = 0;
  Semaphore returned;
  TestThread first([&] {
    queue->SendFront('f', &reply);
    EXPECT_EQ(reply, 42);
    returned.Give();
  });
  first.AwaitBlocked();
  TestThread last([&] { queue->Send('l', nullptr); });
  last.AwaitBlocked();
  Message* message = queue->Receive(kForever);
  EXPECT_EQ(message->GetID(), static_cast<unsigned long>('f'));
  EXPECT_FALSE(returned.Take(30));
  *static_cast<int*>(message->GetData()) = 42;
  queue->ReleaseMessage(message);
  returned.Take();
  EXPECT_EQ(Drain(), "312l");
}

TEST_F(MessageQueueTest, ASenderIsNotCancelledBeforeItsMessageIsReleased) {
  bool returned = false;
  {
    TestThread sender([&] {
      pthread_cancel(pthread_self());
      queue->Send('c', nullptr);
      returned = true;
      pthread_testcancel();
    });
    Message* message = queue->Receive(kForever);
    sender.AwaitBlocked();  // one that was cancelled would never be
    queue->ReleaseMessage(message);
  }
  EXPECT_TRUE(returned);
}

TEST_F(MessageQueueTest, ListOperations) {
  Queue* other = kernel->CreateMessageQueue();
  other->Post('x', nullptr);
  other->Post('y', nullptr);
  queue->Lock();
  TestThread poster([&] { Post("p"); });
  poster.AwaitBlocked();                  // the lock keeps it out
  Post("abc");                            // and is recursive
  queue->InsertAt(1, other->Receive(0));  // a x b c
  Message* b = queue->GetAt(2);
  queue->SetAt(2, other->Receive(0));  // a x y c
  queue->Append(b);
  Message* a = queue->GetAt(0);
  queue->RemoveAt(0);
  queue->InsertAt(4, a);
  EXPECT_EQ(queue->GetLength(), 5U);
  queue->Unlock();
  poster->WaitUntilFinished(kForever);
  EXPECT_EQ(Drain(), "xycbap");
  kernel->DestroyMessageQueue(other);
  kernel->DestroyMessageQueue(nullptr);
}

TEST_F(MessageQueueTest, EventIsSetExactlyWhileNotEmpty) {
  Message* message = nullptr;
  const Function fillings[] = {[&] { Post("m"); }, [&] { queue->PostFront('m', nullptr); },
                               [&] { queue->InsertAt(0, message); }, [&] { queue->Append(message); }};
  const Function emptyings[] = {[&] { EXPECT_EQ(queue->Receive(0), message); }, [&] { queue->RemoveAt(0); },
                                [&] { queue->RemoveAll(); }};
  for (int round = 0; round < 12; ++round) {
    EXPECT_EQ(Drain(), "");
    if (round < 6) {
      queue->ReleaseMessage(message);
    }
    fillings[round / 3]();
    ASSERT_EQ(queue->GetLength(), 1U);
    message = queue->GetAt(0);
    emptyings[round % 3]();
    EXPECT_EQ(queue->GetLength(), 0U);
  }
  EXPECT_EQ(Drain(), "");
  Post("n");
  queue->Append(message);
  queue->RemoveAt(1);
  queue->ReleaseMessage(message);
  EXPECT_EQ(Drain(), "n") << "it was not empty";
}

TEST_F(MessageQueueTest, RemovedMessagesBelongToTheirRemover) {
  AllocControl memory(kernel);
  Post("ab");
  Message* messages[] = {queue->GetAt(0), queue->GetAt(1)};
  queue->RemoveAll();
  EXPECT_EQ(Drain(), "");
  EXPECT_EQ(memory.Held(), 2);
  queue->ReleaseMessage(messages[0]);
  queue->ReleaseMessage(messages[1]);
  EXPECT_EQ(memory.Held(), 0);
}

static IPLKernel::Event* s_event = nullptr;
static IPLKernel::Event* CreateEvent(IPLKernel*, bool) { return s_event; }
static std::string s_calls;

TEST_F(MessageQueueTest, WhoeverStandsInFrontOfItsEventSeesEachCall) {
  s_calls.clear();
  s_event = kernel->CreateEvent(true);
  KernelTable table(kernel);
  table.Replace(13, &CreateEvent);
  kernel->DestroyMessageQueue(queue);
  queue = kernel->CreateMessageQueue();
  {
    static ObjectTable<IPLKernel::Event, 6>* event = nullptr;
    ObjectTable<IPLKernel::Event, 6> watched(s_event);
    event = &watched;
    typedef void Operation(IPLKernel::Event*);
    watched.Replace(
        0, +[](IPLKernel::Event* self) { s_calls += 's', event->Original<Operation>(0)(self); });
    watched.Replace(
        2, +[](IPLKernel::Event* self) { s_calls += 'c', event->Original<Operation>(2)(self); });
    Post("ab");
    EXPECT_EQ(Drain() + s_calls, "absc");
  }
  s_event = nullptr;
  EXPECT_EQ(kernel->CreateMessageQueue(), nullptr);
}

TEST_F(MessageQueueTest, MemoryExhausted) {
  AllocControl memory(kernel);
  const auto expectFailures = [&](const Function& operation, int allocations) {
    const long held = memory.Held();
    for (int allocation = 0; allocation < allocations; ++allocation) {
      const long failures = memory.Failures();
      memory.FailAfter(allocation, 1);
      operation();
      EXPECT_EQ(memory.Failures(), failures + 1) << allocation;
      EXPECT_EQ(memory.Held(), held) << allocation;
    }
    memory.FailAfter(memory.kNever);
  };
  // The object, its list, its mutex and its event.
  expectFailures([&] { EXPECT_EQ(kernel->CreateMessageQueue(), nullptr); }, 4);
  Post("12345678");  // the list has no room for more
  expectFailures([&] { Post("P"); }, 2);
  expectFailures([&] { queue->PostFront('P', nullptr); }, 2);
  expectFailures([&] { queue->Send('S', nullptr); }, 3);
  expectFailures([&] { queue->SendFront('S', nullptr); }, 3);
  Post("9");
  EXPECT_EQ(Drain(), "123456789");
}
