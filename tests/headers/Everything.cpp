// SPDX-License-Identifier: Apache-2.0
// A module that uses the public headers, in the oldest C++ that they promise.
#include <ipl/IPLKernel.h>
#include <ipl/PLHashTable.h>
#include <ipl/PLString.h>

IPL_DECLARE_MODULE(Everything);

namespace everything {

struct Key {
  int number;
};
inline uint32_t PLHashTable_KeyHash(const Key& key) { return static_cast<uint32_t>(key.number); }
inline bool PLHashTable_KeyCompare(const Key& left, const Key& right) { return left.number == right.number; }

class Module : public IPLModule {
 public:
  explicit Module(IPLKernel* kernel) : m_kernel(kernel), m_pQueue(kernel->CreateMessageQueue()) {}
  ~Module() override { m_kernel->DestroyMessageQueue(m_pQueue); }

  bool Work() {
    m_names.AppendUTF8("text", 4);
    PLString copy(m_names);
    copy = m_names;
    copy.Append(copy.GetBuffer());
    m_numbers.Append(copy.GetUTF8()[0]);
    m_numbers.RemoveAt(m_numbers.GetSize() - 1);
    m_byPointer.SetAt(this, 1);
    m_byKey.SetAt(Key{1}, copy.GetLength());
    unsigned long length = 0;
    m_kernel->SetLastError(PLError(1000, "Everything"));
    return m_kernel->GetKernelTime() > IPLKernel::Time::Milliseconds(1) &&
           m_kernel->GetLastError() != PLError_Timeout && m_byKey.Lookup(Key{1}, length) && m_byPointer.RemoveAt(this);
  }

 private:
  IPLKernel* m_kernel;
  IPLKernel::MessageQueue* m_pQueue;  // owned
  PLString m_names;
  PLArray<int> m_numbers;
  PLHashTable<Module*, int> m_byPointer;
  PLHashTable<Key, unsigned long> m_byKey;
};

}  // namespace everything

void IPLModule_PLModule_PutKernel(IPLKernel*) {}

IPLModule* IPLModule_Everything_ModuleLoad(void) {
  everything::Module* module = new (__FILE__, __LINE__, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr))
      everything::Module(IPLKernel::GetKernel());
  return module != nullptr && module->Work() ? module : nullptr;
}

void IPLModule_Everything_ModuleUnload(IPLModule* module) { PLTypes_ScalarDelete(module, __FILE__, __LINE__); }
