#include "backup/expiry.h"

#include <memory>
#include <utility>
#include <vector>

#include "backup/backup_names.h"
#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr int64_t kFiletimesADay = 864'000'000'000;

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

void RemoveExpiredBackups(
    const Machine& machine, std::string_view folder, int days,
    const std::function<void(const std::string& path, const FileInfo& file)>& removed,
    const std::function<void(const std::string& path, std::string_view why)>& stayed) {
  if (days <= 0) return;
  try {
    const std::unique_ptr<Folder> open = machine.files.OpenFolder(folder);
    if (!open) return;
    for (const auto& [name, info] :
         WrittenBefore(*open, machine.system.UtcNow() - days * kFiletimesADay)) {
      const std::string path = std::string(folder) + name;
      try {
        open->RemoveFile(name);
        removed(path, info);
      } catch (const Error& error) {
        stayed(path, error.what());
      }
    }
  } catch (const Error&) {  // it is missing, or nobody can list it
  }
}

}  // namespace quellix
