"""Shows the values and the locks of the orvo library in gdb.

gdb loads this file by itself where it is installed with the library; "source
orvo-gdb.py" does it by hand. The library needs its debug information, and the
program GNU's standard C++ library. No function of the program is called, so
that core files can be looked at as well.
"""

import datetime
import itertools
import re
import sys

import gdb
import gdb.printing

MOST_ENTRIES = 100000  # of a container, which may be damaged
MOST_CHARACTERS = 200  # of a text
MOST_FRAMES = 40  # between a system call and the lock that it serves
LARGEST_REGION = 16 << 30  # more is reserved address space and not memory
PART = 1 << 20  # of memory, read at once

# What gdb can print; older versions do not tell.
CHARACTERS = getattr(gdb, "host_charset", lambda: "ascii")()

# ---------------------------------------------------------------------------
# Memory and the types of the standard library


def word_type():
    """The type of a pthread_t, as large as a pointer."""
    return gdb.lookup_type("unsigned long")


def read_word(address, index=0):
    return int(gdb.Value(address).cast(word_type().pointer())[index])


def read_memory(address, size):
    return bytes(gdb.selected_inferior().read_memory(address, size)) if size else b""


def read_string(string):
    """The text of a std::string, in one line that gdb can print."""
    size = int(string["_M_string_length"])
    raw = read_memory(int(string["_M_dataplus"]["_M_p"]), min(size, MOST_CHARACTERS))
    text = raw.decode("utf-8", "backslashreplace")
    text = "".join(c if c.isprintable() else repr(c)[1:-1] for c in text)
    text = text.encode(CHARACTERS, "backslashreplace").decode(CHARACTERS)
    return text + ("..." if size > MOST_CHARACTERS else "")


def quote(text):
    return '"%s"' % text.replace('"', '\\"')


def map_header(std_map):
    return std_map["_M_t"]["_M_impl"]["_M_header"]


def is_map(std_map):
    """Whether the links of a std::map lead back to it."""
    header = map_header(std_map)
    root = header["_M_parent"]
    back = root["_M_parent"] if root else header["_M_left"]
    return int(back) == int(header.address)


def by_thread(std_map):
    """A std::map from thread identifiers, as a dictionary."""
    mapped = std_map.type.strip_typedefs().template_argument(1)
    key_offset = gdb.lookup_type("std::_Rb_tree_node_base").sizeof
    value_offset = key_offset + word_type().sizeof  # right for all alignments

    def visit(node, depth):
        if not node or depth == 64:
            return
        yield from visit(node["_M_left"], depth + 1)
        value = gdb.Value(int(node) + value_offset).cast(mapped.pointer())
        yield read_word(int(node) + key_offset), value.dereference()
        yield from visit(node["_M_right"], depth + 1)

    root = map_header(std_map)["_M_parent"]
    return dict(itertools.islice(visit(root, 0), MOST_ENTRIES))


def pointee(unique_ptr, type_name):
    """What a std::unique_ptr owns, or None."""
    pointer = gdb.lookup_type(type_name).pointer()
    pointer = unique_ptr.address.cast(pointer.pointer()).dereference()
    return pointer.dereference() if pointer else None


def is_derived(class_type, name):
    if class_type.name == name:
        return True
    bases = [field.type for field in class_type.fields() if field.is_base_class]
    return any(is_derived(base.strip_typedefs(), name) for base in bases)


# ---------------------------------------------------------------------------
# Threads


class SelectionKept:
    """Selects the same thread and frame afterwards as before."""

    def __enter__(self):
        self.thread, self.frame = gdb.selected_thread(), gdb.selected_frame()

    def __exit__(self, *_):
        self.thread.switch()
        self.frame.select()


def thread_id(thread):
    """The pthread_t of a thread."""
    try:
        return int.from_bytes(thread.handle(), sys.byteorder)
    except RuntimeError:
        pass
    # Without the program's own C library gdb has no handles; on x86-64 each
    # thread has its own in a register.
    with SelectionKept():
        thread.switch()
        try:
            return int(gdb.newest_frame().read_register("fs_base"))
        except (gdb.error, ValueError):
            return -thread.num


def system_id(thread):
    """The number of a thread in the program's own system calls."""
    pid, lwp, _ = thread.ptid
    try:
        with open("/proc/%d/task/%d/status" % (pid, lwp)) as status:
            # The last one is that of the innermost container.
            return int(re.search(r"^NSpid:.*\s(\d+)$", status.read(), re.M)[1])
    except (OSError, TypeError):
        return lwp or pid


