#include "platform/volume/volume_file_system.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/volume/entry_info.h"
#include "platform/volume/folder_reader.h"
#include "platform/volume/volume_attributes.h"
#include "platform/volume/volume_error.h"

namespace quellix {

VolumeFileSystem::VolumeFileSystem(const std::map<char, std::string>& drives) {
  for (const auto& [letter, folder] : drives) {
    drives_[letter] = std::make_unique<VolumeDrive>(folder);
  }
}

std::string VolumeFileSystem::Letters() const {
  std::string letters;
  for (const auto& [letter, drive] : drives_) {
    if (letter != kSettingsDrive) letters += letter;
  }
  return letters;
}

std::optional<VolumeFileSystem::Parts> VolumeFileSystem::Parse(std::string_view path) {
  errno = ENOENT;
  if (path.size() < 2 || path[1] != ':' || (path.size() > 2 && path[2] != '\\')) return {};
  const auto letter = UpCase(static_cast<unsigned char>(path[0]));
  const auto drive = drives_.find(static_cast<char>(letter));
  if (drive == drives_.end()) return {};
  path.remove_prefix(2);
  while (path.ends_with('\\')) path.remove_suffix(1);
  return Parts{drive->second.get(), FolderPart(path), NamePart(path)};
}

std::optional<Located> VolumeFileSystem::Find(std::string_view path) {
  const auto parts = Parse(path);
  return parts ? parts->drive->Locate(parts->folder, parts->name) : std::nullopt;
}

bool VolumeFileSystem::IsGone(std::string_view path) {
  const bool is_known = path.size() < 2 || (path[1] == ':' && path.find('/') == path.npos &&
                                            path.find_first_of("~%") == path.npos);
  if (!is_known || path.starts_with('\\') || (path.size() > 1 && !Parse(path))) return false;
  return !Find(path) && (errno == ENOENT || errno == ENOTDIR);
}

Located VolumeFileSystem::Need(std::string_view path) {
  std::optional<Located> entry = Find(path);
  if (!entry) ThrowErrno(errno, path);
  return std::move(*entry);
}

Located VolumeFileSystem::NeedNew(std::string_view path, bool& exists) {
  const auto parts = Parse(path);
  if (!parts) ThrowErrno(errno, path);
  if (!parts->name.empty() && !IsWindowsName(parts->name)) ThrowErrno(EINVAL, path);
  std::optional<Located> entry = parts->drive->LocateNew(parts->folder, parts->name, exists);
  if (!entry) ThrowErrno(errno, path);
  return std::move(*entry);
}

std::optional<FileInfo> VolumeFileSystem::Look(std::string_view path, Detail detail) {
  const auto parts = Parse(path);
  if (!parts) return std::nullopt;
  const auto entry = detail == Detail::kKind ? parts->drive->LocateNext(parts->folder, parts->name)
                                             : parts->drive->Locate(parts->folder, parts->name);
  if (!entry) return std::nullopt;
  return MakeInfo(*entry, parts->drive->attribute_support(), detail);
}

void VolumeFileSystem::SetAttributes(std::string_view path, uint32_t attributes) {
  const Located entry = Need(path);
  const int code = WriteAttributes(entry, attributes, Parse(path)->drive->attribute_support());
  if (code != 0) ThrowErrno(code, path);
}

void VolumeFileSystem::RemoveFile(std::string_view path) {
  const auto parts = Parse(path);
  const auto found = parts ? parts->drive->LocateNext(parts->folder, parts->name) : std::nullopt;
  if (!found) ThrowErrno(errno, path);
  const Located& entry = *found;
  const bool is_link = S_ISLNK(entry.status.st_mode);
  if (is_link && LeadsToFolder(entry, parts->drive->attribute_support())) {
    ThrowErrno(EISDIR, path);
  }
  if (unlinkat(entry.folder.get(), entry.name.c_str(), 0) != 0) ThrowErrno(errno, path);
}

void VolumeFileSystem::RemoveFolder(std::string_view path) {
  const Located entry = Need(path);
  const bool is_link = S_ISLNK(entry.status.st_mode);
  if (is_link && !LeadsToFolder(entry, Parse(path)->drive->attribute_support())) {
    ThrowErrno(ENOTDIR, path);
  }
  const int flags = is_link ? 0 : AT_REMOVEDIR;
  if (unlinkat(entry.folder.get(), entry.name.c_str(), flags) != 0) ThrowErrno(errno, path);
}

void VolumeFileSystem::Rename(std::string_view from, std::string_view to) {
  const Located source = Need(from);
  bool exists = false;
  const Located target = NeedNew(to, exists);
  const bool same = exists && source.status.st_ino == target.status.st_ino &&
                    source.status.st_dev == target.status.st_dev;
  if (exists && !same) ThrowErrno(EEXIST, to);
  const std::string name(NamePart(WithoutBackslash(to)));
  const auto rename = [&](unsigned flags) {
    return renameat2(source.folder.get(), source.name.c_str(), target.folder.get(), name.c_str(),
                     flags) == 0;
  };
  if (rename(RENAME_NOREPLACE)) return;
  // Some drivers know no such flag; there the look-up above must do.
  if (errno != EINVAL || !rename(0)) ThrowErrno(errno, errno == EEXIST ? to : from);
}

void VolumeFileSystem::CreateFolder(std::string_view path) {
  bool exists = false;
  const Located entry = NeedNew(path, exists);
  if (exists && S_ISDIR(entry.status.st_mode)) return;
  if (exists) ThrowErrno(EEXIST, path);
  if (mkdirat(entry.folder.get(), entry.name.c_str(), 0755) != 0) ThrowErrno(errno, path);
}

}  // namespace quellix
