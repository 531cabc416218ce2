# SPDX-License-Identifier: Apache-2.0
"""Reads the kernel's objects from memory that may be damaged, by debug information alone: nothing is called."""
import gdb


class Damaged(ValueError):
    """An object contradicts itself."""


# What reading a damaged object raises; gdb.error and gdb.MemoryError are RuntimeErrors.
ERRORS = (RuntimeError, ValueError, OverflowError)


def guarded(work, *arguments):
    """What work returns, or the error as a text."""
    try:
        return work(*arguments)
    except ERRORS as error:
        return '<damaged: %s>' % error


def plain(value):
    """The number or pointer inside a std::atomic."""
    while value.type.strip_typedefs().code == gdb.TYPE_CODE_STRUCT:
        own = [field for field in value.type.strip_typedefs().fields() if hasattr(field, 'bitpos')]
        value = value[own[0]]
    return value


def expect(value, tag):
    """The object behind an interface, pointer or reference, which really has to be of this class."""
    if value.type.strip_typedefs().code in (gdb.TYPE_CODE_PTR, gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
        value = value.referenced_value()
    value.fetch_lazy()
    found = value.dynamic_type.strip_typedefs().unqualified()
    if found.tag != tag:
        raise Damaged('it is no %s but a %s, or the debug information of libIPLKernel.so is not there' % (tag, found))
    return value.cast(found)


def elements(array):
    """The elements of a PLArray."""
    size, capacity, data = int(array['m_size']), int(array['m_capacity']), array['m_pData']
    if size > capacity or (size != 0 and int(data) == 0):
        raise Damaged('%d elements in a buffer for %d at 0x%x' % (size, capacity, int(data)))
    for index in range(size):
        element = data[index]
        element.fetch_lazy()
        yield element


def entries(table):
    """The keys and values of a PLHashTable."""
    count, found = int(table['m_count']), 0
    for entry in elements(table['m_buckets']):
        while int(entry) != 0:
            if found == count:  # a chain may lead back into itself
                raise Damaged('its chains have more than its %d entries' % count)
            found += 1
            value = entry['value']
            value.fetch_lazy()
            yield entry['key'], value
            entry = entry['next']
    if found != count:
        raise Damaged('its chains have %d entries of %d' % (found, count))


def quoted(text):
    """The text in quotes; what the terminal cannot show, and surrogates that stand alone, as \\uXXXX."""

    def shown(char):
        if char == '"':
            return '\\"'
        return char if char.isprintable() and char != '\\' else char.encode('unicode_escape').decode()

    text = ''.join(map(shown, text))
    charset = gdb.target_charset()
    return '"%s"' % text.encode(charset, 'backslashreplace').decode(charset)


def chars(value):
    """A char* or char[] in quotes."""
    if value.type.strip_typedefs().code == gdb.TYPE_CODE_PTR and int(value) == 0:
        return 'null'
    return quoted(value.string('utf-8', 'backslashreplace'))


def units(string):
    """The text of a PLString in quotes, cut as "set print elements" says."""
    length, capacity, buffer = int(string['m_length']), int(string['m_capacity']), string['m_pBuffer']
    if length >= max(capacity, 1) or (length != 0 and int(buffer) == 0):
        raise Damaged('%d units in a buffer for %d at 0x%x' % (length, capacity, int(buffer)))
    limit = gdb.parameter('print elements')
    count = length if limit is None else min(length, limit)
    if count == 0:
        return '""'
    text = buffer.cast(buffer.type.target().array(count - 1).pointer()).dereference()
    text.fetch_lazy()
    raw = b''.join(int(text[index]).to_bytes(2, 'little') for index in range(count))
    return quoted(raw.decode('utf-16-le', 'surrogatepass')) + ('...' if count < length else '')


def seconds(time):
    """An IPLKernel::Time."""
    count = int(time['m_nanoseconds'])
    if count == (1 << 63) - 1:
        return 'forever'
    return '%s%d.%09d s' % ('-' if count < 0 else '', abs(count) // 10**9, abs(count) % 10**9)


def thread_line(value):
    """A KernelThread in one line."""
    return '%s, %s%s, priority %d, stack %d' % (
        chars(value['m_name']), 'running' if int(value['m_thread']) else 'not running',
        ', detached' if int(value['m_pfnDetachCleanup']) else '', int(value['m_priority']), int(value['m_stackSize']))


def message_line(value):
    """A message, or a pointer to one, in one line."""
    value = expect(value, 'KernelMessageQueue::KernelMessage')
    return 'id %d, data 0x%x, %s' % (
        int(value['m_id']), int(value['m_pData']), 'sent' if int(value['m_pReplyEvent']) else 'posted')


def messages(queue):
    """The messages of a KernelMessageQueue, each as a line."""
    for pointer in elements(queue['m_messages']):
        yield guarded(message_line, pointer)
