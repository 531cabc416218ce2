// SPDX-License-Identifier: Apache-2.0
#include <ipl/IPLKernel.h>
#include <ipl/PLString.h>

#include "foundation/ContractLayout.h"
#include "foundation/TrackedMemory.h"
#include "foundation/Utf.h"

template <>
struct PLContractLayout<PLString> {
  IPL_ASSERT_OFFSET(PLString, m_pUTF8, 4);
  IPL_ASSERT_OFFSET(PLString, m_pBuffer, 8);
  IPL_ASSERT_OFFSET(PLString, m_length, 12);
  IPL_ASSERT_OFFSET(PLString, m_capacity, 16);
  IPL_ASSERT_OFFSET(PLString, m_emptyChar, 20);
  IPL_ASSERT_SIZE(PLString, 24);
};

namespace {

using Units = TrackedBytesPtr<unsigned short>;

constexpr uint64_t kMaximalByteCount = UINT32_MAX - 8;
constexpr unsigned long kSpareUnitsKept = 128;

Units AllocateUnits(uint64_t count) {
  if (count > kMaximalByteCount / sizeof(unsigned short)) {
    return nullptr;
  }
  return Units(
      static_cast<unsigned short*>(AllocateTrackedBytes(static_cast<unsigned int>(count * sizeof(unsigned short)))));
}

unsigned long ByteCount(uint64_t units) { return static_cast<unsigned long>(units * sizeof(unsigned short)); }

}  // namespace

PLString::PLString() : m_pUTF8(nullptr), m_pBuffer(nullptr), m_length(0), m_capacity(0), m_emptyChar(0) {}

PLString::PLString(const PLString& other) : PLString() { Append(other); }

PLString& PLString::operator=(const PLString& other) {
  if (this == &other) {
    return *this;
  }
  if (other.m_length < m_capacity) {
    Empty();
    Append(other);
    return *this;
  }
  PLString copy(other);
  if (copy.m_length == other.m_length) {
    std::swap(m_pUTF8, copy.m_pUTF8);
    std::swap(m_pBuffer, copy.m_pBuffer);
    std::swap(m_length, copy.m_length);
    std::swap(m_capacity, copy.m_capacity);
  }
  return *this;
}

PLString::~PLString() {
  FreeTrackedBytes(m_pBuffer);
  FreeTrackedBytes(m_pUTF8);
  m_length = 0;
  m_capacity = 0;
}

void PLString::Append(const PLString& other) { AppendUnits(other.m_pBuffer, other.m_length); }

void PLString::Append(const unsigned short* text) {
  IPLKernel* kernel = IPLKernel::GetKernel();
  AppendUnits(text, kernel != nullptr ? kernel->wcslen(text) : 0);
}

void PLString::AppendUTF8(const char* bytes, unsigned long byteCount) {
  IPLKernel* kernel = IPLKernel::GetKernel();
  const unsigned long count = bytes != nullptr && kernel != nullptr ? byteCount : 0;
  const auto* input = reinterpret_cast<const unsigned char*>(bytes);
  if (count < m_capacity - static_cast<uint64_t>(m_length)) {  // never more units than bytes; room for the zero too
    unsigned short* end = m_pBuffer + m_length;
    end[DecodeUtf8(input, count, end)] = 0;
    m_length += static_cast<uint32_t>(count != 0 ? kernel->wcslen(end) : 0);
    DropUTF8();  // the bytes may have been part of it
    return;
  }
  Units units = AllocateUnits(static_cast<uint64_t>(count) + 1);
  if (units == nullptr) {
    DropUTF8();
    return;
  }
  const unsigned long length = DecodeUtf8(input, count, units.get());
  if (count - length > kSpareUnitsKept) {
    Units exact = AllocateUnits(static_cast<uint64_t>(length) + 1);
    if (exact != nullptr) {
      kernel->memcpy(exact.get(), units.get(), ByteCount(length));
      units = std::move(exact);
    }
  }
  units[length] = 0;
  const unsigned long appended = count != 0 ? kernel->wcslen(units.get()) : 0;
  if (m_pBuffer != nullptr || appended == 0 || appended != count) {
    AppendUnits(units.get(), appended);
    return;
  }
  // The first text, and exactly as long as the buffer that it was decoded into.
  DropUTF8();
  m_pBuffer = units.release();
  m_capacity = static_cast<uint32_t>(count) + 1;
  m_length = static_cast<uint32_t>(count);
}

void PLString::Empty() {
  m_length = 0;
  if (m_pBuffer != nullptr) {
    m_pBuffer[0] = 0;
  }
  DropUTF8();
}

const unsigned short* PLString::GetBuffer() const { return m_pBuffer != nullptr ? m_pBuffer : &m_emptyChar; }

const char* PLString::GetUTF8() {
  if (m_length != 0 && m_pUTF8 == nullptr) {
    m_pUTF8 = CopyUTF16to8(m_pBuffer);
  }
  return m_length != 0 && m_pUTF8 != nullptr ? m_pUTF8 : "";
}

char* PLString::CopyUTF16to8(const unsigned short* text) const {
  IPLKernel* kernel = IPLKernel::GetKernel();
  if (text == nullptr || text[0] == 0 || kernel == nullptr) {
    return nullptr;
  }
  const unsigned long count = kernel->wcslen(text);
  const uint64_t size = MaximalUtf8Size(text, count) + 1;
  if (size > kMaximalByteCount) {
    return nullptr;
  }
  char* bytes = static_cast<char*>(AllocateTrackedBytes(static_cast<unsigned int>(size)));
  if (bytes != nullptr) {
    bytes[EncodeUtf8(text, count, bytes)] = '\0';
  }
  return bytes;
}

unsigned long PLString::_UTF8toU16Char(const unsigned char* bytes, unsigned short* unit1, unsigned short* unit2) const {
  return DecodeUtf8Sequence(bytes, *unit1, *unit2);
}

void PLString::AppendUnits(const unsigned short* units, uint64_t count) {
  DropUTF8();
  if (count == 0) {
    return;
  }
  IPLKernel* kernel = IPLKernel::GetKernel();
  const uint64_t needed = static_cast<uint64_t>(m_length) + 1 + count;
  if (needed <= m_capacity) {
    kernel->memcpy(m_pBuffer + m_length, units, ByteCount(count));
  } else {
    const uint64_t step = 2 * static_cast<uint64_t>(m_capacity);
    const uint64_t capacity = step == 0 ? needed : step * (needed / step + 1);
    Units buffer = AllocateUnits(capacity);
    if (buffer == nullptr) {
      return;
    }
    if (m_length != 0) {
      kernel->memcpy(buffer.get(), m_pBuffer, ByteCount(static_cast<uint64_t>(m_length) + 1));
    }
    // The appended text may lie in the old buffer, which is therefore freed last.
    kernel->memcpy(buffer.get() + m_length, units, ByteCount(count));
    FreeTrackedBytes(m_pBuffer);
    m_pBuffer = buffer.release();
    m_capacity = static_cast<uint32_t>(capacity);
  }
  m_length += static_cast<uint32_t>(count);
  m_pBuffer[m_length] = 0;
}

void PLString::DropUTF8() {
  FreeTrackedBytes(m_pUTF8);
  m_pUTF8 = nullptr;
}
