// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_IPLKERNEL_H
#define IPL_IPLKERNEL_H

#include <stdint.h>

#include <ipl/IPLModule.h>
#include <ipl/PLError.h>
#include <ipl/PLExport.h>
#include <ipl/PLThreadAnnotations.h>

class PLString;

/// @file
/// The kernel's interface and the values in it. The functions of this file take no lock.

/// The kernel's interface: a fixed table of virtual operations through which a module reaches every service.
///
/// THE ORDER OF THE VIRTUAL OPERATIONS IS THE CONTRACT WITH MODULES THAT CANNOT BE COMPILED AGAIN. Nothing is inserted,
/// removed, reordered or given another signature, here or in a nested class. The number of each operation's slot in the
/// table stands behind it; slots 0 and 1 of this class are the destructor's.
///
/// Each operation has tags, defined in docs/abi.md: "any thread", "owner", "blocks", "running". It takes no lock of the
/// kernel unless it names one. No exception leaves an operation. It stores an error only where its comment says so, as
/// the calling thread's last error (GetLastError); success stores nothing. unsigned long is 32 bits wide on the device.
class IPLKernel : public IPLModule {
 public:
  /// A count of nanoseconds, signed: a duration, an instant of the kernel's clock, or an instant counted from
  /// 1970-01-01 00:00:00 GMT or local time. The largest value means for ever. Trivially copyable, 8 bytes.
  /// [owner] No lock is taken.
  class Time {
   public:
    /// 0 nanoseconds.
    constexpr Time() : m_nanoseconds(0) {}
    /// A count of nanoseconds.
    constexpr Time(int64_t nanoseconds) : m_nanoseconds(nanoseconds) {}  // NOLINT: a count is a Time
    /// The largest value: for ever.
    static constexpr Time Forever() { return Time(INT64_MAX); }
    /// A count of milliseconds; one that does not fit gives the value at that end of the range.
    static constexpr Time Milliseconds(int64_t count) {
      return Time(count > INT64_MAX / 1000000 ? INT64_MAX : count < INT64_MIN / 1000000 ? INT64_MIN : count * 1000000);
    }
    /// Returns the count.
    constexpr int64_t GetNanoseconds() const { return m_nanoseconds; }

   private:
    int64_t m_nanoseconds;
  };

  /// A time broken into calendar fields. No time zone belongs to it.
  struct CalendarTime {
    uint8_t second;  ///< 0 to 60
    uint8_t minute;  ///< 0 to 59
    uint8_t hour;    ///< 0 to 23
    uint8_t day;     ///< 1 to 31
    uint8_t month;   ///< 0 to 11, January is 0
    uint16_t year;   ///< the full year
  };

  /// Something that can be locked. All locks of the kernel are recursive: the thread that holds one may take it again
  /// and gives it back as many times.
  class PL_CAPABILITY("mutex") Lockable {
   public:
    /// Returns when the calling thread holds the lock. [any thread] [blocks] Takes this lock.
    virtual void Lock() PL_ACQUIRE() = 0;  // slot 0
    /// Gives the lock back once. [any thread] that holds it.
    virtual void Unlock() PL_RELEASE() = 0;  // slot 1
    virtual ~Lockable() {}                   // slots 2, 3
  };

  /// A recursive mutex. Made by CreateMutex, given back with DestroyMutex when no thread holds it or waits for it.
  class Mutex : public Lockable {
   public:
    /// Takes the mutex if that needs no waiting. Returns whether the calling thread now holds it. [any thread] Takes
    /// this lock.
    virtual bool TryLock() PL_TRY_ACQUIRE(true) = 0;  // slot 4
  };

  /// A flag that threads wait for. Made by CreateEvent, given back with DestroyEvent when no thread uses it.
  /// Each operation takes only the event's own mutex.
  class Event {
   public:
    /// Sets the event and wakes the threads that wait for it: all of them when it was made with manual reset, else
    /// one. Setting an event that is set does nothing. The caller's last use of the event may be this call, even if
    /// the thread that it wakes destroys the event at once. [any thread]
    virtual void Set() = 0;  // slot 0
    /// Waits until the event is set. With automatic reset, the wait that returns true clears it again.
    /// timeout: relative, nanoseconds. 0 polls; Time::Forever() waits without limit. The end of a limited wait is an
    /// instant of the real-time clock, so setting that clock moves it. The end is computed without a sign: a negative
    /// time-out that reaches back beyond the current second waits practically without limit, any other one polls. An
    /// end beyond the clock's range is the latest instant of the clock.
    /// Returns true if the event was set. False: timed out, PLError_Timeout is stored. [any thread] [blocks]
    virtual bool Wait(Time timeout) = 0;  // slot 1
    /// Clears the event. [any thread]
    virtual void Clear() = 0;  // slot 2
    /// Returns whether the event is set; does not clear it. [any thread]
    virtual bool IsSet() = 0;  // slot 3
    virtual ~Event() {}        // slots 4, 5
  };

