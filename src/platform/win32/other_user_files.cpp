#include "platform/win32/other_user_files.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/forwarding_folder.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/win32/win32_file_system.h"
#include "platform/win32/win32_path.h"

namespace quellix {
namespace {

bool Begins(std::string_view path, std::string_view folder) {
  return EqualsNoCase(path.substr(0, folder.size()), folder) &&
         (path.size() == folder.size() || path[folder.size()] == '\\');
}

// A folder that is read, and whose content nobody changes.
class OutsideFolder : public ForwardingFolder {
 public:
  OutsideFolder(const OtherUserFiles& files, std::string path, std::unique_ptr<Folder> folder)
      : ForwardingFolder(std::move(folder)), files_(files), path_(std::move(path)) {}

  std::unique_ptr<Folder> OpenFolder(std::string_view names, OpenFor use) override {
    auto folder = ForwardingFolder::OpenFolder(names, use);
    if (!folder) return nullptr;
    return std::make_unique<OutsideFolder>(files_, At(names), std::move(folder));
  }
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
    if (mode != OpenMode::kRead) Refuse(name);
    return ForwardingFolder::Open(name, mode);
  }
  void CreateFolder(std::string_view name) override {
    if (!files_.LeadsToOwn(At(name))) Refuse(name);
    ForwardingFolder::CreateFolder(name);
  }
  void Rename(std::string_view from, std::string_view, IfThere) override { Refuse(from); }
  void MoveTo(std::string_view from, Folder&, std::string_view) override { Refuse(from); }
  void Flush() override {}
  void RemoveFile(std::string_view name) override { Refuse(name); }
  void RemoveFolder(std::string_view name) override { Refuse(name); }
  void RequireRemovable(std::string_view name) override { Refuse(name); }
  void Recycle(std::string_view name) override { Refuse(name); }
  void RemoveAtStart(std::string_view name) override { Refuse(name); }
  void SetAttributes(std::string_view name, uint32_t) override { Refuse(name); }

 private:
  std::string At(std::string_view name) const { return WithBackslash(path_) + std::string(name); }
  [[noreturn]] void Refuse(std::string_view name) const { files_.Refuse(At(name)); }

  const OtherUserFiles& files_;
  std::string path_;
};

}  // namespace

bool IsAtOrBelow(std::string_view folder, std::string_view path) {
  path = WithoutBackslash(path);
  if (!Begins(path, folder)) return false;
  return path.size() == folder.size() ||
         std::ranges::all_of(Split(path.substr(folder.size() + 1), '\\'), IsName);
}

OtherUserFiles::OtherUserFiles(FileSystem& inner, const UserProfile& user,
                               const std::vector<std::string>& own)
    : ForwardingFileSystem(inner), name_(user.name), profile_(user.profile) {
  for (const std::string& folder : own) {
    const std::string_view plain = WithoutBackslash(folder);
    if (plain.size() > std::string_view("C:\\").size() && !Begins(profile_, plain))
      own_.emplace_back(plain);
  }
}

OtherUserFiles::Place OtherUserFiles::PlaceOf(std::string_view path) const {
  const std::string_view plain = WithoutBackslash(path);
  if (Begins(plain, profile_)) {
    if (plain.size() == profile_.size()) return Place::kProfile;
    return IsAtOrBelow(profile_, plain) ? Place::kBelow : Place::kNowhere;
  }
  const bool is_own = std::ranges::any_of(
      own_, [plain](const std::string& folder) { return IsAtOrBelow(folder, plain); });
  if (is_own) return Place::kOwn;
  return plain.starts_with("\\\\") ? Place::kNowhere : Place::kOutside;
}

bool OtherUserFiles::LeadsToOwn(std::string_view folder) const {
  return std::ranges::any_of(own_, [folder](const std::string& own) {
    return IsAtOrBelow(WithoutBackslash(folder), own);
  });
}

void OtherUserFiles::Refuse(std::string_view path) const {
  throw Error(Error::Kind::kDenied, Say("%1 lies outside the profile of %2.", path, name_));
}

std::unique_ptr<Folder> OtherUserFiles::Wrapped(std::string_view path,
                                                std::unique_ptr<Folder> folder) const {
  if (!folder) return nullptr;
  return std::make_unique<OutsideFolder>(*this, std::string(path), std::move(folder));
}

std::unique_ptr<Folder> OtherUserFiles::OpenFolder(std::string_view path) {
  switch (PlaceOf(path)) {
    case Place::kProfile:
    case Place::kOwn:
      return inner_.OpenFolder(path);
    case Place::kOutside:
      return Wrapped(path, inner_.OpenFolder(path));
    case Place::kNowhere:
      return nullptr;
    case Place::kBelow:
      break;
  }
  const std::unique_ptr<Folder> profile = inner_.OpenFolder(profile_);
  return profile ? profile->OpenFolder(WithoutBackslash(path).substr(profile_.size() + 1))
                 : nullptr;
}

std::unique_ptr<Folder> OtherUserFiles::OpenLinked(std::string_view path) {
  return PlaceOf(path) == Place::kOutside ? Wrapped(path, inner_.OpenLinked(path))
                                          : OpenFolder(path);
}

std::optional<FileInfo> OtherUserFiles::Look(std::string_view path, Detail detail) {
  const Place place = PlaceOf(path);
  if (place == Place::kNowhere) return std::nullopt;
  if (place != Place::kBelow) return inner_.Look(path, detail);
  const std::string_view plain = WithoutBackslash(path);
  try {
    const std::unique_ptr<Folder> folder = OpenFolder(FolderPart(plain));
    const auto info = folder ? folder->Look(NamePart(plain), detail) : std::nullopt;
    return info && !info->is_folder && path.ends_with('\\') ? std::nullopt : info;
  } catch (const Error&) {
    return std::nullopt;
  }
}

// Behind a link, and elsewhere, it cannot be known.
bool OtherUserFiles::IsGone(std::string_view path) {
  const Place place = PlaceOf(path);
  if (place == Place::kNowhere) return false;
  if (place != Place::kBelow) return inner_.IsGone(path);
  const std::string_view plain = WithoutBackslash(path);
  try {
    const std::unique_ptr<Folder> folder = OpenFolder(FolderPart(plain));
    return !folder || !folder->Look(NamePart(plain), Detail::kKind);
  } catch (const Error&) {
    return false;
  }
}

std::optional<std::string> OtherUserFiles::ReadWholeFile(std::string_view path, uint64_t limit) {
  const Place place = PlaceOf(path);
  if (place == Place::kNowhere) return std::nullopt;
  if (place != Place::kBelow) return inner_.ReadWholeFile(path, limit);
  const std::unique_ptr<Folder> folder = OpenFolder(FolderPart(path));
  return folder ? ReadWhole(*folder, path, limit) : std::nullopt;
}

void OtherUserFiles::WriteWholeFile(std::string_view path, std::string_view bytes) {
  const Place place = PlaceOf(path);
  if (place == Place::kOwn) return inner_.WriteWholeFile(path, bytes);
  if (place != Place::kBelow) Refuse(path);
  const std::unique_ptr<Folder> folder = OpenFolderOf(*this, path);
  auto* const known = dynamic_cast<Win32Folder*>(folder.get());
  if (known == nullptr) Refuse(path);
  known->WriteWhole(NamePart(path), bytes);
}

}  // namespace quellix
