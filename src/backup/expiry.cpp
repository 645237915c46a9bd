#include "backup/expiry.h"

#include <memory>
#include <utility>
#include <vector>

#include "backup/backup_names.h"
#include "platform/error.h"
#include "platform/filetime.h"
#include "platform/text.h"

namespace quellix {
namespace {

bool IsOurs(std::string_view name) {
  return IsArchiveName(name) || (MatchesMask(name, "R_*.reg") && DateOfArchive(name));
}

std::vector<std::pair<std::string, FileInfo>> WrittenBefore(Folder& folder, int64_t time) {
  std::vector<std::pair<std::string, FileInfo>> files;
  folder.Enumerate(Detail::kSize, [&](const Entry& entry) {
    const FileInfo& info = entry.info;
    const bool is_file = !info.is_folder && !info.is_link;
    if (is_file && info.last_write < time && IsOurs(entry.name))
      files.emplace_back(entry.name, info);
    return true;
  });
  return files;
}

}  // namespace

void RemoveExpiredBackups(const Machine& machine, std::string_view folder, int days,
                          const ExpirySteps& steps) {
  if (days <= 0) return;
  try {
    const std::unique_ptr<Folder> open = machine.files.OpenFolder(folder);
    if (!open) return;
    const int64_t before = machine.system.UtcNow() - days * kFiletimesADay;
    for (const auto& [name, info] : WrittenBefore(*open, before)) {
      const std::string path = std::string(folder) + name;
      try {
        if (!steps.goes(*open, path, info)) continue;
        open->RemoveFile(name);
        steps.removed(path, info);
      } catch (const Error& error) {
        steps.stayed(path, SentenceOf(error));
      }
    }
  } catch (const Error&) {  // it is missing, or nobody can list it
  }
}

}  // namespace quellix