  /// A thread. Made by CreateThread; given back with DestroyThread after its run has ended, or handed over with Detach.
  /// Each operation takes the lock that all thread objects share; none is held while a procedure runs.
  class Thread {
   public:
    /// What a thread runs: with its object, and the pointer that Run was given.
    typedef void (*ThreadProc)(Thread* thread, void* userData);

    /// Starts procedure(thread, userData) on a new thread. The object can be run again when a run has ended.
    /// name: copied, at most its first 23 bytes; the system shows 15 of them; null counts as empty.
    /// procedure: not null.
    /// Returns true if the thread was started. False: m_ThreadAlreadyRunning is stored if the object is running (the
    /// run goes on), else m_ThreadCreationFailure. [any thread] [running]
    virtual bool Run(const char* name, ThreadProc procedure, void* userData) = 0;  // slot 0
    /// Hands the object over to itself: when the run ends, the thread calls cleanup(thread, userData) and destroys the
    /// object. If no run is going on both happen before Detach returns, on the caller's thread. The libraries that
    /// hold the procedure and the cleanup stay loaded until the thread has ended: Detach opens them once more, so call
    /// it while their code may run, at the latest in a module's unload entry, not in destructors that follow it.
    /// cleanup: may be null. It is not called if the kernel is shut down before the procedure has returned: who wants
    /// to shut down behind a detached thread is told by the cleanup, not by the procedure. Returns false, and does
    /// nothing, if the object was detached before. [any thread]
    virtual bool Detach(ThreadProc cleanup) = 0;  // slot 1
    /// Waits until the run has ended; true at once if the object never ran. When it returns true the thread has left
    /// the procedure and the object, which may be destroyed.
    /// What the system runs behind that, destructors of thread-specific data, is not waited for: a module deletes its
    /// keys before it is unloaded.
    /// timeout: as for Event::Wait. A wait for a running thread takes at least 10 milliseconds.
    /// False: PLError_Timeout is stored, or m_ThreadCantWaitOnSelf if the thread waits for itself. After a run
    /// that the system refused, when an earlier one was not, false at once and without an error. [any thread] [blocks]
    virtual bool WaitUntilFinished(Time timeout) = 0;  // slot 2
    /// Offers the processor to another thread; concerns the calling thread. [any thread]
    virtual void YieldCPU() = 0;  // slot 3
    /// priority: 0 (most urgent) to 255; 128 at first. On a running thread it is applied as a round-robin priority; on
    /// an idle one it is only recorded, and a new run starts with the system's default scheduling.
    /// False: the system refused, m_ThreadSetPriority is stored and the old value stays. [any thread]
    virtual bool SetPriority(unsigned char priority) = 0;  // slot 4
    /// Sets the stack size of the next run, in bytes; the system's default is the most that a run gets, 1 MiB what it
    /// gets if this was never called. Returns false, and does nothing, while a run goes on. [any thread]
    virtual bool SetStackSize(unsigned long bytes) = 0;  // slot 5
    /// Returns the priority that was set last. [any thread]
    virtual unsigned char GetPriority() = 0;  // slot 6
    /// Returns the stack size of the last run in bytes, 0 before the first. [any thread]
    virtual unsigned long GetStackSize() = 0;  // slot 7
    /// Copies the name of the current run, empty when there is none: at most size - 1 bytes and a terminating zero.
    /// Does nothing if buffer is null or size is 0. [any thread]
    virtual void GetName(char* buffer, unsigned long size) = 0;  // slot 8
    virtual ~Thread() {}                                         // slots 9, 10
  };

  /// A message of a queue. It belongs to the queue until it is taken out, then to the receiver, who gives it back with
  /// MessageQueue::ReleaseMessage. [owner] No lock is taken.
  class Message {
   public:
    /// Returns the identifier that the sender chose.
    virtual unsigned long GetID() = 0;  // slot 0
    /// Returns the sender's pointer. The queue never uses what it points to.
    virtual void* GetData() = 0;  // slot 1
    virtual ~Message() {}         // slots 2, 3
  };

