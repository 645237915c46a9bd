// Whether Windows closed a hive properly.
#include "platform/path.h"
#include "platform/volume/hive.h"

namespace quellix {
namespace {

constexpr off_t kFirstSequence = 4, kSecondSequence = 8, kMinorVersion = 24;
constexpr off_t kFirstLogEntry = 512;

// Whether a log of Windows 8.1 and later holds an entry the hive has not got yet: their sequence
// numbers go on from the hive's own.
bool HasPendingEntry(int log, uint32_t hive_sequence) {
  constexpr uint32_t kEntryMark = 0x454C7648;  // "HvLE"
  constexpr uint32_t kSmallestEntry = 40;
  for (off_t at = kFirstLogEntry; ReadNumber(log, at) == kEntryMark;) {
    const uint32_t size = ReadNumber(log, at + 4), sequence = ReadNumber(log, at + 12);
    if (sequence >= hive_sequence) return true;
    if (size < kSmallestEntry) return false;
    at += size;
  }
  return false;
}

}  // namespace

std::string ReadOnlyReason(VolumeFileSystem& files, const std::string& path, int fd) {
  const uint32_t sequence = ReadNumber(fd, kSecondSequence);
  bool clean = ReadNumber(fd, kFirstSequence) == sequence;
  for (const char* extension : {".LOG", ".LOG1", ".LOG2"}) {
    const UniqueFd log = clean ? files.OpenForRead(path + extension) : UniqueFd();
    if (log && HasPendingEntry(log.get(), sequence)) clean = false;
  }
  if (clean) return {};
  return "Windows was not shut down cleanly: the registry hive " + path +
         " has changes that are not stored yet, so it is only read. Start Windows once and shut it "
         "down.";
}

uint32_t HiveMinorVersion(int fd) { return ReadNumber(fd, kMinorVersion); }

}  // namespace quellix
