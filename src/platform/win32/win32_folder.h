#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/win32/nt_file.h"
#include "platform/win32/win32_com.h"

namespace quellix {

// A folder of the running Windows, held open by a handle; everything in it is done relative to that
// handle. Others may rename and remove it meanwhile.
class Win32Folder : public Folder {
 public:
  // `shown` is its path, for messages. The shell's part must outlive this object.
  Win32Folder(UniqueFile folder, std::string shown, Win32Com& com)
      : folder_(std::move(folder)), shown_(std::move(shown)), com_(com) {}

  FileId Id() override;
  std::vector<FileId> Above() override;
  DiskRoom Room() override;
  void Enumerate(Detail detail, const EntryVisitor& visit) override;
  std::optional<FileInfo> Look(std::string_view name, Detail detail = Detail::kFull) override;
  std::optional<FileId> IdOf(std::string_view name) override;
  std::unique_ptr<Folder> OpenFolder(std::string_view names, OpenFor use) override;
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override;
  void CreateFolder(std::string_view name) override;
  void Rename(std::string_view from, std::string_view to, IfThere if_there) override;
  void MoveTo(std::string_view from, Folder& folder, std::string_view to) override;
  void Flush() override;
  void RemoveFile(std::string_view name) override;
  void RemoveFolder(std::string_view name) override;
  void RequireRemovable(std::string_view name) override;
  void Recycle(std::string_view name) override;
  void RemoveAtStart(std::string_view name) override;
  void SetAttributes(std::string_view name, uint32_t attributes) override;

  // Replaces or makes a file: the bytes go into a new one beside it, reach the disk, and then take
  // its name. The old file's access list, attributes and creation time are carried over. Throws
  // Error; the old file then stays and the new one is gone.
  void WriteWhole(std::string_view name, std::string_view bytes);

  // While `held` is open nobody renames, moves or removes the folder, nor one above it.
  NTSTATUS Hold(UniqueFile& held) const;

 private:
  std::string At(std::string_view name) const;  // its path, for messages
  std::wstring NameFor(const char* cannot, std::string_view name) const;
  NTSTATUS Try(std::wstring_view name, const NtAsk& ask, UniqueFile& file) const {
    return NtOpen(folder_.Get(), name, ask, file);
  }
  // Opens an entry itself; throws Error.
  UniqueFile OpenEntry(const char* cannot, std::string_view name, const NtAsk& ask) const;
  UniqueFile OpenListing(ULONG share = kShareAll) const;
  std::optional<FileInfo> LookAt(std::wstring_view name);
  std::optional<NtEntry> Find(std::wstring_view name) const;  // without its name
  NTSTATUS OpenThrough(std::wstring_view names, UniqueFile& folder);
  const std::wstring& FinalPathHere();  // asked for once; for what Wine does otherwise

  void Remove(std::string_view name, ULONG kind);
  bool RemoveAtOnce(std::wstring_view wide, std::string_view name, ULONG kind);
  void RemoveWithLastUser(std::wstring_view wide, std::string_view name, ULONG kind);
  void RemoveReadOnly(std::wstring_view wide, std::string_view name, ULONG kind);
  void CheckGone(std::wstring_view wide, std::string_view name, ULONG kind);

  UniqueFile OpenReplaced(std::string_view name);
  // Rename, with an action and a path for messages.
  void GiveName(const char* cannot, const std::string& shown, std::string_view from,
                std::string_view to, IfThere if_there);
  // Gives an open file a name in this folder, wherever it was.
  NTSTATUS SetName(const UniqueFile& file, std::wstring_view to, bool replace);
  NTSTATUS ReplaceReadOnly(const UniqueFile& file, std::wstring_view to);
  NTSTATUS FlushFile(std::wstring_view name);
  UniqueFile HoldInPlace(const std::string& shown) const;

  UniqueFile folder_;
  std::string shown_;
  Win32Com& com_;
  FileId id_;
  std::wstring final_path_;
  bool was_listed_ = false;      // a handle lists once
  bool removes_at_once_ = true;  // until its volume says that it cannot
};

// Opens the folder `name` in the open `above` (null for a full path of the object manager). Null
// when it is missing; throws Error for a link, for a file, and when it may not be opened.
UniqueFile OpenFolderIn(const UniqueFile& above, std::wstring_view name, std::string_view shown,
                        const NtAsk& ask = {});

}  // namespace quellix