  /// A queue of messages. Made by CreateMessageQueue; given back with DestroyMessageQueue when it is empty and no
  /// thread uses it. Any thread may post and send.
  ///
  /// Lock and Unlock (slots 0 and 1) take and release the queue's lock, for the list operations of slots 10 to 16,
  /// which take no lock themselves. Post and PostFront may be called with the lock held. Memory exhausted: Send, Post
  /// and the like queue nothing and return at once, and the caller still owns what data points to.
  class MessageQueue : public Lockable {
   public:
    /// Puts a message at the back and waits until its receiver has released it. What the receiver wrote before that
    /// is visible afterwards. Must not be called with the queue's lock held, nor by the thread that receives from
    /// this queue. [any thread] [blocks] Takes the queue's lock, and waits without it.
    virtual void Send(unsigned long id, void* data) = 0;  // slot 4
    /// Puts a message at the back. [any thread] Takes the queue's lock.
    virtual void Post(unsigned long id, void* data) = 0;  // slot 5
    /// As Send, at the front: it is received next. [any thread] [blocks] Takes the queue's lock, and waits without it.
    virtual void SendFront(unsigned long id, void* data) = 0;  // slot 6
    /// As Post, at the front: it is received next. [any thread] Takes the queue's lock.
    virtual void PostFront(unsigned long id, void* data) = 0;  // slot 7
    /// Takes out the first message; waits for one if there is none. timeout: as for Event::Wait.
    /// Returns the message, which the caller releases. Null: timed out, PLError_Timeout is stored; or another thread
    /// took the message first, which stores nothing. [any thread] [blocks] Takes the queue's lock.
    virtual Message* Receive(Time timeout) = 0;  // slot 8
    /// Gives a message back that was taken out of a queue: a posted one is freed, the sender of a sent one goes on.
    /// Once for each message; the caller must not use the message afterwards. [any thread] Takes no queue's lock.
    virtual void ReleaseMessage(Message* message) = 0;  // slot 9
    /// Returns the number of messages. [owner] Its caller holds the queue's lock.
    virtual unsigned long GetLength() = 0;  // slot 10
    /// Returns the message at index, which stays in the queue. index < GetLength().
    /// [owner] Its caller holds the queue's lock.
    virtual Message* GetAt(unsigned long index) = 0;  // slot 11
    /// Replaces the entry at index; the old message is not released. index < GetLength(). message: from any queue.
    /// [owner] Its caller holds the queue's lock.
    virtual void SetAt(unsigned long index, Message* message) = 0;  // slot 12
    /// Takes the message at index out without releasing it. index < GetLength().
    /// [owner] Its caller holds the queue's lock.
    virtual void RemoveAt(unsigned long index) = 0;  // slot 13
    /// Puts a message before the one at index. index <= GetLength(). message: from any queue.
    /// [owner] Its caller holds the queue's lock.
    virtual void InsertAt(unsigned long index, Message* message) = 0;  // slot 14
    /// Puts a message at the back. message: from any queue. [owner] Its caller holds the queue's lock.
    virtual void Append(Message* message) = 0;  // slot 15
    /// Takes all messages out without releasing them. [owner] Its caller holds the queue's lock.
    virtual void RemoveAll() = 0;  // slot 16
  };

  /// What the message of a timer points to. It belongs to the receiver of the message. [owner] No lock is taken but the
  /// one that an operation names.
  class TimerMessageData {
   public:
    /// Gives the object back to the kernel. The receiver calls it once, when it is done with the message; then nothing
    /// that the operations below returned may be used. May be called while the kernel shuts down and afterwards. Takes
    /// the lock of the pool of timer messages, for a moment.
    virtual void ReleaseTimerData() = 0;  // slot 0
    /// Returns the kernel's time when the timer fired. The reference is the object's.
    virtual const Time& GetFireTimeKernel() = 0;  // slot 1
    /// Returns the same instant in GMT.
    virtual const Time& GetFireTimeGMT() = 0;  // slot 2
    /// Returns what SetTimer or SetTimerGMT returned.
    virtual unsigned long GetTimerID() = 0;  // slot 3
    virtual ~TimerMessageData() {}           // slots 4, 5
  };

