// Transaction logs beside a hive: whatever is in one, the hive is brought up to date or stays as it
// is, and the heads of the entries alone tell when more must be read.
#include "fuzz/check.h"
#include "platform/volume/hive_check.h"
#include "platform/volume/hive_format.h"
#include "platform/volume/hive_log.h"
#include "support/hive_file.h"

using namespace quellix;

namespace {

std::string Dirty(std::string hive) {
  PutNumber(hive, hive_format::kFirstSequence,
            NumberAt(hive, hive_format::kSecondSequence) + uint64_t{1});
  PutNumber(hive, hive_format::kChecksum, hive_format::HeaderChecksum(hive));
  return hive;
}

void Replay(const std::string& hive, const std::string& log) {
  std::string bytes = hive;
  const HiveLogs fate = ReplayLogs(bytes, {log});
  Check(fate == HiveLogs::kReplayed || bytes == hive);
  if (fate == HiveLogs::kReplayed) Check(IsClosedHive(bytes) && HasSoundBins(bytes));
  const auto read = [&log](uint64_t at) {
    return at < log.size() ? log.substr(at, hive_format::kSector) : std::string();
  };
  if (IsClosedHive(hive) && fate != HiveLogs::kNothingNew) Check(MayConcern(hive, read));
}

}  // namespace

// The first byte tells the kind of log; the rest stands behind its header, with hashes that fit.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string closed = EmptyHive(), dirty = Dirty(closed);
  if (size == 0) return 0;
  const std::string rest(BytesOf(data, size).substr(1));
  const std::string log = data[0] == 'v'
                              ? HiveVectorLog(closed, closed).substr(0, hive_format::kSector) + rest
                              : HiveLog(closed, WithHashes(rest));
  Replay(closed, log);
  Replay(dirty, log);
  return 0;
}
