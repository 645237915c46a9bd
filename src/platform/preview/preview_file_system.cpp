#include "platform/preview/preview_file_system.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/preview/preview_folder.h"

namespace quellix {
namespace {

std::string_view NameOf(std::string_view path) { return NamePart(WithoutBackslash(path)); }

bool IsDriveRoot(std::string_view path) { return WithoutBackslash(path).size() <= 2; }

// As OpenFolderOf; every folder of a previewed file system is a preview of one.
std::unique_ptr<PreviewFolder> OpenParent(PreviewFileSystem& files, std::string_view path) {
  return std::unique_ptr<PreviewFolder>(
      static_cast<PreviewFolder*>(OpenFolderOf(files, path).release()));
}

}  // namespace

std::unique_ptr<Folder> PreviewFileSystem::OpenFolder(std::string_view path) {
  std::unique_ptr<Folder> inner = inner_.OpenFolder(path);
  if (inner) {
    const FileId id = inner->Id();
    if (gone_folders_.contains(id)) return nullptr;
    return std::make_unique<PreviewFolder>(*this, std::move(inner), id, WithBackslash(path));
  }
  // One that was made here, perhaps in one that was made here.
  if (folders_made_ == 0 || IsDriveRoot(path)) return nullptr;
  const std::unique_ptr<Folder> parent = OpenFolder(FolderPart(WithoutBackslash(path)));
  return parent ? parent->OpenFolder(NameOf(path)) : nullptr;
}

std::string_view PreviewFileSystem::Hold(std::string_view text) {
  char* const held = static_cast<char*>(memory_.allocate(text.size(), 1));
  std::ranges::copy(text, held);
  return {held, text.size()};
}

std::optional<FileInfo> PreviewFileSystem::Look(std::string_view path, Detail detail) {
  if (!is_changed() || IsDriveRoot(path)) return inner_.Look(path, detail);
  try {
    const std::optional<FileInfo> info = OpenFolderOf(*this, path)->Look(NameOf(path), detail);
    return info && !info->is_folder && path.ends_with('\\') ? std::nullopt : info;
  } catch (const Error&) {
    return std::nullopt;
  }
}

std::shared_ptr<void> PreviewFileSystem::ExpectLooks(std::span<const FilesBelow> files) {
  std::vector<FilesBelow> real;
  for (const FilesBelow& part : files) {
    const auto* const folder = dynamic_cast<PreviewFolder*>(part.folder);
    Folder* const inner = folder == nullptr ? nullptr : folder->inner();
    if (inner != nullptr) real.push_back({inner, part.paths, part.start});
  }
  return inner_.ExpectLooks(real);
}

bool PreviewFileSystem::IsGone(std::string_view path) {
  if (!is_changed() || IsDriveRoot(path)) return inner_.IsGone(path);
  try {
    bool is_there = false;
    if (OpenParent(*this, path)->IsChanged(NameOf(path), is_there)) return !is_there;
  } catch (const Error&) {  // the inner one knows
  }
  return inner_.IsGone(path);
}

std::optional<std::string> PreviewFileSystem::ReadWholeFile(std::string_view path, uint64_t limit) {
  if (!is_changed()) return inner_.ReadWholeFile(path, limit);
  try {
    return OpenParent(*this, path)->Read(NamePart(path), limit);
  } catch (const Error& error) {
    if (error.kind() == Error::Kind::kMissing) return std::nullopt;
    throw;
  }
}

void PreviewFileSystem::WriteWholeFile(std::string_view path, std::string_view bytes) {
  OpenParent(*this, path)->Write(NamePart(path), bytes);
}

}  // namespace quellix