  /// The call stack of the thread that made it, at that time; the innermost frame comes first.
  class Stacktrace {
   public:
    /// Returns the number of frames. [any thread]
    virtual unsigned long GetDepth() const = 0;  // slot 0
    /// Returns the return address of a frame; 0 if index is not below GetDepth(). [any thread]
    virtual unsigned long GetAddress(unsigned long index) const = 0;  // slot 1
    /// Returns the text of a frame, "FILE(SYMBOL+0xOFFSET) [0xADDRESS]" or "[0xADDRESS]", cut after 127 characters; ""
    /// if index is not below GetDepth() or memory is exhausted. The object owns the text and overwrites it with the
    /// next call. [owner]
    virtual const char* GetFrameString(unsigned long index) const = 0;  // slot 2
    virtual ~Stacktrace() {}                                            // slots 3, 4
  };

  /// Returns the kernel object of this process, null before it was created and after it was destroyed. [any thread]
  IPL_API static IPLKernel* GetKernel();

  /// @name Modules
  /// @{

  /// Acquires the module name from the library that the module map gives for it, or else from the executable's
  /// directory + "/lib" + name + ".so". Otherwise as the next operation.
  /// [any thread] [blocks] [running] Holds the module mutex, also while the module's entries run.
  virtual IPLModule* AcquireModule(const char* name) = 0;  // slot 2
  /// Acquires the module name. path: its library (one without a '/' lies in the current directory), or null for the
  /// default. Loads the module if it is not loaded by this name and path, else counts one reference more. The name
  /// "IPLKernel" gives the kernel object itself.
  /// Returns the module object, which belongs to the module; give it back with ReleaseModule. Null: the library cannot
  /// be opened or lacks an entry symbol, or a name or a path without '/' is longer than 47 bytes (each with one line on
  /// standard error); the module refused; it is just being loaded or unloaded by this thread; memory is exhausted; the
  /// name is null or empty. No error is stored.
  /// [any thread] [blocks] [running] Holds the module mutex, also while the module's entries run.
  virtual IPLModule* AcquireModule(const char* name, const char* path) = 0;  // slot 3
  /// Ends one acquisition; the last one unloads the module. Does nothing for null, for the kernel object, for an
  /// object that is not acquired, and from inside the module's own unload entry.
  /// [any thread] [blocks] [running] Holds the module mutex, also while the module's unload entry runs.
  virtual void ReleaseModule(IPLModule* module) = 0;  // slot 4

  /// @}

  /// @name Threads, last error, mutexes and events
  /// @{

  /// Returns a new idle thread object, which the caller owns; null if memory is exhausted. [any thread]
  virtual Thread* CreateThread() = 0;  // slot 5
  /// Destroys a thread object. Ignores null. A running one is detached instead (Thread::Detach). [any thread]
  /// Takes the lock that all thread objects share.
  virtual void DestroyThread(Thread* thread) = 0;  // slot 6
  /// Returns the calling thread's object; null on a thread that the kernel did not create. [any thread]
  virtual Thread* GetCurrentThread() = 0;  // slot 7
  /// Suspends the calling thread for a duration in nanoseconds; a signal ends it early. Zero and negative durations
  /// return at once. [any thread]
  virtual void Sleep(const Time& duration) = 0;  // slot 8
  /// Returns a copy of the calling thread's last error and keeps it. Each kernel thread has its own; all other threads
  /// share one. [any thread] Takes the state mutex on other than kernel threads.
  virtual PLError GetLastError() = 0;  // slot 9
  /// Stores the calling thread's last error. [any thread] Takes the state mutex on other than kernel threads.
  virtual void SetLastError(const PLError& error) = 0;  // slot 10
  /// Returns a new recursive mutex, which the caller owns; null if memory is exhausted. [any thread]
  virtual Mutex* CreateMutex() = 0;  // slot 11
  /// Destroys a mutex. Ignores null. [owner]
  virtual void DestroyMutex(Mutex* mutex) = 0;  // slot 12
  /// Returns a new event that is not set, which the caller owns; null if memory is exhausted.
  /// manualReset: true, it stays set until Clear; false, a Wait that returns true clears it. [any thread]
  virtual Event* CreateEvent(bool manualReset) = 0;  // slot 13
  /// Destroys an event. Ignores null. [owner]
  virtual void DestroyEvent(Event* event) = 0;  // slot 14

  /// @}

  /// @name Stack traces
  /// @{

