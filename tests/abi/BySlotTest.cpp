// SPDX-License-Identifier: Apache-2.0
// Uses the finished library as a module does that cannot be compiled again: it knows entry symbols, slot numbers and
// the layout of plain values. No header of the kernel is included, and the library is opened, not linked.
#include <dlfcn.h>
#include <stdint.h>

#include <gtest/gtest.h>

namespace {

struct Time {
  int64_t nanoseconds;
};
constexpr Time kForever = {INT64_MAX};
constexpr Time kPause = {2000000};

// As PLError: the destructor makes it a class that is returned through memory.
struct Error {
  ~Error() {}
  void* table;
  char name[32];
  int32_t code;
};

template <typename Function>
Function* Slot(void* object, unsigned slot) {
  return reinterpret_cast<Function*>((*static_cast<void***>(object))[slot]);
}
template <typename Result, typename... Parameters>
Result Call(void* object, unsigned slot, Parameters... parameters) {
  return Slot<Result(void*, Parameters...)>(object, slot)(object, parameters...);
}

class BySlot : public testing::Test {
 protected:
  void SetUp() override {
    m_library = dlopen(IPL_KERNEL_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
    ASSERT_NE(m_library, nullptr) << dlerror();
    kernel = Entry<void*()>("IPLModule_IPLKernel_LoadModule")();
    Entry<void(int, const char**)>("IPLModule_IPLKernel_InitializeKernel")(2, m_arguments);
  }
  void TearDown() override { Entry<void(void*)>("IPLModule_IPLKernel_UnloadModule")(kernel); }

  template <typename Function>
  Function* Entry(const char* name) {
    return reinterpret_cast<Function*>(dlsym(m_library, name));
  }
  template <typename T>
  T& Field(int offset) {
    return *reinterpret_cast<T*>(static_cast<char*>(kernel) + offset);
  }

  const char* m_arguments[3] = {"program", "option", nullptr};
  void* m_library = nullptr;
  void* kernel = nullptr;
};

TEST_F(BySlot, ErrorsAndTimesTravelByValue) {
  EXPECT_EQ(Call<const char**>(kernel, 38), m_arguments);
  EXPECT_EQ(Call<void*>(kernel, 3, "IPLKernel", static_cast<const char*>(nullptr)), kernel);
  EXPECT_EQ(Call<Error>(kernel, 9).code, 0);
  void* event = Call<void*>(kernel, 13, true);
  EXPECT_FALSE(Call<bool>(event, 1, kPause));
  EXPECT_STREQ(Call<Error>(kernel, 9).name, "PLError_Timeout");
  Call<void>(event, 0);
  EXPECT_TRUE(Call<bool>(event, 1, kForever));
  Call<void>(event, 2);
  EXPECT_FALSE(Call<bool>(event, 3));
  Call<void>(kernel, 14, event);
  const Time before = Call<Time>(kernel, 20);
  Call<void>(kernel, 8, &kPause);
  EXPECT_GE(Call<Time>(kernel, 20).nanoseconds - before.nanoseconds, kPause.nanoseconds);
  EXPECT_NE(Call<void*>(kernel, 75), nullptr) << "the timer manager is made when it is asked for";
}

void Answer(void* thread, void* data) { *static_cast<void**>(data) = thread; }

TEST_F(BySlot, ThreadsMutexesAndQueues) {
  void* thread = Call<void*>(kernel, 5);
  void* seen = nullptr;
  ASSERT_TRUE(Call<bool>(thread, 0, "worker", &Answer, static_cast<void*>(&seen)));
  EXPECT_TRUE(Call<bool>(thread, 2, kForever));
  EXPECT_EQ(seen, thread);
  Call<void>(kernel, 6, thread);
  void* mutex = Call<void*>(kernel, 11);
  EXPECT_TRUE(Call<bool>(mutex, 4));
  Call<void>(mutex, 1);
  Call<void>(kernel, 12, mutex);
  void* queue = Call<void*>(kernel, 33);
  Call<void>(queue, 5, 7UL, static_cast<void*>(&seen));
  Call<void>(queue, 7, 8UL, static_cast<void*>(nullptr));
  EXPECT_EQ(Call<void*>(Call<void*>(queue, 11, 1UL), 1), &seen);
  for (unsigned long id : {8UL, 7UL}) {
    void* message = Call<void*>(queue, 8, kForever);
    EXPECT_EQ(Call<unsigned long>(message, 0), id);
    Call<void>(queue, 9, message);
  }
  EXPECT_EQ(Call<unsigned long>(queue, 10), 0UL);
  Call<void>(kernel, 34, queue);
}

TEST_F(BySlot, MemoryTextAndNumbers) {
  auto* block = Call<char*>(kernel, 17, 16UL, static_cast<const char*>(nullptr), 0);
  using Print = int(void*, char*, unsigned long, const char*, ...);
  EXPECT_EQ(Slot<Print>(kernel, 58)(kernel, block, 16UL, "%d %.1f %s %lld", 7, 2.5, "text", 1LL << 40), 24);
  block = Call<char*>(kernel, 18, block, 64UL, "file", 1);
  EXPECT_STREQ(block, "7 2.5 text 1099");
  Call<void>(kernel, 19, block, "file", 2);
  char* end = nullptr;
  EXPECT_EQ(Call<long long>(kernel, 61, "-9000000000z", &end, 10), -9000000000LL);
  EXPECT_EQ(*end, 'z');
  EXPECT_EQ(Call<double>(kernel, 62, "0.5", &end), 0.5);
}

#if defined(__arm__)
TEST_F(BySlot, TheKernelObjectsFieldsStandAtTheirPlaces) {
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(Field<Error>(4 + 40 * i).code, 256 + i);
  }
  for (int offset : {244, 248}) {
    EXPECT_TRUE(Call<bool>(Field<void*>(offset), 4)) << "a free mutex at " << offset;
    Call<void>(Field<void*>(offset), 1);
  }
  EXPECT_TRUE(Field<void*>(252) != nullptr && Field<void*>(256) != nullptr && Field<void*>(264) != nullptr);
  EXPECT_EQ(Field<void*>(260), nullptr);
  EXPECT_EQ(Field<int32_t>(268), 2);
  EXPECT_EQ(Field<const char**>(272), m_arguments);
  EXPECT_EQ(Field<bool>(276), false);
  Call<void>(kernel, 10, &Field<Error>(124));
  EXPECT_EQ(Field<Error>(280).code, 259);
}
#endif

}  // namespace
