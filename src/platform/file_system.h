#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quellix {

// Attribute bits as Windows documents them for FILE_ATTRIBUTE_*.
enum FileAttribute : uint32_t {
  kReadOnly = 0x1,
  kHidden = 0x2,
  kSystem = 0x4,
  kFolderAttribute = 0x10,
  kArchive = 0x20,
  kNormal = 0x80,
  kReparsePoint = 0x400,
};

struct FileInfo {
  bool is_folder = false;   // also for a junction or symbolic link that leads to a folder
  bool is_link = false;     // junction, symbolic link or Unix symlink: never entered, size 0
  uint32_t attributes = 0;  // FileAttribute bits
  uint64_t size = 0;        // bytes; 0 for a folder
  int64_t last_write = 0;   // FILETIME: 100 ns steps since 1601-01-01 UTC
};

struct Entry {
  std::string_view name;  // last component, valid during the visit only
  FileInfo info;          // what the Detail says
};

// What is asked of an entry: is_folder and is_link; size and last_write as well; everything. What
// is not asked for may be set all the same.
enum class Detail { kKind, kSize, kFull };

// Returns false to end the enumeration.
using EntryVisitor = std::function<bool(const Entry&)>;

// One open file, for overwriting in place. Closes itself.
class RandomFile {
 public:
  virtual ~RandomFile() = default;
  virtual uint64_t Size() const = 0;  // bytes, when it was opened
  // Overwrites bytes from `offset` (0-based). Throws Error; bytes before the failure may be
  // written.
  virtual void Write(uint64_t offset, std::string_view bytes) = 0;
  // Returns when everything written is on the disk. Throws Error.
  virtual void Flush() = 0;
};

// The files of one machine. Paths are full Windows paths in UTF-8 ("C:\Temp\a.txt"), of any length;
// names compare as Windows compares them, without regard to case. A name with an unpaired surrogate
// is carried through as WTF-8.
//
// No operation follows a link in the last component, and none follows a link that appeared below an
// anchored folder (see Anchor). Removing and the other changing operations throw Error, with Kind
// kMissing when the target is not there, and leave things as they were, except where stated.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Visits the entries of a folder, without "." and "..", in the file system's order. Entries added
  // or removed meanwhile may or may not be seen. False when the folder cannot be enumerated:
  // missing, denied, a file, or a link.
  virtual bool Enumerate(std::string_view folder, Detail detail, const EntryVisitor& visit) = 0;

  // The entry itself, a link not followed; nothing when it is missing or unreachable. A trailing
  // "\" is accepted for folders.
  // With Detail::kKind attributes and last_write are not asked for.
  virtual std::optional<FileInfo> Look(std::string_view path, Detail detail = Detail::kFull) = 0;

  // Sets the FileAttribute bits (kNormal clears them all). May be silently kept where the medium
  // has no such attribute.
  virtual void SetAttributes(std::string_view path, uint32_t attributes) = 0;

  // Removes one file, or a link to a file itself, whatever its attributes (read-only, hidden,
  // system). After a failure its attributes may have been cleared.
  virtual void RemoveFile(std::string_view path) = 0;

  // Removes one empty folder, or a link to a folder itself, whatever its attributes. Kind kNotEmpty
  // when something is left in it.
  virtual void RemoveFolder(std::string_view path) = 0;

  // Renames within one drive; fails when `to` exists.
  virtual void Rename(std::string_view from, std::string_view to) = 0;

  // Opens an existing file, never through a link, for overwriting. Throws Error.
  virtual std::unique_ptr<RandomFile> OpenForWrite(std::string_view path) = 0;

  // A whole file's bytes; nothing when it is missing. Throws Error when it cannot be read or is
  // larger than `limit` bytes.
  virtual std::optional<std::string> ReadWholeFile(std::string_view path,
                                                   uint64_t limit = 16u << 20) = 0;

  // Creates or replaces a file in one step: after a failure (Error) or a crash the old content is
  // still there, whole.
  virtual void WriteWholeFile(std::string_view path, std::string_view bytes) = 0;

  // Declares `folder` as the place the following removals were asked for. Links in it and above it
  // are resolved now and trusted; a removal below it that would meanwhile leave it through a link
  // fails with kDenied. One anchor holds until the next; "" drops it.
  virtual void Anchor(std::string_view folder) = 0;
};

}  // namespace quellix
