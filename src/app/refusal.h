#pragma once

#include <string>

namespace quellix {

// The pages of the Options window, in its order.
enum class OptionsPage {
  kGeneral,
  kDeletion,
  kRuns,
  kSchedule,
  kSearch,
  kIgnoredFiles,
  kIgnoredExtensions,
  kIgnoredFolders,
  kFileTypes,
  kUserFiles,
  kUserFolders,
  kKeep,
  kCookies,
  kBackups
};
inline constexpr int kOptionsPages = 14;

// The fields that can be refused.
enum class OptionsField { kDuration, kLowDisk, kBackupFolder, kDates, kSize };

// Why a field of the Options cannot be saved, in a sentence for its user.
struct Refusal {
  OptionsField field;
  std::string sentence;
};

}  // namespace quellix
