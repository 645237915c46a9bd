#include "backup/leftovers.h"

#include <algorithm>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kNotes = "Quellix restores into\n";
constexpr uint64_t kMostNotes = 4 << 20;

// The folders that notes name; none when these are no notes.
std::vector<std::string> ReadNotes(RandomFile& file) {
  if (file.Size() > kMostNotes) return {};
  std::string text(static_cast<size_t>(file.Size()), '\0');
  text.resize(file.Read(0, text));
  if (!text.starts_with(kNotes)) return {};
  return Split(std::string_view(text).substr(kNotes.size()), '\n');
}

std::vector<std::string> TemporaryNamesIn(Folder& folder) {
  std::vector<std::string> names;
  folder.Enumerate(Detail::kKind, [&](const Entry& entry) {
    const bool is_file = !entry.info.is_folder && !entry.info.is_link;
    if (is_file && IsTemporaryName(entry.name)) names.emplace_back(entry.name);
    return true;
  });
  return names;
}

// A folder made for temporary files alone that is on another disk than those that are here now: its
// note is for the start that finds it.
bool IsOutOfReach(FileSystem& files, const std::string& path) {
  return IsTemporaryName(NamePart(path)) && !files.Look(path, Detail::kKind);
}

// Who can be opened for writing alone is held by nobody.
bool ClearOne(FileSystem& files, Folder& folder, const std::string& name,
              std::vector<std::string>& noted) try {
  auto file = folder.Open(name, OpenMode::kReadAndCreate);
  const std::vector<std::string> paths = ReadNotes(*file);
  file.reset();  // Windows removes nothing that is open
  noted.insert(noted.end(), paths.begin(), paths.end());
  if (std::ranges::any_of(paths, [&](const auto& path) { return IsOutOfReach(files, path); }))
    return false;
  folder.RemoveFile(name);
  return true;
} catch (const Error&) {
  return false;
}

size_t ClearFolder(FileSystem& files, const std::string& path,
                   std::vector<std::string>& noted) try {
  const auto folder = files.OpenFolder(path);
  size_t removed = 0;
  if (!folder) return 0;
  for (const std::string& name : TemporaryNamesIn(*folder)) {
    removed += ClearOne(files, *folder, name, noted);
  }
  return removed;
} catch (const Error&) {
  return 0;
}

// What a kill left is held by nobody.
bool IsHeld(Folder& folder, const std::string& name) try {
  folder.Open(name, OpenMode::kReadKept);
  return false;
} catch (const Error& error) {
  return error.kind() == Error::Kind::kInUse;
}

// Those of somebody at work; none when they cannot be read.
std::vector<std::string> LivingNotesIn(Folder& folder, const std::string& name) try {
  if (!IsHeld(folder, name)) return {};
  return ReadNotes(*folder.Open(name, OpenMode::kRead));
} catch (const Error&) {
  return {};
}

bool IsFiller(FileSystem& files, const std::string& path, std::string_view root) {
  return IsTemporaryName(NamePart(path)) && EqualsNoCase(path.substr(0, root.size()), root) &&
         files.Look(path, Detail::kKind).has_value();
}

// One that was made for such files alone, once it is empty.
void RemoveOwnFolder(FileSystem& files, const std::string& path) try {
  if (IsTemporaryName(NamePart(path))) files.RemoveFolder(path);
} catch (const Error&) {
  return;
}

}  // namespace

RestoreNotes::~RestoreNotes() {
  file_.reset();
  if (name_.empty()) return;
  try {
    open_->RemoveFile(name_);
  } catch (const Error&) {
    return;  // the next start removes it
  }
}

void RestoreNotes::Begin() {
  is_begun_ = true;
  open_ = files_.OpenFolder(folder_);
  if (!open_) return;
  const std::string name = TemporaryName();
  file_ = open_->Open(name, OpenMode::kCreateNew);
  name_ = name;
  file_->Write(0, kNotes);
  size_ = kNotes.size();
}

void RestoreNotes::Add(std::string_view path) try {
  if (!is_begun_) Begin();
  if (!file_) return;
  const std::string line = std::string(path) + "\n";
  file_->Write(size_, line);
  size_ += line.size();
} catch (const Error&) {
  return;
}

bool HasFiller(FileSystem& files, const std::string& folder, std::string_view root) try {
  const auto open = files.OpenFolder(folder);
  if (!open) return false;
  const std::vector<std::string> names = TemporaryNamesIn(*open);
  return std::ranges::any_of(names, [&](const std::string& name) {
    return std::ranges::any_of(LivingNotesIn(*open, name),
                               [&](const auto& path) { return IsFiller(files, path, root); });
  });
} catch (const Error&) {
  return false;
}

size_t ClearLeftovers(FileSystem& files, std::span<const std::string> folders) {
  std::vector<std::string> noted, more;
  size_t removed = 0;
  for (const std::string& folder : folders) removed += ClearFolder(files, folder, noted);
  for (const std::string& folder : noted) {
    if (folder.empty()) continue;
    removed += ClearFolder(files, folder, more);
    RemoveOwnFolder(files, folder);
  }
  return removed;
}

}  // namespace quellix
