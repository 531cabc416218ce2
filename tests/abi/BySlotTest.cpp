// SPDX-License-Identifier: Apache-2.0
// Uses the finished library as a module does that cannot be compiled again: it knows entry symbols, slot numbers and
// the layout of plain values. No header of the kernel is included, and the library is opened, not linked.
#include <dlfcn.h>
#include <stdint.h>

#include <gtest/gtest.h>

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

template <typename Result, typename... Parameters>
Result Call(void* object, unsigned slot, Parameters... parameters) {
  void* const function = (*static_cast<void***>(object))[slot];
  return reinterpret_cast<Result (*)(void*, Parameters...)>(function)(object, parameters...);
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