class Threads:
    """The program's threads, by pthread_t and with the names it gave them."""

    def __init__(self):
        threads = sorted(gdb.selected_inferior().threads(), key=lambda t: t.num)
        self.by_id = {thread_id(thread): thread for thread in threads}
        self.by_system_id = {system_id(t): id for id, t in self.by_id.items()}
        registry = gdb.lookup_global_symbol("orvo::threadNames")
        names = by_thread(registry.value()["names_"]) if registry else {}
        self._names = {id: quote(read_string(name)) for id, name in names.items()}

    def describe(self, id):
        """For example: thread 2 "cook"."""
        name = self._names.get(id, "(unnamed)")
        if id not in self.by_id:
            return "ended thread " + name
        return "thread %d %s" % (self.by_id[id].num, name)

    def find(self, number_or_name):
        """The pthread_t of each thread that a user calls so."""
        wanted = (number_or_name, quote(number_or_name))
        return [
            id
            for id, thread in self.by_id.items()
            if str(thread.num) in wanted or self._names.get(id) in wanted
        ]


# ---------------------------------------------------------------------------
# Locks


def components(path):
    """Those of a path, as orvo::path::split_to_vector() finds them."""
    last = []
    while "/" in path:
        path, _, name = path.rpartition("/")
        if not name:
            break
        last.insert(0, name)
    return [path] + last


def shorten(file):
    """The path of a source file, without what it shares with the development
    root, as orvo::path::relpath() has it."""
    root = gdb.lookup_static_symbol("orvo::(anonymous namespace)::developmentRoot")
    if not root:
        return file
    names, start = components(file), components(read_string(root.value()))
    if names[0] != start[0] or len(names) < len(start):
        return file
    while names and start and names[0] == start[0]:
        del names[0], start[0]
    return "/".join(names)


def place_text(reference):
    """A LockingCodeReference as its GetAsString() has it."""
    function = read_string(reference["function_"])
    file = shorten(read_string(reference["file_"]))
    line = int(reference["line_"])
    return "%s --> %s:%d" % (function, file, line) if function else ""


class LockState:
    """What memory says of a LockImpl_ or of a class derived from it."""

    def __init__(self, impl, threads):
        impl = impl.cast(impl.dynamic_type)
        self.threads = threads
        self.address = int(impl.address)
        self.name = quote(read_string(impl["name_"]))
        self.is_debug = is_derived(impl.type, "orvo::DebugLockImpl_")
        self.is_recursive = is_derived(impl.type, "orvo::DebugRLockImpl_")
        self.recorded_holder = 0
        self.announced, self.in_condition_wait = {}, set()
        if self.is_debug:
            self.recorded_holder = read_word(int(impl["owner_"].address))
            self.announced = by_thread(impl["pending_references_"])
            waits = by_thread(impl["wait_will_unlock_"])
            self.in_condition_wait = {id for id, is_on in waits.items() if is_on}
        mutex = impl["mutex_"]["__data"]
        self.mutex_address = int(mutex.address)
        self.taker = int(mutex["__owner"])
        taker_id = threads.by_system_id.get(self.taker, 0)
        self.holder = self.recorded_holder or taker_id
        self.depth = max(1, int(mutex["__count"]))
        if self.is_recursive and self.recorded_holder:
            self.depth = int(by_thread(impl["counts_"]).get(self.holder, 0))

    def place(self, id):
        """The place that a thread has announced last, or ""."""
        return place_text(self.announced[id]) if id in self.announced else ""

    def depth_text(self):
        """The depth, and where books and mutex differ."""
        text = "depth %d" % self.depth
        if self.is_debug and not self.recorded_holder:
            return text + ", not in its books"
        # The system gives the identifier of a thread that has ended to a new one.
        taker_is_gone = self.taker not in self.threads.by_system_id
        if taker_is_gone and self.holder in self.threads.by_id:
            return text + ", taken by a thread that has ended"
        return text

    def describe(self):
        """For example: "stove", held by thread 2 "cook", depth 1."""
        if not self.holder:
            return self.name + ", free"
        holder = self.threads.describe(self.holder)
        return "%s, held by %s, %s" % (self.name, holder, self.depth_text())


# ---------------------------------------------------------------------------
# Pretty printers


class TextPrinter:
    """Prints what a function makes of a value."""

    def __init__(self, value, text_of):
        self._value, self._text_of = value, text_of

    def to_string(self):
        return self._text_of(self._value)


