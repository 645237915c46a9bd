#include "platform/volume/volume_file_system.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/volume/entry_info.h"
#include "platform/volume/look_ahead.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_random_file.h"

namespace quellix {

VolumeFileSystem::VolumeFileSystem(const std::map<char, std::string>& drives)
    : look_ahead_(std::make_shared<LookAhead>()) {
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

std::unique_ptr<Folder> VolumeFileSystem::OpenFolder(std::string_view path) {
  const auto parts = Parse(path);
  if (!parts) return nullptr;
  const size_t size = static_cast<size_t>(parts->name.data() - path.data()) + parts->name.size();
  std::string whole(path.substr(0, std::max<size_t>(size, 2)));
  UniqueFd fd = parts->drive->OpenFolder(std::string_view(whole).substr(2));
  if (fd) {
    return std::make_unique<VolumeFolder>(*this, *parts->drive, std::move(fd), std::move(whole));
  }
  RequireMissing(errno, path);
  return nullptr;
}

std::unique_ptr<Folder> VolumeFileSystem::OpenLinked(std::string_view path) {
  UniqueFd folder;
  Located entry;
  if (!Find(path, folder, entry)) return nullptr;
  UniqueFd linked(openat(folder.get(), entry.name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!linked) ThrowErrno(errno, path);
  return std::make_unique<VolumeFolder>(*this, *Parse(path)->drive, std::move(linked),
                                        std::string(WithoutBackslash(path)));
}

// False with the reason in errno. The folder is the one the entry was found in.
bool VolumeFileSystem::Find(std::string_view path, UniqueFd& folder, Located& entry) {
  const auto parts = Parse(path);
  if (!parts) return false;
  folder = parts->drive->OpenFolder(parts->folder);
  if (!folder || !parts->name.empty()) {
    return folder && parts->drive->Locate(folder.get(), parts->name, entry);
  }
  entry = {};
  entry.folder = folder.get();
  entry.name = ".";
  return fstat(folder.get(), &entry.status) == 0;
}

std::shared_ptr<void> VolumeFileSystem::ExpectLooks(std::span<const FilesBelow> files) {
  return VolumeFolder::ExpectLooks(*look_ahead_, files);
}

bool VolumeFileSystem::IsGone(std::string_view path) {
  const bool is_known = path.size() < 2 || (path[1] == ':' && path.find('/') == path.npos &&
                                            path.find_first_of("~%") == path.npos);
  if (!is_known || path.starts_with('\\') || (path.size() > 1 && !Parse(path))) return false;
  UniqueFd folder;
  Located entry;
  return !Find(path, folder, entry) && (errno == ENOENT || errno == ENOTDIR);
}

std::optional<FileInfo> VolumeFileSystem::Look(std::string_view path, Detail detail) {
  UniqueFd folder;
  Located entry;
  if (!Find(path, folder, entry)) return std::nullopt;
  return MakeInfo(entry, Parse(path)->drive->attribute_support(), detail);
}

std::unique_ptr<VolumeFolder> VolumeFileSystem::OpenFolderOf(std::string_view path) {
  const auto parts = Parse(path);
  if (!parts) ThrowErrno(errno, path);
  UniqueFd fd = parts->drive->OpenFolder(parts->folder);
  if (!fd) ThrowErrno(errno, path);
  const std::string folder(FolderPart(WithoutBackslash(path)));
  return std::make_unique<VolumeFolder>(*this, *parts->drive, std::move(fd), folder);
}

UniqueFd VolumeFileSystem::OpenForRead(std::string_view path) {
  UniqueFd folder;
  Located entry;
  struct stat status;
  if (Find(path, folder, entry)) return OpenRegular(entry, O_RDONLY, path, status);
  if (errno != ENOENT && errno != ENOTDIR) ThrowErrno(errno, path);
  return UniqueFd();
}

std::optional<std::string> VolumeFileSystem::ReadWholeFile(std::string_view path, uint64_t limit) {
  const UniqueFd fd = OpenForRead(path);
  if (!fd) return std::nullopt;
  return ReadAll(fd.get(), limit, path);
}

void VolumeFileSystem::WriteWholeFile(std::string_view path, std::string_view bytes) {
  OpenFolderOf(path)->Replace(NamePart(path), bytes);
}

void VolumeFileSystem::RequireWritable(std::string_view path) {
  const auto folder = OpenFolderOf(path);
  if (faccessat(folder->fd(), ".", W_OK, AT_EACCESS) != 0) ThrowErrno(errno, path);
  folder->ClearTemporaryFiles();
}

void VolumeFileSystem::Recycle(const Located& entry, const std::string& path) {
  if (!recycler_) throw NotAvailable("There is no recycle bin for " + path);
  recycler_(entry, path);
}

}  // namespace quellix
