#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quellix {

// What the logs beside a hive mean for it.
enum class HiveLogs {
  kNothingNew,  // the hive is up to date
  kReplayed,    // it was brought up to date
  kUnfit,       // it is not up to date, and they do not bring it there
};

// Brings the bytes of a whole hive file up to date from those of its logs as Windows does at its
// next start: from the entries of the logs that were begun since the hive was stored, the earlier
// log first, up to the first that is missing or broken, or from a log of Windows 8 and before,
// which holds all pages of one writing. A header that is broken comes from the log that was begun
// last. Unless it replays, the hive stays as it is. A hive that was closed properly is never
// changed: what a log holds beyond it, Windows drops.
HiveLogs ReplayLogs(std::string& hive, const std::vector<std::string>& logs);

// Whether the first sector of a hive is that of one that was closed properly.
bool IsClosedHive(std::string_view header);

// Whether a log may hold something for a hive, without reading all of it: `read` returns the sector
// at a place of the log, less or nothing behind its end.
bool MayConcern(std::string_view hive_header, const std::function<std::string(uint64_t at)>& read);

}  // namespace quellix
