"""Registry hives that a power cut left, made with hivex: a hive of random steps, what of them stands in
the file, and the logs that Windows keeps of them. Used by scripts/compare-replay.
"""
import os
import struct

import hivex

from hive_logs import (CHECKSUM, NEW_LOG, OLD_LOG, PAGE, PRIMARY, SECTOR, TIME, WORD, field, marvin32,
                       with_fields)

EXPLORER = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer"
RUN = EXPLORER + "\\RunMRU"
STAMP = b"\x11\x22\x33\x44\x55\x66\xdd\x01"  # when the hives were written
NT = "Microsoft\\Windows NT\\CurrentVersion"


def empty_hive(minor):
    """A hive that holds its top key alone."""
    base = struct.pack("<4s2I8s7I", b"regf", 1, 1, STAMP, 1, minor, PRIMARY, 1, 0x20, PAGE, 1)
    bins = bytearray(struct.pack("<4s2I8x8s", b"hbin", 0, PAGE, STAMP).ljust(PAGE, b"\0"))
    struct.pack_into("<i2sHQ10I", bins, 0x20, -96, b"nk", 0x2C, 0, 0, WORD, 0, 0, WORD, WORD, 0, WORD,
                     0x80, WORD)
    struct.pack_into("<2H4s", bins, 0x20 + 76, 4, 0, b"ROOT")
    struct.pack_into("<i2sH5I", bins, 0x80, -48, b"sk", 0, 0x80, 0x80, 1, 20, 0x80000001)
    struct.pack_into("<i", bins, 0xB0, PAGE - 0xB0)
    return with_fields(base.ljust(PAGE, b"\0")) + bytes(bins)


def text(value):
    return (value + "\0").encode("utf-16-le")


def key(hive, path):
    node = hive.root()
    for name in path.split("\\"):
        node = hive.node_get_child(node, name) or hive.node_add_child(node, name)
    return node


def put(hive, path, name, kind, data):
    hive.node_set_value(key(hive, path), {"key": name, "t": kind, "value": data})


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(data)


def read(path):
    with open(path, "rb") as file:
        return file.read()


def make_hive(path, minor, values):
    write(path, empty_hive(minor))
    hive = hivex.Hivex(path, write=True)
    for value in values:
        put(hive, *value)
    hive.commit(None)


def make_windows(volume):
    config, profiles = volume + "/Windows/System32/config/", NT + "\\ProfileList\\S-1-5-21-1-2-3-1001"
    make_hive(config + "SOFTWARE", 5, [
        (NT, "SystemRoot", 1, text("C:\\Windows")), (NT, "CurrentVersion", 1, text("6.3")),
        (profiles, "ProfileImagePath", 2, text("%SystemDrive%\\Users\\Tester"))])
    make_hive(config + "SYSTEM", 5, [("Select", "Current", 4, struct.pack("<I", 1)),
                                     ("ControlSet001\\Control\\Nls\\CodePage", "ACP", 1, text("1252"))])
    os.makedirs(volume + "/Users/Tester/AppData/Local/Temp")
    os.makedirs(volume + "/Windows/Temp")


def edit_once(dice, hive, node):
    """Something random below a key, or to its values."""
    children = [n for n in hive.node_children(node) if hive.node_name(n) not in RUN.split("\\")]
    choice = dice.randrange(8)
    name = dice.choice("abcdefgh") + dice.choice(["", "ä", "Ω", " long" * 9]) + str(dice.randrange(30))
    if choice == 0 and children:
        hive.node_delete_child(dice.choice(children))
    elif choice < 4 and not hive.node_get_child(node, name):
        edit_once(dice, hive, hive.node_add_child(node, name))
    elif choice == 4 and children:
        edit_once(dice, hive, dice.choice(children))
    else:
        data = dice.randbytes(dice.choice([0, 3, 4, 5, 40, 700, 12000]))
        hive.node_set_value(node, {"key": name, "t": dice.randrange(12), "value": data})


def edit(dice, path, times):
    hive = hivex.Hivex(path, write=True)
    for _ in range(times):
        edit_once(dice, hive, dice.choice([hive.root(), key(hive, "Software"), key(hive, EXPLORER)]))
    for name in dice.sample("abcdefgh", dice.randrange(1, 4)):
        put(hive, RUN, name, 1, text(f"run {dice.randrange(1000)}\\1"))
    hive.commit(None)
    data = read(path)
    return data[PAGE:PAGE + field(data, "size")]


