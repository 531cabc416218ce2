# SPDX-License-Identifier: Apache-2.0
"""The commands "ipl ...": what the kernel of a live process or of a core holds."""
import datetime

import gdb

from ipl_values import ERRORS, chars, elements, entries, expect, guarded, messages, plain, seconds, thread_line

_MOST_FRAMES = 256  # of a damaged stack
_THREAD_FRAMES = {'KernelThread::StaticThreadProc': 'self', 'KernelThread::FinishRun': 'this'}
_QUEUE_FRAMES = {'KernelMessageQueue::' + name: 'this' for name in ('Receive', 'SendAt', 'Enqueue')}


def _length(pointer):
    return int(expect(pointer, 'KernelMessageQueue')['m_messages']['m_size'])


def _kernel():
    try:
        pointer = plain(gdb.parse_and_eval('IPLKernelImpl::s_pKernelImpl'))
    except gdb.error as error:
        raise gdb.GdbError('libIPLKernel.so is not loaded, or its debug information is not there: %s' % error)
    if int(pointer) == 0:
        raise gdb.GdbError('There is no kernel object.')
    return pointer.dereference()


def _member(name, what):
    pointer = plain(_kernel()[name])
    if int(pointer) == 0:
        raise gdb.GdbError('The kernel is not running: it has no %s.' % what)
    return pointer.dereference()


def _threads():
    """The stopped threads in the order of their numbers, each selected in turn."""
    selected = gdb.selected_thread()
    if selected is None:
        raise gdb.GdbError('There is no process.')
    frame = gdb.selected_frame()
    try:
        for thread in sorted(gdb.selected_inferior().threads(), key=lambda thread: thread.num):
            if thread.is_stopped():
                thread.switch()
                yield thread
    finally:
        selected.switch()
        frame.select()


def _on_stack(functions):
    """(function, pointer) of these functions' frames on the selected thread; None where optimised code lost it."""
    try:
        frame = gdb.newest_frame()
        for _ in range(_MOST_FRAMES):
            if frame is None:
                return
            variable = functions.get(frame.name())
            if variable is not None:
                value = frame.read_var(variable)
                yield frame.name(), None if value.is_optimized_out else value
            frame = frame.older()
    except ERRORS:
        return  # GDB says it where the user looks at this stack


def _queues_on_stacks():
    for thread in _threads():
        for function, pointer in _on_stack(_QUEUE_FRAMES):
            if pointer is not None:
                yield pointer, 'thread %d in %s' % (thread.num, function.rpartition('::')[2])


class _Command(gdb.Command):
    def invoke(self, argument, from_tty):
        # The language of the frame may be C or assembler, which have no class members.
        language = gdb.parameter('language')
        gdb.execute('set language c++', to_string=True)
        try:
            self.run(argument)
        except ERRORS as error:
            raise gdb.GdbError('cannot go on: %s' % error)
        finally:
            gdb.execute('set language ' + language, to_string=True)


class Modules(_Command):
    """List the loaded modules: name, references, module object, file, and the path that was asked for."""

    def run(self, argument):
        for _, record in entries(_member('m_pModulesByKey', 'modules')):
            print(guarded(self._line, record))

    @staticmethod
    def _line(record):
        file = gdb.solib_name(int(record['m_pfnUnload'])) or 'unknown file'
        path = record['m_pPath']
        asked = 'no path' if int(path) == 0 else 'path ' + chars(path)
        return '%s, %d references, object 0x%x, %s, %s' % (
            chars(record['m_name']), int(record['m_refCount']), int(record['m_pModule']), file, asked)


class Threads(_Command):
    """List the threads with the kernel's threads among them. Those that run nothing are in no list."""

    def run(self, argument):
        for thread in _threads():
            print('%d (LWP %d): %s' % (thread.num, thread.ptid[1] or thread.ptid[2], guarded(self._line)))

    @staticmethod
    def _line():
        known = list(_on_stack(_THREAD_FRAMES))
        for _, pointer in known:
            if pointer is not None:
                return '0x%x %s' % (int(pointer), thread_line(expect(pointer, 'KernelThread')))
        return 'a kernel thread whose object cannot be found' if known else 'not made by the kernel'


class Timers(_Command):
    """List the pending timers in the order in which they fire: fire time, period and queue."""

    def run(self, argument):
        manager = _member('m_pTimerManager', 'timers')
        print('Timer messages have the id %d.' % int(manager['m_timerMessageID']))
        for kind, field in (('kernel time', 'm_kernelTimers'), ('GMT', 'm_gmtTimers')):
            for record in elements(manager[field]):
                print(guarded(self._line, record, kind))

    @staticmethod
    def _line(record, kind):
        when = seconds(record['fireTime'])
        if kind == 'GMT':
            whole = int(record['fireTime']['m_nanoseconds']) // 10**9
            when += ' (%s)' % (datetime.datetime(1970, 1, 1) + datetime.timedelta(0, whole))
        every = ', every ' + seconds(record['interval']) if record['periodic'] else ''
        return 'timer %d: %s %s%s, queue 0x%x' % (int(record['timerID']), kind, when, every, int(record['queue']))


class Queue(_Command):
    """ipl queue EXPRESSION: list the messages of a queue, and the threads that receive or send just now."""

    def run(self, argument):
        if not argument:
            raise gdb.GdbError('ipl queue EXPRESSION: a queue, or a pointer to one')
        queue = expect(gdb.parse_and_eval(argument), 'KernelMessageQueue')
        print('queue 0x%x of %d' % (int(queue.address), _length(queue)))
        for index, line in enumerate(messages(queue)):
            print('  [%d] %s' % (index, line))
        for pointer, why in _queues_on_stacks():
            if int(pointer) == int(queue.address):
                print('  ' + why)


class Queues(_Command):
    """List the queues that timers and the stacks of threads lead to: the kernel keeps no list of its queues."""

    def run(self, argument):
        found = {}
        for pointer, why in self._known():
            found.setdefault(int(pointer), (pointer, []))[1].append(why)
        print('The kernel keeps no list of its queues. Timers and stacks lead to these:')
        for address, (pointer, reasons) in found.items():
            print('queue 0x%x of %s: %s' % (address, guarded(_length, pointer), ', '.join(reasons)))

    @staticmethod
    def _known():
        manager = _member('m_pTimerManager', 'timers')
        yield manager['m_pQueue'], "the timer thread's commands"
        for field in ('m_kernelTimers', 'm_gmtTimers'):
            for record in elements(manager[field]):
                yield record['queue'], 'timer %d' % int(record['timerID'])
        yield from _queues_on_stacks()


def register():
    """Makes the commands known to GDB."""
    _Prefix('ipl', gdb.COMMAND_DATA, gdb.COMPLETE_NONE, True)
    for kind in (Modules, Threads, Timers, Queue, Queues):
        kind('ipl ' + kind.__name__.lower(), gdb.COMMAND_DATA)


class _Prefix(gdb.Command):
    """What the kernel of this process or core holds."""
