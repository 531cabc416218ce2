// SPDX-License-Identifier: Apache-2.0
// The layout of the header-only types, as the contract wants it on 32-bit ARM.
#include <ipl/IPLKernel.h>
#include <ipl/PLArray.h>
#include <ipl/PLHashTable.h>

#include "foundation/ContractLayout.h"

template <>
struct PLContractLayout<PLArray<void*>> {
  IPL_ASSERT_OFFSET(PLArray<void*>, m_pData, 4);
  IPL_ASSERT_OFFSET(PLArray<void*>, m_size, 8);
  IPL_ASSERT_OFFSET(PLArray<void*>, m_capacity, 12);
  IPL_ASSERT_OFFSET(PLArray<void*>, m_bPlainData, 16);
  IPL_ASSERT_SIZE(PLArray<void*>, 20);
};

using PointerTable = PLHashTable<IPLModule*, void*>;

template <>
struct PLContractLayout<PointerTable> {
  IPL_ASSERT_OFFSET(PointerTable, m_count, 4);
  IPL_ASSERT_OFFSET(PointerTable, m_buckets, 8);
  IPL_ASSERT_SIZE(PointerTable, 28);
  IPL_ASSERT_OFFSET(PointerTable::TableEntry, key, 0);
  IPL_ASSERT_OFFSET(PointerTable::TableEntry, value, 4);
  IPL_ASSERT_OFFSET(PointerTable::TableEntry, next, 8);
  IPL_ASSERT_SIZE(PointerTable::TableEntry, 12);
};

template <>
struct PLContractLayout<IPLKernel::Time> {
  static_assert(sizeof(IPLKernel::Time) == 8 && std::is_trivially_copyable<IPLKernel::Time>::value,
                "a Time travels by value as 8 plain bytes");
};

template <>
struct PLContractLayout<IPLKernel::CalendarTime> {
  IPL_ASSERT_OFFSET(IPLKernel::CalendarTime, second, 0);
  IPL_ASSERT_OFFSET(IPLKernel::CalendarTime, minute, 1);
  IPL_ASSERT_OFFSET(IPLKernel::CalendarTime, hour, 2);
  IPL_ASSERT_OFFSET(IPLKernel::CalendarTime, day, 3);
  IPL_ASSERT_OFFSET(IPLKernel::CalendarTime, month, 4);
  IPL_ASSERT_OFFSET(IPLKernel::CalendarTime, year, 6);
  IPL_ASSERT_SIZE(IPLKernel::CalendarTime, 8);
};
