// SPDX-License-Identifier: Apache-2.0
#include "TextReader/TextFile.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "TextReader/CharsetDecoder.h"
#include "TextReader/Utf8.h"

namespace pipeline {

bool TextFile::Open(const char* name) {
  Close();
  // Not blocking: the open of a named pipe would else wait for a writer, where nothing could end it.
  m_file = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  struct stat status;
  if (m_file < 0 || fstat(m_file, &status) != 0) {
    m_error = errno;
    return false;
  }
  if (S_ISDIR(status.st_mode)) {
    m_error = EISDIR;
    return false;
  }
  if (m_pDecoder != nullptr) {
    m_pDecoder->BeginFile(name);
  }
  return true;
}

void TextFile::Close() {
  if (m_file >= 0) {
    close(m_file);
    m_file = -1;
  }
  if (m_pDecoder != nullptr) {
    m_pDecoder->EndFile();
  }
  m_byteCount = 0;
  m_bAtStart = true;
  m_bAtEnd = false;
  m_filled = 0;
}

TextFile::Result TextFile::Read(PLString& text) {
  while (!m_bAtEnd) {
    const Result result = Fill();
    if (result != Result::Text) {
      return result;
    }
    size_t done = 0;
    const bool taken = TakeText(text, done);
    m_filled -= done;
    memmove(m_buffer, m_buffer + done, m_filled);
    if (!taken) {
      return Result::NoMemory;
    }
    if (done > 0) {
      return Result::Text;
    }
  }
  return Result::End;
}

/// Waits for bytes and adds them to the buffer, or finds the end of the file.
TextFile::Result TextFile::Fill() {
  for (;;) {
    pollfd descriptors[] = {{m_stopDescriptor, POLLIN, 0}, {m_file, POLLIN, 0}};
    if (poll(descriptors, 2, -1) < 0) {
      if (errno == EINTR) {
        continue;
      }
      m_error = errno;
      return Result::Failed;
    }
    if (descriptors[0].revents != 0) {
      return Result::Stopped;
    }
    const ssize_t count = read(m_file, m_buffer + m_filled, sizeof(m_buffer) - m_filled);
    if (count >= 0) {
      m_bAtEnd = count == 0;
      m_filled += static_cast<size_t>(count);
      m_byteCount += static_cast<uint64_t>(count);
      return Result::Text;
    }
    if (errno != EINTR && errno != EAGAIN) {
      m_error = errno;
      return Result::Failed;
    }
  }
}

/// done: how many bytes of the buffer are in the text now. Returns false if memory is exhausted.
bool TextFile::TakeText(PLString& text, size_t& done) {
  if (m_pDecoder == nullptr) {
    return TakeUtf8(text, done);
  }
  return m_pDecoder->Decode(m_buffer, m_filled, m_bAtEnd, m_filled == sizeof(m_buffer), text, done);
}

bool TextFile::TakeUtf8(PLString& text, size_t& done) {
  done = MakeWellFormed(m_buffer, m_filled, m_bAtEnd);
  if (done == 0) {
    return true;
  }
  static const char kByteOrderMark[] = {'\xEF', '\xBB', '\xBF'};
  const bool hasMark =
      m_bAtStart && done >= sizeof(kByteOrderMark) && memcmp(m_buffer, kByteOrderMark, sizeof(kByteOrderMark)) == 0;
  const size_t skipped = hasMark ? sizeof(kByteOrderMark) : 0;
  m_bAtStart = false;

  const unsigned long length = text.GetLength();
  text.AppendUTF8(m_buffer + skipped, static_cast<unsigned long>(done - skipped));
  return done == skipped || text.GetLength() > length;
}

}  // namespace pipeline