  /// Returns the calling thread's stack trace, which the caller owns; null if memory is exhausted. skip: the number of
  /// innermost frames to leave out. maxDepth: how far to walk, at most 32; three frames of the kernel's own and those
  /// left out count too. [any thread] Takes no lock.
  virtual Stacktrace* CreateStacktrace(unsigned long maxDepth, unsigned long skip) = 0;  // slot 15
  /// Destroys a stack trace. Ignores null. [owner]
  virtual void DestroyStacktrace(Stacktrace* stacktrace) = 0;  // slot 16

  /// @}

  /// @name Memory (PLMem.h gives operators on top)
  /// @{

  /// As malloc. file and line name the caller; file may be null. Returns null if memory is exhausted. [any thread]
  virtual void* Alloc(unsigned long size, const char* file, int line) = 0;  // slot 17
  /// As realloc; null for a null block with size 0. [any thread]
  virtual void* ReAlloc(void* block, unsigned long size, const char* file, int line) = 0;  // slot 18
  /// As free. [any thread]
  virtual void Free(void* block, const char* file, int line) = 0;  // slot 19

  /// @}

  /// @name Time
  /// @{

  /// Returns the time of the kernel's clock, which never jumps; 0 if the clock fails. [any thread]
  virtual Time GetKernelTime() = 0;  // slot 20
  /// Returns the resolution of that clock; 0 if it fails. [any thread]
  virtual Time GetKernelTimeResolution() = 0;  // slot 21
  /// Sets GMT, for this process alone, and has the GMT timers looked at again. Does nothing if gmt is not later than
  /// the kernel's time. Without memory for the request the GMT timers are looked at with the next one. As the
  /// operations of timers. [any thread but the timer thread] [blocks] Takes the state mutex; waits without it.
  virtual void SetTimeGMT(const Time& gmt) = 0;  // slot 22
  /// Returns GMT: the kernel's time plus an offset. [any thread] Takes the state mutex.
  virtual Time GetTimeGMT() = 0;  // slot 23
  /// Sets GMT so that local time reads local, as SetTimeGMT does. [any thread but the timer thread] [blocks] Takes the
  /// locks that SetTimeGMT and GetTimeLocal take, one after the other.
  virtual void SetTimeLocal(const Time& local) = 0;  // slot 24
  /// Returns local time: GMT plus the offset that the platform's TV service gave first; GMT without the service.
  /// [any thread] [blocks] Takes the lock of the locale service while the service is asked, and no other meanwhile.
  virtual Time GetTimeLocal() = 0;  // slot 25
  /// Returns the local time of a GMT instant. Otherwise as GetTimeLocal. [any thread] [blocks] Takes the lock of the
  /// locale service.
  virtual Time ConvertGMTToLocal(const Time& gmt) = 0;  // slot 26
  /// Breaks a time, truncated toward zero to seconds, into calendar fields; applies no time zone. 1970-01-01 00:00:00
  /// if that fails. [any thread] Takes the state mutex.
  virtual void TimeToCalendarTime(const Time& time, CalendarTime& cal) = 0;  // slot 27
  /// Returns one hour if daylight-saving time is in force at a GMT instant in the C library's time zone, else 0.
  /// Instants beyond 32 bits of seconds count as the nearest that fits. [any thread] Takes the state mutex.
  virtual Time GetDayLightSavingTimeBias(const Time& time) = 0;  // slot 28

  /// @}

  /// @name Timers
  /// A timer that is due posts a message to its queue: its ID is GetTimerMessageID(), its data a TimerMessageData. All
  /// operations are [any thread but the timer thread] [blocks] [running]; the first one starts the timer thread, under
  /// the state mutex, and each waits without a lock until that thread has taken the request. They return 0 and do
  /// nothing when the kernel is not running or is shutting down, and when memory is exhausted.
  ///
  /// The timer thread takes the lock of a queue to post to it. Whoever sets or clears a timer, or sets a clock, while
  /// it holds the lock of a queue that has timers may wait for that thread while that thread waits for it: for ever. A
  /// queue is one of CreateMessageQueue, and its timers are cleared before it is destroyed. A message that finds no
  /// memory is lost; a periodic timer goes on.
  /// @{

