// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_IPLHOST_H
#define IPL_IPLHOST_H

#include <ipl/IPLKernel.h>
#include <ipl/IPLModule.h>

/// @file
/// The interface of iplhost for modules.

/// Where modules tell the program iplhost that their work is done. It is the module object of the module "IPLHost",
/// which lies beside iplhost: a module acquires it by that name in its load entry and releases it when it is unloaded.
///
///     IPLHost* host = static_cast<IPLHost*>(kernel->AcquireModule("IPLHost"));
///
/// iplhost ends when work was begun and all of it has ended. When no module ever begins work it runs until SIGINT or
/// SIGTERM. In either case it then releases its modules; one that is unloaded in the middle of its work stops, and need
/// not end that work.
///
/// The object belongs to its module and lives until the last acquisition is released. Each operation takes the object's
/// own mutex and none beside it. Tags as in IPLKernel.h. Slots 0 and 1 are the destructor's; the order is fixed.
class IPLHost : public IPLModule {
 public:
  /// Announces work that iplhost has to wait for. Every call is answered by one EndWork. A module that begins its work
  /// in its load entry is certainly waited for; on another thread it may be begun while other work goes on. [any
  /// thread]
  virtual void BeginWork() = 0;  // slot 2
  /// Ends work that was begun. status: 0 for success, else 1 to 125; a smaller number counts as 1, a larger one as 125.
  /// The highest status of all becomes the exit status of iplhost. Without work that was begun only the status is kept.
  /// [any thread]
  virtual void EndWork(int status) = 0;  // slot 3

  // For the host ------------------------------------------------------------------------------------------------------

  /// Waits until work was begun and all of it has ended, or a stop was requested. timeout: as for Event::Wait.
  /// Returns false if it timed out. [any thread] [blocks] Takes no mutex.
  virtual bool WaitUntilDone(IPLKernel::Time timeout) = 0;  // slot 4
  /// Returns the highest status so far, 0 to 125. [any thread]
  virtual int GetStatus() = 0;  // slot 5
  /// Ends WaitUntilDone, now and from now on. [any thread]
  virtual void RequestStop() = 0;  // slot 6
};

#endif  // IPL_IPLHOST_H
