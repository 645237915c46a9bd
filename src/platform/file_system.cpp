#include "platform/file_system.h"

#include "platform/error.h"
#include "platform/path.h"

namespace quellix {

void Folder::RemoveAtStart(std::string_view) {
  throw NotAvailable(Say("Nothing can be left to the next start of this Windows."));
}

void Folder::MoveTo(std::string_view from, Folder&, std::string_view) {
  throw NotAvailable(Say("Nothing can be moved here: %1", from));
}
namespace {

// A folder's own name, whether or not a "\\" follows it.
std::string_view NameOf(std::string_view path) { return NamePart(WithoutBackslash(path)); }

}  // namespace

void RandomFile::WriteStream(std::string_view name, std::string_view) {
  throw NotAvailable(Say("The stream %1 cannot be kept here.", name));
}

bool FileSystem::Enumerate(std::string_view folder, Detail detail, const EntryVisitor& visit) {
  bool visiting = false;  // what the visitor throws is not this folder's
  try {
    const std::unique_ptr<Folder> open = OpenFolder(folder);
    if (!open) return false;
    open->Enumerate(detail, [&](const Entry& entry) {
      visiting = true;
      const bool more = visit(entry);
      visiting = false;
      return more;
    });
    return true;
  } catch (const Error&) {
    if (visiting) throw;
    return false;
  }
}

std::unique_ptr<RandomFile> FileSystem::Open(std::string_view path, OpenMode mode) {
  return OpenFolderOf(*this, path)->Open(NamePart(path), mode);
}

void FileSystem::CreateFolder(std::string_view path) {
  OpenFolderOf(*this, path)->CreateFolder(NameOf(path));
}

void FileSystem::SetAttributes(std::string_view path, uint32_t attributes) {
  OpenFolderOf(*this, path)->SetAttributes(NameOf(path), attributes);
}

void FileSystem::RemoveFile(std::string_view path) {
  OpenFolderOf(*this, path)->RemoveFile(NamePart(path));
}

void FileSystem::RemoveFolder(std::string_view path) {
  OpenFolderOf(*this, path)->RemoveFolder(NameOf(path));
}

void FileSystem::Recycle(std::string_view path) {
  OpenFolderOf(*this, path)->Recycle(NamePart(path));
}

void FileSystem::Rename(std::string_view from, std::string_view to) {
  const std::unique_ptr<Folder> folder = OpenFolderOf(*this, from);
  if (!folder->Look(NameOf(from), Detail::kKind)) {
    throw Error(Error::Kind::kMissing, Say("There is no such file or folder: %1", from));
  }
  if (FolderPart(WithoutBackslash(from)) != FolderPart(WithoutBackslash(to))) {
    throw NotAvailable(Say("Files are renamed within their folder only."));
  }
  folder->Rename(NameOf(from), NameOf(to), IfThere::kFail);
}

std::unique_ptr<Folder> OpenFolderOf(FileSystem& files, std::string_view path) {
  const std::string_view folder = FolderPart(WithoutBackslash(path));
  std::unique_ptr<Folder> open = folder.empty() ? nullptr : files.OpenFolder(folder);
  if (open) return open;
  throw Error(Error::Kind::kMissing, Say("There is no such file or folder: %1", path));
}

void MakeFolders(FileSystem& files, std::string_view folder) {
  folder = WithoutBackslash(folder);
  const std::optional<FileInfo> info = files.Look(folder);
  if (info && info->is_folder) return;
  const std::string_view parent = FolderPart(folder);
  if (!parent.empty() && parent.size() < folder.size()) MakeFolders(files, parent);
  files.CreateFolder(folder);
}

}  // namespace quellix