  /// Returns the ID of every timer's messages; the same until the kernel is unloaded. 0: not running, or no memory.
  /// [any thread but the timer thread] [running] Only the first operation of timers takes the state mutex.
  virtual unsigned long GetTimerMessageID() = 0;  // slot 29
  /// Fires after delay on the kernel's clock, and if periodic again each time delay after it fired. A delay of zero or
  /// less fires once, soon. Returns the timer's identifier; 0: not running, or no memory.
  /// [any thread but the timer thread] [blocks] [running] Waits without a lock.
  virtual unsigned long SetTimer(const Time& delay, MessageQueue& queue, bool periodic) = 0;  // slot 30
  /// Fires at an instant of GMT, and if period is positive again each time period after it fired. An instant of the
  /// first day of 1970 that is past is a time of day: it fires when that time comes next. One before 1970 counts back
  /// from today's midnight, or tomorrow's if that is past, and may be past even so: then it fires at once. Another one
  /// that is past fires before this returns. Returns the timer's identifier; 0: not running, or no memory.
  /// [any thread but the timer thread] [blocks] [running] Waits without a lock.
  virtual unsigned long SetTimerGMT(const Time& instant, MessageQueue& queue, const Time& period) = 0;  // slot 31
  /// Ends a timer of this queue and takes its messages out of it: when this returns none is there and none comes. With
  /// another queue than the timer's it only takes out messages. Needs no memory.
  /// [any thread but the timer thread] [blocks] [running] Waits without a lock, then takes that of the queue.
  virtual void ClearTimer(unsigned long timerID, MessageQueue& queue) = 0;  // slot 32

  /// @}

  /// @name Message queues
  /// @{

  /// Returns a new empty queue, which the caller owns; null if memory is exhausted. [any thread] [running]
  virtual MessageQueue* CreateMessageQueue() = 0;  // slot 33
  /// Destroys a queue. Ignores null. Messages still in it are not freed, and their senders are not woken. [owner]
  virtual void DestroyMessageQueue(MessageQueue* queue) = 0;  // slot 34

  /// @}

  /// @name The process
  /// @{

  /// Returns 1, then 2, and so on: no value twice while the kernel exists, until 32 bits are used up. [any thread]
  /// Takes the state mutex.
  virtual unsigned long GetUniqueID() = 0;  // slot 35
  /// Returns the process identifier. [any thread]
  virtual unsigned long GetProcessID() = 0;  // slot 36
  /// Returns the argument count that the host passed, 0 before. [any thread]
  virtual int GetArgc() = 0;  // slot 37
  /// Returns the argument vector that the host passed, null before. It belongs to the host. [any thread]
  virtual const char** GetArgv() = 0;  // slot 38
  /// Returns whether the kernel is being shut down. [any thread]
  virtual bool IsShutdownPending() = 0;  // slot 39
  /// Fills buffer with random bytes from /dev/urandom, or else with bytes made from the list of processes, for which it
  /// runs the command "ps" and waits for its end. Returns false if both fail, also if a signal interrupts the reading
  /// of the command's output, or if the process ignores SIGCHLD; buffer may be changed then. [any thread] [blocks]
  virtual bool GetRandomData(void* buffer, unsigned long size) = 0;  // slot 40
  /// Fills in the system's memory and swap sizes in bytes; 0 for each that is unknown. [any thread]
  virtual void GetMemoryInfo(unsigned long long& memTotal, unsigned long long& memFree, unsigned long long& swapTotal,
                             unsigned long long& swapFree) = 0;  // slot 41
  /// Sets dir to the directory of the process's executable, without a '/' at its end. Returns false if it cannot be
  /// found out, and leaves dir as it is; or if memory is exhausted, and dir is empty then. [any thread]
  virtual bool GetKernelBinDirectory(PLString& dir) = 0;  // slot 42

  /// @}

  /// @name Memory and text
  /// @{