def tree(path):
    """Each key of a hive file with its time and values."""
    hive, keys = hivex.Hivex(path), {}

    def visit(node, above):
        values = sorted((hive.value_key(v), *hive.value_value(v)) for v in hive.node_values(node))
        keys[above] = (hive.node_timestamp(node), values)
        for child in hive.node_children(node):
            visit(child, above + "\\" + hive.node_name(child))

    visit(hive.root(), "")
    return keys


class Crash:
    """The steps of a hive, and how Windows writes them down.

    A kind of leaving it sets `base`, `bins` and `logs`, and returns the step which that reaches, None
    where no log fits.
    """

    def __init__(self, dice, path):
        self.dice = dice
        make_hive(path, dice.choice([3, 5]), [("Environment", "TEMP", 2, text("%USERPROFILE%\\Temp"))])
        self.steps = [edit(dice, path, dice.randrange(60))]
        for _ in range(dice.randrange(3, 6)):
            self.steps.append(edit(dice, path, dice.randrange(12)))
        if dice.random() < 0.2:
            self.add_passing_bin(dice.randrange(1, len(self.steps)))
        self.last = len(self.steps) - 1
        self.stored = dice.choice([7, 0x7FFFFFFE, dice.randrange(9, 1 << 31)])
        self.begin = self.stored + 1  # the number of the first entry
        self.cut = dice.choice([self.pages, self.runs, self.sectors])
        self.base = with_fields(read(path)[:PAGE], first=self.begin, second=self.stored,
                                size=len(self.steps[0]))
        self.whole, self.bins, self.logs = self.base, self.steps[0], {}

    def add_passing_bin(self, step):
        before = self.steps[step - 1]
        free = struct.pack("<4s2I20xi", b"hbin", len(before), PAGE, PAGE - 32).ljust(PAGE, b"\0")
        self.steps.insert(step, before + free)

    def pages(self, before, after, unit=PAGE):
        """Where, and for how many bytes, a step differs from another."""
        return [(at, unit) for at in range(0, len(after), unit)
                if at >= len(before) or after[at:at + unit] != before[at:at + unit]]

    def sectors(self, before, after):
        return self.pages(before, after, SECTOR)

    def runs(self, before, after):
        runs = []
        for at, size in self.pages(before, after):
            if runs and sum(runs[-1]) == at:
                at, size = runs[-1][0], runs.pop()[1] + size
            runs.append((at, size))
        return runs

    def entry(self, step, sequence=None, bins=None):
        """The log entry that makes a step out of the one before."""
        after = self.steps[step]
        places = self.cut(self.steps[step - 1], after)
        parts = b"".join(struct.pack("<2I", *place) for place in places)
        parts += b"".join(after[at:at + size] for at, size in places)
        parts += bytes(-(40 + len(parts)) % SECTOR)
        sequence = self.begin + step - 1 if sequence is None else sequence
        head = struct.pack("<4s5IQ", b"HvLE", 40 + len(parts), self.dice.randrange(2), sequence,
                           bins or len(after), len(places), marvin32(parts))
        return head + struct.pack("<Q", marvin32(head)) + parts

    def log_base(self, sequence, **fields):
        return with_fields(self.base[:SECTOR], **{"first": sequence, "second": sequence, **fields})

    def log(self, first, end):
        """A log of the steps from `first` to before `end`."""
        base = self.log_base(self.begin + first - 1, type=NEW_LOG, size=len(self.steps[first - 1]))
        return base + b"".join(self.entry(step) for step in range(first, end))

    def vector_log(self, before=0):
        """The older form: all that changed since a step, in one piece."""
        after = self.steps[-1]
        size = self.dice.choice([PAGE, SECTOR])
        dirty = dict.fromkeys(at for place, unit in self.pages(self.steps[before], after, size)
                              for at in range(place, place + unit, SECTOR))
        bits = sum(1 << at // SECTOR for at in dirty)
        vector = b"DIRT" + bits.to_bytes(len(after) // SECTOR // 8, "little")
        vector += bytes(-len(vector) % SECTOR)
        sequence = self.begin - self.dice.randrange(2)  # since Windows Vista, and before
        base = self.log_base(sequence, type=OLD_LOG, size=len(after))
        return base + vector + b"".join(after[at:at + SECTOR] for at in dirty)

    def old_log(self):
        """A log that was carried out long ago."""
        sequence = self.stored - self.dice.randrange(3, 7)
        return self.log_base(sequence, type=NEW_LOG) + self.entry(1, sequence)

    def names(self, *logs):
        """Puts the logs beside the hive in either order, named as one Windows or another does."""
        names = self.dice.sample([1, 2], 2)
        stem = self.dice.choice(["NTUSER.DAT.LOG", "ntuser.dat.LOG"])
        self.logs = {stem + str(name): log for name, log in zip(names, logs) if log is not None}

    def write_half(self):
        """Some of the pages have reached the hive itself."""
        bins = bytearray(self.bins.ljust(max(map(len, self.steps)), b"\0"))
        for at, size in self.pages(self.steps[0], self.steps[-1]):
            if self.dice.randrange(2):
                bins[at:at + size] = self.steps[-1][at:at + size]
        self.bins = bytes(bins)

    def break_base(self):
        at = self.dice.randrange(CHECKSUM)
        self.base = self.base[:at] + bytes([self.base[at] ^ 1 << self.dice.randrange(8)]) + self.base[at + 1:]


def beside(crash):
    """What may lie in the log that is not used."""
    return crash.dice.choice([None, b"", bytes(2 * SECTOR), crash.old_log()])


def behind(crash):
    """What may lie behind the last entry."""
    old = crash.entry(1, crash.begin - 4)
    return crash.dice.choice([b"", bytes(SECTOR), old, old[:-SECTOR]])


def one_log(crash):
    crash.names(crash.log(1, crash.last + 1) + behind(crash), beside(crash))
    crash.write_half()
    return crash.last


def two_logs(crash):
    turn = crash.dice.randrange(2, crash.last + 1)
    crash.names(crash.log(1, turn) + behind(crash), crash.log(turn, crash.last + 1) + behind(crash))
    crash.write_half()
    return crash.last


def torn_entry(crash):
    entry = crash.entry(crash.last)
    end = crash.dice.randrange(1, len(entry) - 1)
    lost = crash.dice.choice([b"", bytes(len(entry) - end), crash.dice.randbytes(len(entry) - end)])
    crash.names(crash.log(1, crash.last) + entry[:end] + lost, beside(crash))
    return crash.last if entry[:end] + lost == entry else crash.last - 1


def wrong_hash(crash):
    step = crash.dice.randrange(2, crash.last + 1)
    entry = bytearray(crash.entry(step))
    entry[crash.dice.randrange(8, len(entry))] ^= 1 << crash.dice.randrange(8)
    crash.names(crash.log(1, step) + bytes(entry) + crash.log(step, crash.last + 1)[SECTOR:], beside(crash))
    return step - 1


def odd_size(crash):
    step = crash.dice.randrange(2, crash.last + 1)
    odd = crash.entry(step, bins=len(crash.steps[step]) + SECTOR)
    crash.names(crash.log(1, step) + odd + crash.log(step + 1, crash.last + 1)[SECTOR:], beside(crash))
    return step - 1


def entry_missing(crash):
    step = crash.dice.randrange(2, crash.last)
    crash.names(crash.log(1, step) + crash.log(step + 1, crash.last + 1)[SECTOR:], beside(crash))
    return step - 1


def gap_between_logs(crash):
    step = crash.dice.randrange(2, crash.last)
    crash.names(crash.log(1, step), crash.log(step + 1, crash.last + 1))
    return step - 1


def begins_at_second_number(crash):
    crash.begin -= 1
    return crash.dice.choice([one_log, two_logs])(crash)


def first_number_ahead(crash):
    crash.base = with_fields(crash.base, first=crash.begin + crash.dice.randrange(1, 5))
    return crash.dice.choice([one_log, two_logs])(crash)


def begins_later(crash):
    crash.begin += crash.dice.randrange(1, 9)
    crash.names(crash.log(1, crash.last + 1) + behind(crash), beside(crash))
    return crash.last


def broken_base(crash):
    crash.names(crash.log(1, crash.last + 1) + behind(crash), beside(crash))
    crash.break_base()
    return crash.last


def broken_base_two_logs(crash):
    turn = crash.dice.randrange(2, crash.last + 1)
    crash.names(crash.log(1, turn), crash.log(turn, crash.last + 1))
    crash.bins = crash.steps[turn - 1]
    crash.break_base()
    return crash.last


def newer_log(crash):
    crash.base = with_fields(crash.base, second=crash.begin)
    crash.begin += crash.dice.randrange(3)
    crash.names(crash.log(1, crash.last + 1), beside(crash))
    return 0


def logs_carried_out(crash):
    last = crash.begin + crash.last - 1
    crash.bins = crash.steps[-1]
    crash.base = with_fields(crash.base, first=last, second=last, size=len(crash.bins))
    crash.names(crash.log(1, crash.last + 1) + behind(crash), beside(crash))
    return crash.last


def vector(crash):
    crash.names(crash.vector_log(), crash.dice.choice([None, b""]))
    crash.write_half()
    return crash.last


def single_vector_log(crash):
    crash.logs = {"NTUSER.DAT.LOG": crash.vector_log()}
    crash.write_half()
    return crash.last


def vector_and_older(crash):
    older = bytearray(crash.vector_log(crash.last - 1))
    older[TIME] ^= 1
    crash.names(crash.vector_log(), with_fields(older[:SECTOR]) + older[SECTOR:])
    crash.write_half()
    return crash.last


def vector_and_broken_base(crash):
    crash.names(crash.vector_log(), None)
    crash.break_base()
    return crash.last


def no_log(crash):
    crash.names(*crash.dice.choice([(), (b"",), (b"", b""), (bytes(PAGE),)]))


def old_logs(crash):
    crash.names(crash.old_log(), crash.dice.choice([None, crash.old_log()]))


def broken_log_base(crash):
    """Logs that would fit but for their base block."""
    log = bytearray(crash.dice.choice([crash.log(1, crash.last + 1), crash.vector_log()]))
    at = crash.dice.randrange(SECTOR)
    log[at] ^= 1 << crash.dice.randrange(8)
    crash.names(bytes(log))


def unequal_numbers(crash):
    log = crash.dice.choice([crash.log(1, crash.last + 1), crash.vector_log()])
    base = with_fields(log[:SECTOR], second=field(log, "first") - 1)
    crash.names(base + log[SECTOR:], None)


def late_entries(crash):
    log = crash.log(1, crash.last + 1)
    crash.names(log[:SECTOR] + crash.log(2, crash.last + 1)[SECTOR:])


def vector_of_other_time(crash):
    log = bytearray(crash.vector_log())
    log[TIME + crash.dice.randrange(8)] ^= 1
    crash.names(with_fields(log[:SECTOR]) + log[SECTOR:])


def torn_vector(crash):
    log = crash.vector_log()
    crash.names(log[:crash.dice.randrange(SECTOR, len(log))])


# What happened, the way of making it, and whether to refuse the hive is as good as what Windows does.
KINDS = {
    "one log": (one_log, False),
    "two logs": (two_logs, False),
    "torn entry": (torn_entry, False),
    "wrong hash": (wrong_hash, False),
    "size of no whole pages": (odd_size, False),
    "entry missing": (entry_missing, False),
    "gap between logs": (gap_between_logs, False),
    "log begins at second number": (begins_at_second_number, False),
    "first number ahead": (first_number_ahead, False),
    "log begins later": (begins_later, True),
    "broken base block": (broken_base, False),
    "broken base block, two logs": (broken_base_two_logs, False),
    "in order, logs carried out": (logs_carried_out, False),
    "in order, newer log": (newer_log, True),
    "dirty vector": (vector, False),
    "dirty vector in the only log": (single_vector_log, False),
    "dirty vector and older": (vector_and_older, False),
    "dirty vector, broken base block": (vector_and_broken_base, False),
    "no log": (no_log, False),
    "old logs": (old_logs, False),
    "log's base block broken": (broken_log_base, False),
    "log's numbers unequal": (unequal_numbers, False),
    "log without its first entry": (late_entries, False),
    "dirty vector of other time": (vector_of_other_time, False),
    "torn dirty vector": (torn_vector, False)}
