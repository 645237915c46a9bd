"""Transaction logs of registry hives, read from their published layout: base block, entries of Windows
8.1 and later, dirty vector of the Windows before. Used by scripts/compare-replay; it shares nothing with
the program, so that the two can be compared.
"""
import struct

SECTOR, PAGE, WORD = 512, 4096, 0xFFFFFFFF
PRIMARY, OLD_LOG, NEW_LOG = 0, 1, 6  # the types of files that begin with a base block
# Where the fields of a base block lie.
FIELDS = {"first": 4, "second": 8, "minor": 24, "type": 28, "size": 40}
TIME, CHECKSUM = 12, 508


def rotated(word, bits):
    return (word << bits | word >> (32 - bits)) & WORD


def marvin32(data):
    """The 64-bit hash of an entry's parts; its seed is the number 0x82EF4D887A4E55C5."""
    low, high = 0x7A4E55C5, 0x82EF4D88
    padded = data + b"\x80" + bytes(3 - len(data) % 4)
    for word in (*struct.unpack(f"<{len(padded) // 4}I", padded), 0):
        low = low + word & WORD
        high ^= low
        low = rotated(low, 20) + high & WORD
        high = rotated(high, 9) ^ low
        low = rotated(low, 27) + high & WORD
        high = rotated(high, 19)
    return high << 32 | low


def field(base, name):
    return struct.unpack_from("<I", base, FIELDS[name])[0]


def moment(base):
    return base[TIME:TIME + 8]


def checksum(base):
    total = 0
    for word in struct.unpack("<127I", base[:CHECKSUM]):
        total ^= word
    return {0: 1, WORD: WORD - 1}.get(total, total)


def with_fields(base, **fields):
    """A base block with other numbers, and the checksum that belongs to it."""
    base = bytearray(base)
    for name, value in fields.items():
        struct.pack_into("<I", base, FIELDS[name], value)
    struct.pack_into("<I", base, CHECKSUM, checksum(base))
    return bytes(base)


def is_base(data, *types):
    return (len(data) >= SECTOR and data[:4] == b"regf" and field(data, "type") in types
            and data[CHECKSUM:SECTOR] == struct.pack("<I", checksum(data)))


def is_log(data, kind):
    return is_base(data, kind) and field(data, "first") == field(data, "second")


def read_entry(log, at):
    """Sequence, size of the bins, pages and end of the entry there; None where none is whole."""
    if log[at:at + 4] != b"HvLE" or at + 40 > len(log):
        return None
    size, _, sequence, bins, count = struct.unpack_from("<5I", log, at + 4)
    entry = log[at:at + size]
    if size < 40 + 8 * count or size % SECTOR or len(entry) < size or bins % PAGE or not bins:
        return None
    if struct.unpack_from("<2Q", entry, 24) != (marvin32(entry[40:]), marvin32(entry[:32])):
        return None
    pages, data = [], 40 + 8 * count
    for offset, length in struct.iter_unpack("<2I", entry[40:data]):
        pages.append((offset, entry[data:data + length]))
        data += length
    return (sequence, bins, pages, at + size) if data <= size else None


def apply_entries(log, bins, expected):
    """The bins with what the log adds, and the number expected next."""
    at = SECTOR
    while (entry := read_entry(log, at)) and entry[0] == expected:
        _, size, pages, at = entry
        bins = bytearray(bins[:size].ljust(size, b"\0"))
        for offset, data in pages:
            bins[offset:offset + len(data)] = data
        expected += 1
    return bytes(bins), expected


def replay_entries(base, bins, logs):
    """From logs of entries, the one that begins earlier first."""
    expected = None
    for log in sorted(logs, key=lambda log: field(log, "first")):
        begin = field(log, "first") if expected is None else expected
        if begin >= field(base, "second"):
            bins, reached = apply_entries(log, bins, begin)
            expected = reached if reached != begin else expected
    return bins if expected is not None else None


def replay_vector(log, bins):
    """From a log whose vector has a bit for each sector of the bins."""
    size = field(log, "size")
    vector = log[SECTOR + 4:SECTOR + 4 + size // SECTOR // 8]
    at = SECTOR + (4 + len(vector) + SECTOR - 1) // SECTOR * SECTOR
    bins = bytearray(bins[:size].ljust(size, b"\0"))
    for place in range(0, size, SECTOR):
        bit = place // SECTOR
        if vector[bit // 8] >> bit % 8 & 1:
            if len(log) < at + SECTOR:
                return None
            bins[place:place + SECTOR] = log[at:at + SECTOR]
            at += SECTOR
    return bytes(bins)


def replay(hive, logs):
    """The bins as a Windows would have them at its next start; None where no log fits."""
    base, bins = hive[:PAGE], hive[PAGE:]
    news, olds = ([log for log in logs if is_log(log, kind)] for kind in (NEW_LOG, OLD_LOG))
    whole = is_base(base, PRIMARY)
    if whole and field(base, "first") == field(base, "second"):
        return bins[:field(base, "size")]
    if news:
        latest = max(news, key=lambda log: field(log, "first"))
        return replay_entries(base, bins, news) if whole else replay_entries(latest, bins, [latest])
    written = moment(base) if whole else bins[20:28]
    fitting = [log for log in olds if moment(log) == written and log[SECTOR:][:4] == b"DIRT"]
    return replay_vector(fitting[0], bins) if fitting else None