  /// As the C library's function of this name. [any thread]
  virtual void* memset(void* destination, int value, unsigned long count) = 0;  // slot 43
  /// As the C library's function of this name. [any thread]
  virtual void* memcpy(void* destination, const void* source, unsigned long count) = 0;  // slot 44
  /// As the C library's function of this name. [any thread]
  virtual void* memmove(void* destination, const void* source, unsigned long count) = 0;  // slot 45
  /// As the C library's function of this name. [any thread]
  virtual int memcmp(const void* left, const void* right, unsigned long count) = 0;  // slot 46
  /// compare: an int (*)(const void*, const void*), passed as an untyped pointer. Otherwise as the C library's
  /// function. [any thread] No lock is held while it runs.
  virtual void qsort(void* base, unsigned long count, int size, void* compare) = 0;  // slot 47
  /// Returns the number of 16-bit units before the first zero; 0 for null. [any thread]
  virtual unsigned long wcslen(const unsigned short* text) = 0;  // slot 48
  /// As the C library's function, but 0 for null. [any thread]
  virtual unsigned long strlen(const char* text) = 0;  // slot 49
  /// As the C library's function of this name. [any thread]
  virtual int strcmp(const char* left, const char* right) = 0;  // slot 50
  /// As the C library's function of this name. [any thread]
  virtual int strncmp(const char* left, const char* right, unsigned long count) = 0;  // slot 51
  /// As the C library's function of this name. [any thread]
  virtual int strcasecmp(const char* left, const char* right) = 0;  // slot 52
  /// As the C library's function of this name. [any thread]
  virtual int strncasecmp(const char* left, const char* right, unsigned long count) = 0;  // slot 53
  /// As the C library's function of this name. [any thread]
  virtual char* strcpy(char* destination, const char* source) = 0;  // slot 54
  /// As the C library's function of this name. [any thread]
  virtual char* strcat(char* destination, const char* source) = 0;  // slot 55
  /// As the C library's function of this name. [any thread]
  virtual char* strstr(const char* text, const char* part) = 0;  // slot 56
  /// As the C library's function of this name. [any thread]
  virtual int sprintf(char* buffer, const char* format, ...) IPL_PRINTF(3, 4) = 0;  // slot 57
  /// As the C library's function of this name. [any thread]
  virtual int snprintf(char* buffer, unsigned long size, const char* format, ...) IPL_PRINTF(4, 5) = 0;  // slot 58
  /// As the C library's function of this name. [any thread]
  virtual long strtol(const char* text, char** end, int base) = 0;  // slot 59
  /// As the C library's function of this name. [any thread]
  virtual unsigned long strtoul(const char* text, char** end, int base) = 0;  // slot 60
  /// As the C library's function strtoll. [any thread]
  virtual long long strtoq(const char* text, char** end, int base) = 0;  // slot 61
  /// As the C library's function of this name. [any thread]
  virtual double strtod(const char* text, char** end) = 0;  // slot 62
  /// As the C library's function of this name. [any thread]
  virtual char* strchr(const char* text, int character) = 0;  // slot 63
  /// As the C library's function of this name. [any thread]
  virtual char* strrchr(const char* text, int character) = 0;  // slot 64

  /// @}

  /// @name Character sets and language
  /// Both conversions return a status: 0 converted, 1 no room, 2 invalid or unconvertible input and skipInvalid is
  /// false, 3 input that ends within a character, 4 another error or no memory, 5 unknown character set, which changes
  /// nothing. Whatever the status below 5, the output holds what was converted before, is terminated, and the counts
  /// are set. A character that combines with the next one is held back by some character sets: when a conversion stops
  /// with an error it counts as consumed and is not in the output. [any thread] They take no lock.
  /// @{

  /// Converts source, behind a leading U+FEFF and up to its first zero, to charSet (never null). A set that has no
  /// U+FEFF therefore ends with status 2 at once, unless skipInvalid is true: that steps over whole characters of 2 or
  /// 4 bytes. targetSize: bytes of room, the terminating zero included; with 0, or a null target, nothing is written
  /// and the status is 1. bytesWritten counts the zero, even then; bytesConsumed counts bytes of UTF-16, the U+FEFF
  /// included, without what was skipped. [any thread] Takes no lock.
  virtual unsigned int PLStringToMultiByteCharacterString(const PLString& source, char* target,
                                                          unsigned long targetSize, const char* charSet,
                                                          unsigned long& bytesWritten, unsigned long& bytesConsumed,
                                                          bool skipInvalid) = 0;  // slot 65
  /// Converts sourceLength bytes of charSet (never null) and replaces target by the result, up to the first zero in it.
  /// bytesConsumed does not count what was skipped. skipInvalid steps over single bytes; a last one that is invalid
  /// ends the conversion with status 0, and is neither converted nor counted. [any thread] Takes no lock.
  virtual unsigned int MultiByteCharacterStringToPLString(const char* source, unsigned long sourceLength,
                                                          PLString& target, const char* charSet,
                                                          unsigned long& bytesConsumed,
                                                          bool skipInvalid) = 0;  // slot 66
  /// Returns the C library's name for the character set of the process's locale. It belongs to the C library.
  /// [any thread], as long as none sets the locale.
  virtual const char* GetSystemCharSet() = 0;  // slot 67
  /// Sets language to the language of LANG, such as "de" or "de-DE"; "en" if it names none. Lengths of its parts are
  /// counted in bytes. The environment must not change meanwhile. [any thread]
  virtual void GetSystemLanguage(PLString& language) = 0;  // slot 68