def printer_of(text_of):
    return lambda value: TextPrinter(value, text_of)


def time_text(time):
    """Seconds, and the instant with this distance from the epoch."""
    duration = time["count_"]
    count = int(duration[duration.type.strip_typedefs().fields()[-1]])
    seconds, nanoseconds = divmod(abs(count), 10**9)
    length = "%s%d.%09d s" % ("-" if count < 0 else "", seconds, nanoseconds)
    seconds, nanoseconds = divmod(count, 10**9)
    instant = datetime.datetime(1970, 1, 1) + datetime.timedelta(seconds=seconds)
    return "%s (%s.%09dZ)" % (length, instant.isoformat(), nanoseconds)


def uuid_text(uuid):
    digits = "".join("%02x" % int(uuid["bytes_"][i]) for i in range(16))
    return re.sub("(.{8})(.{4})(.{4})(.{4})(.*)", r"\1-\2-\3-\4-\5", digits)


def note_text(note):
    """The number and the sharp name."""
    index = int(note["index_"])
    spelling = "C C# D D# E F F# G G# A A# B".split()[index % 12]
    return "%d (%s%d)" % (index, spelling, index // 12 - 2)


def chunk_text(chunk):
    if chunk["numeric_"]:
        return str(int(chunk["value_"]))
    return quote(read_string(chunk["text_"]))


class NumericStringPrinter:
    """Prints the text and the chunks that are compared."""

    def __init__(self, value):
        self._value = value

    def to_string(self):
        return quote(read_string(self._value["text_"]))

    def children(self):
        chunks = self._value["chunks_"]["_M_impl"]
        first, end = chunks["_M_start"], chunks["_M_finish"]
        for i in range(min(int(end - first), MOST_ENTRIES)):
            yield str(i), first[i]

    def display_hint(self):
        return "array"


class LockPrinter:
    """Prints a lock's name, holder and depth, and what threads announced."""

    def __init__(self, impl):
        self._state = impl and LockState(impl, Threads())

    def to_string(self):
        return self._state.describe() if self._state else "no lock, moved from"

    def children(self):
        if not self._state:
            return
        for id, place in self._state.announced.items():
            yield "last announced by " + self._state.threads.describe(id), place


def print_lock(handle):
    return LockPrinter(pointee(handle["impl_"], "orvo::LockImpl_"))


def print_debug_lock(handle):
    return LockPrinter(pointee(handle["impl_"], "orvo::DebugLockImpl_"))


PRINTERS = {
    "orvo::Chunk": printer_of(chunk_text),
    "orvo::DebugLock": print_debug_lock,
    "orvo::DebugLockImpl_": LockPrinter,
    "orvo::DebugRLock": print_debug_lock,
    "orvo::DebugRLockImpl_": LockPrinter,
    "orvo::Lock": print_lock,
    "orvo::LockImpl_": LockPrinter,
    "orvo::LockingCodeReference": printer_of(lambda r: place_text(r) or "no reference"),
    "orvo::NumericString": NumericStringPrinter,
    "orvo::RLock": print_lock,
    "orvo::RLockImpl_": LockPrinter,
    "orvo::TimeValue": printer_of(time_text),
    "orvo::UUID": printer_of(uuid_text),
    "orvo::midi::Note": printer_of(note_text),
}


class OrvoPrinters(gdb.printing.PrettyPrinter):
    """Finds the printer for a value's type."""

    def __init__(self):
        super().__init__("orvo")

    def __call__(self, value):
        if value.type.strip_typedefs().code == gdb.TYPE_CODE_REF:
            value = value.referenced_value()
        name = value.type.unqualified().strip_typedefs().name
        if name == "orvo::OrvoLock":  # the interface: shows what is behind it
            value = value.cast(value.dynamic_type)
            name = value.type.unqualified().name
        printer = PRINTERS.get(name)
        # Without the library's debug information some classes have no members.
        if printer is None or not value.type.strip_typedefs().fields():
            return None
        return printer(value)


# ---------------------------------------------------------------------------
# Finding the debug locks


def regions():
    """Start and end of each part of memory that the program can write to."""
    found = writable_mappings() or core_sections()
    if not found:
        raise gdb.GdbError("The memory of the program cannot be listed.")
    return [(start, end) for start, end in found if end - start <= LARGEST_REGION]


def writable_mappings():
    try:
        text = gdb.execute("info proc mappings", to_string=True)
    except gdb.error:
        return []
    return addresses(r"^\s*0x(\w+)\s+0x(\w+)\s+\w+\s+\w+\s+rw\Sp", text)


def core_sections():
    text = gdb.execute("info files", to_string=True)
    return addresses(r"0x(\w+) - 0x(\w+) is load", text)


def addresses(pattern, text):
    pairs = re.findall(pattern, text, re.MULTILINE)
    return [(int(start, 16), int(end, 16)) for start, end in pairs]


def debug_lock_tables():
    """What each object of DebugLockImpl_ or of a class derived from it begins
    with: a pointer into the table of virtual functions of its class."""
    text = gdb.execute("info variables -q ^vtable.for.", to_string=True)
    symbols = re.findall(r"^0x(\w+)\s+vtable for (.*)$", text, re.MULTILINE)
    # Before the functions stand an offset and the description of the class.
    skipped = 2 * word_type().sizeof
    tables = [(int(address, 16) + skipped, name) for address, name in symbols]

    def named(wanted):
        return {table for table, name in tables if name == wanted}

    def class_of(table):
        return read_word(table, -1)

    roots = {class_of(table) for table in named("orvo::DebugLockImpl_")}
    with_one_base = named("__cxxabiv1::__si_class_type_info")

    def leads_to_root(table):
        try:
            description = class_of(table)
            while description not in roots:
                if read_word(description) not in with_one_base:
                    return False
                description = read_word(description, 2)
            return True
        except gdb.MemoryError:
            return False

    return {table for table, _ in tables if leads_to_root(table)}


def places_of(words):
    """The addresses at which memory holds one of these words."""
    size = word_type().sizeof
    patterns = [word.to_bytes(size, sys.byteorder) for word in words]
    for start, end in regions():
        for part in range(start, end, PART):
            try:
                content = read_memory(part, min(PART, end - part))
            except gdb.MemoryError:
                continue
            for pattern in patterns:
                at = content.find(pattern)
                while at >= 0:
                    if at % size == 0:
                        yield part + at
                    at = content.find(pattern, at + 1)


def find_debug_locks(threads):
    """The states of all debug locks. A chance word is told from an object, and
    a destroyed object from a living one, by maps that lead back to themselves."""
    pointer = gdb.lookup_type("orvo::DebugLockImpl_").pointer()
    locks = []
    for address in sorted(places_of(debug_lock_tables())):
        impl = gdb.Value(address).cast(pointer).dereference()
        try:
            maps = (impl["pending_references_"], impl["wait_will_unlock_"])
            if all(is_map(std_map) for std_map in maps):
                locks.append(LockState(impl, threads))
        except gdb.error:
            pass
    return locks


# ---------------------------------------------------------------------------
# info orvo-locks

WAITING_FUNCTION = re.compile(
    r"orvo::((DebugR?)?LockImpl_::(lock|TimedLock)|(Debug)?Lock::TryLockBefore)$"
)


def frames_of(thread):
    """The innermost frames of a thread, which stays selected."""
    thread.switch()
    frame = gdb.newest_frame()
    for _ in range(MOST_FRAMES):
        if frame is None:
            return
        yield frame
        frame = frame.older()


def wanted_by(frame):
    """What may be the address of the lock that a frame wants, or of its mutex;
    the best guess first."""
    name = frame.name() or ""
    if not WAITING_FUNCTION.match(name):
        return
    try:
        this = frame.read_var("this").dereference()
        if name.endswith("TryLockBefore"):
            this = pointee(this["impl_"], "orvo::LockImpl_")
        yield int(this.address)
    except (gdb.error, ValueError):
        pass
    # In optimised code, "this" may be unknown, and even wrong.
    for register in frame.architecture().registers("general"):
        try:
            yield int(frame.read_register(register))
        except (gdb.error, ValueError):
            pass


def calling_place(frame):
    """Where the program has called the library, such as kitchen.cpp:31, or ""."""
    while frame is not None and re.match("(orvo|std)::", frame.name() or "std::"):
        frame = frame.older()
    # Beyond a call that was the last of its function stands the thread's start.
    if frame is None or frame.name() == "start_thread":
        return ""
    place = frame.find_sal()
    if place.symtab is None:
        return ""
    return "%s:%d" % (shorten(place.symtab.fullname()), place.line)


def prefixed(prefix, text):
    return text and prefix + text


class Report:
    """Says which debug locks threads hold and wait for."""

    def __init__(self):
        self.threads = Threads()
        self.locks = find_debug_locks(self.threads)
        self.by_address = {lock.address: lock for lock in self.locks}
        self.by_address.update((lock.mutex_address, lock) for lock in self.locks)

    def wait(self, id):
        """The lock that a thread waits for and the place of its call, or None."""
        if id not in self.threads.by_id:
            return None
        with SelectionKept():
            for frame in frames_of(self.threads.by_id[id]):
                found = (self.by_address.get(address) for address in wanted_by(frame))
                lock = next(filter(None, found), None)
                if lock is None:
                    continue
                # A holder waits for itself, unless it is about to go on.
                goes_on = lock.is_recursive or not lock.recorded_holder
                if lock.holder == id and goes_on:
                    return None
                return lock, calling_place(frame) or lock.place(id)
        return None

    def condition_place(self, id):
        """Where a thread has begun a wait on a condition, or ""."""
        if id not in self.threads.by_id:
            return ""
        with SelectionKept():
            for frame in frames_of(self.threads.by_id[id]):
                if (frame.name() or "").startswith("orvo::Condition::"):
                    return calling_place(frame)
        return ""

    def lines(self, id):
        """What there is to say of a thread."""
        for lock in self.locks:
            if lock.holder == id:
                place = prefixed(", last announced from ", lock.place(id))
                yield "  holds %s, %s%s" % (lock.name, lock.depth_text(), place)
        for lock in self.locks:
            if id in lock.in_condition_wait:
                place = prefixed("\n    at ", self.condition_place(id))
                yield "  has released %s for a condition%s" % (lock.name, place)
        wait = self.wait(id)
        if wait:
            lock, place = wait
            yield "  waits for %s%s" % (lock.describe(), prefixed("\n    at ", place))

    def cycle(self, id):
        """The threads that wait for each other, this one among them, or none."""
        chain = []
        while id not in chain:
            chain.append(id)
            wait = self.wait(id)
            if not wait:
                return []
            id = wait[0].holder
        return chain if id == chain[0] else []

    def print(self, ids):
        reported = []
        for id in ids:
            lines = list(self.lines(id))
            if len(ids) == 1 and not lines:
                lines = ["  holds no debug lock and waits for none"]
            if lines:
                title = self.threads.describe(id)
                print_lines(title[0].upper() + title[1:], *lines)
                reported.append(id)
        if not reported:
            print_lines("No debug lock is held or waited for.")
        self.print_deadlocks(reported)

    def print_deadlocks(self, ids):
        printed = set()
        for id in ids:
            cycle = [] if id in printed else self.cycle(id)
            printed.update(cycle)
            text = " and ".join(self.threads.describe(member) for member in cycle)
            if len(cycle) == 1:
                print_lines("Deadlock: %s waits for itself." % text)
            elif cycle:
                print_lines("Deadlock: %s wait for each other." % text)


def print_lines(*lines):
    gdb.write("".join(line + "\n" for line in lines))


def check_program():
    """Raises an error that says what is missing."""
    if not gdb.selected_inferior().threads():
        raise gdb.GdbError("There is no process and no core file to look at.")
    if not debug_lock_tables():
        raise gdb.GdbError("The program does not use liborvo.")
    try:
        known = gdb.lookup_type("orvo::DebugLockImpl_").fields()
    except gdb.error:
        known = []
    if not known:
        raise gdb.GdbError(
            "The debug information of liborvo is missing: install the package"
            " liborvo1-dbgsym or build the library with -g."
        )


class InfoOrvoLocks(gdb.Command):
    """Show the debug locks of orvo that a thread holds or waits for.
Usage: info orvo-locks [THREAD | all]

THREAD is the number of a thread in gdb or its name in the program; without
it, the selected thread is meant. The locks are found in the program's memory,
that of a core file as well."""

    def __init__(self):
        super().__init__("info orvo-locks", gdb.COMMAND_STATUS)

    def invoke(self, argument, from_tty):
        check_program()
        report = Report()
        report.print(self.ids(argument.strip(), report))

    @staticmethod
    def ids(argument, report):
        threads = report.threads
        if not argument:
            return [thread_id(gdb.selected_thread())]
        if argument == "all":
            holders = {lock.holder for lock in report.locks if lock.holder}
            return list(threads.by_id) + sorted(holders - set(threads.by_id))
        ids = threads.find(argument)
        if not ids:
            raise gdb.GdbError("No thread has the number or the name %s." % argument)
        return ids


gdb.printing.register_pretty_printer(
    gdb.current_objfile(), OrvoPrinters(), replace=True
)
InfoOrvoLocks()
