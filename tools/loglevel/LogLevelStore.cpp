// SPDX-License-Identifier: Apache-2.0
#include "LogLevelStore.h"

#include <cerrno>
#include <memory>
#include <string>
#include <system_error>

#include <sys/shm.h>

namespace {

struct Detach {
  void operator()(LogLevelSegment* words) const { ::shmdt(words); }
};

/// id: of the segment, negative if the system refused it.
std::unique_ptr<LogLevelSegment, Detach> Attach(int id, int flags) {
  void* address = id < 0 ? nullptr : ::shmat(id, nullptr, flags);
  if (id < 0 || address == reinterpret_cast<void*>(-1)) {  // NOLINT(performance-no-int-to-ptr)
    throw std::system_error(errno, std::generic_category(),
                            "cannot use the shared memory with key " + std::to_string(LogLevelSegment::kKey));
  }
  return std::unique_ptr<LogLevelSegment, Detach>(static_cast<LogLevelSegment*>(address));
}

}  // namespace

std::optional<LogLevelSegment> ReadLogLevel() {
  const int id = ::shmget(LogLevelSegment::kKey, sizeof(LogLevelSegment), 0);
  return id < 0 && errno == ENOENT ? std::nullopt : std::optional(*Attach(id, SHM_RDONLY));
}

void WriteLogLevel(const LogLevelSegment& words) {
  *Attach(::shmget(LogLevelSegment::kKey, sizeof(LogLevelSegment), IPC_CREAT | LogLevelSegment::kPermissions), 0) =
      words;
}