  /// Copies at most size - 1 bytes of source and always writes a terminating zero. A null source counts as empty. Does
  /// nothing if destination is null or size is 0. [any thread]
  virtual void strncpyTerm(char* destination, const char* source, unsigned long size) = 0;  // slot 69

  /// @}

  /// @name Diagnostics
  /// @{

  /// Writes a line with file and line to standard error and returns. expression is not used. [any thread]
  virtual void AssertFailed(const char* file, int line, const char* expression) = 0;  // slot 70
  /// Reads what standard input has, at most size - 1 bytes, a line at a time from a terminal; adds a terminating zero
  /// and keeps the line feed. timeout: relative; 0 polls, Time::Forever() waits without limit, -1 ms or less and more
  /// than 24 days are 24 days. Returns false, and leaves buffer alone, on a time-out, a signal, an error, at the end of
  /// input, and if size is below 2. [any thread] [blocks]
  virtual bool ReadConsoleInputString(char* buffer, unsigned long size, Time timeout) = 0;  // slot 71
  /// Writes nothing: console output is switched off. [any thread]
  virtual void WriteConsoleOutputString(const char* format, ...) IPL_PRINTF(2, 3) = 0;  // slot 72
  /// Hands format to WriteConsoleOutputString if the machine's log level enables category and level. [any thread]
  virtual void Kite_EnableLog(int category, int level, const char* format, ...) IPL_PRINTF(4, 5) = 0;  // slot 73

  /// @}

  /// @name Errors of thread operations
  /// Codes 256 to 261; never changed.
  /// @{

  /// Code 256. Run, of a thread that runs.
  const PLError m_ThreadAlreadyRunning;
  /// Code 257. Run, when the system refuses a thread or memory is exhausted.
  const PLError m_ThreadCreationFailure;
  /// Code 258. WaitUntilFinished, by the thread itself.
  const PLError m_ThreadCantWaitOnSelf;
  /// Code 259. SetPriority, when the system refuses.
  const PLError m_ThreadSetPriority;
  /// Code 260. Not stored by the kernel.
  const PLError m_ThreadGenericError;
  /// Code 261. Not stored by the kernel.
  const PLError m_ThreadInvalidParameter;

  /// @}

 protected:
  IPLKernel()
      : m_ThreadAlreadyRunning(256, "ThreadAlreadyRunning"),
        m_ThreadCreationFailure(257, "ThreadCreationFailure"),
        m_ThreadCantWaitOnSelf(258, "ThreadCantWaitOnSelf"),
        m_ThreadSetPriority(259, "ThreadSetPriority"),
        m_ThreadGenericError(260, "ThreadGenericError"),
        m_ThreadInvalidParameter(261, "ThreadInvalidParameter") {}

 private:
  IPLKernel(const IPLKernel&) = delete;
  IPLKernel& operator=(const IPLKernel&) = delete;
};

/// Whether the counts are equal. [any thread]
inline constexpr bool operator==(IPLKernel::Time a, IPLKernel::Time b) {
  return a.GetNanoseconds() == b.GetNanoseconds();
}
/// Whether the counts are not equal. [any thread]
inline constexpr bool operator!=(IPLKernel::Time a, IPLKernel::Time b) { return !(a == b); }
/// Whether the first one is less. [any thread]
inline constexpr bool operator<(IPLKernel::Time a, IPLKernel::Time b) {
  return a.GetNanoseconds() < b.GetNanoseconds();
}
/// Whether the first one is greater. [any thread]
inline constexpr bool operator>(IPLKernel::Time a, IPLKernel::Time b) { return b < a; }
/// Whether the first one is not greater. [any thread]
inline constexpr bool operator<=(IPLKernel::Time a, IPLKernel::Time b) { return !(b < a); }
/// Whether the first one is not less. [any thread]
inline constexpr bool operator>=(IPLKernel::Time a, IPLKernel::Time b) { return !(a < b); }

#endif  // IPL_IPLKERNEL_H
