# SPDX-License-Identifier: Apache-2.0
"""How GDB prints the kernel's types."""
import gdb.printing

from ipl_values import (ERRORS, chars, elements, entries, expect, guarded, message_line, messages, seconds,
                        thread_line, units)

_THREAD_FIELDS = ('m_pfnThreadProc', 'm_pUserData', 'm_lastError', 'm_pFinishedEvent')


class _Line:
    """Prints a text."""

    def __init__(self, value):
        self._value = value

    def to_string(self):
        return guarded(self.title, self._value)


class _List(_Line):
    """Prints a text and named items."""

    def children(self):
        try:
            yield from self.items(self._value)
        except ERRORS as error:
            yield 'error', '<damaged: %s>' % error


def _numbered(items):
    return (('[%d]' % index, item) for index, item in enumerate(items))


def _thread(value):
    return expect(value, 'KernelThread')


def _queue(value):
    return expect(value, 'KernelMessageQueue')


_PRINTERS = (
    ('PLString', units, None),
    ('PLError', lambda value: '%s (%d)' % (chars(value['m_name']), int(value['m_code'])), None),
    ('IPLKernel::Time', seconds, None),
    ('PLArray<.*>', lambda value: 'array of %d' % int(value['m_size']), lambda value: _numbered(elements(value))),
    ('PLHashTable<.*>', lambda value: 'table of %d' % int(value['m_count']),
     lambda value: (('[%s]' % key.format_string(), item) for key, item in entries(value))),
    ('KernelMessageQueue::KernelMessage|IPLKernel::Message', message_line, None),
    ('KernelMessageQueue|IPLKernel::MessageQueue',
     lambda value: 'queue of %d' % int(_queue(value)['m_messages']['m_size']),
     lambda value: _numbered(messages(_queue(value)))),
    ('KernelThread|IPLKernel::Thread', lambda value: 'thread ' + thread_line(_thread(value)),
     lambda value: ((field, _thread(value)[field]) for field in _THREAD_FIELDS)),
)


def register(objfile):
    """For the values of one object file's program; None: for all."""
    printers = gdb.printing.RegexpCollectionPrettyPrinter('IPLKernel')
    for pattern, title, items in _PRINTERS:
        texts = {'title': staticmethod(title), 'items': staticmethod(items)}
        kind = type('Printer', (_List if items else _Line,), texts)
        printers.add_printer(pattern, '^(%s)$' % pattern, kind)
    gdb.printing.register_pretty_printer(objfile, printers, replace=True)
