#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
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

// FILETIMEs; 0 is a time that is unknown, or that is left as it is.
struct FileTimes {
  int64_t created = 0;
  int64_t last_access = 0;
  int64_t last_write = 0;
};

enum class OpenMode {
  kRead,           // an existing file; others may write and remove it meanwhile
  kWrite,          // an existing file, for overwriting; it need not be readable
  kReadAndCreate,  // for reading and writing, by one at a time; made, empty and at once on the
                   // disk, when missing
};

// One open file, used in place. Closes itself. All functions but Size throw Error.
class RandomFile {
 public:
  virtual ~RandomFile() = default;
  virtual uint64_t Size() const = 0;  // bytes, when it was opened
  // Fills `buffer` from `offset` (0-based); the bytes read, fewer only at the end of the file.
  virtual size_t Read(uint64_t offset, std::span<char> buffer) = 0;
  // Overwrites bytes from `offset`, or adds them behind the end. After a failure the bytes before
  // it may be written.
  virtual void Write(uint64_t offset, std::string_view bytes) = 0;
  // Cuts off what lies behind `size` bytes, or fills up with zeros.
  virtual void Resize(uint64_t size) = 0;
  // Returns when everything written is on the disk.
  virtual void Flush() = 0;
  virtual FileTimes Times() = 0;
  virtual uint32_t Attributes() = 0;  // FileAttribute bits
  // Later writes move the times on. A time the medium does not keep is ignored.
  virtual void SetTimes(const FileTimes& times) = 0;
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

  // Whether nothing is at `path`, a link followed; false where this machine cannot know, such as
  // for a drive that a volume does not map. Never throws.
  virtual bool IsGone(std::string_view path) = 0;

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

  // Opens a file, never through a link. Throws Error.
  virtual std::unique_ptr<RandomFile> Open(std::string_view path, OpenMode mode) = 0;
  std::unique_ptr<RandomFile> OpenForWrite(std::string_view path) {
    return Open(path, OpenMode::kWrite);
  }

  // Makes one folder in an existing one; it may exist already.
  virtual void CreateFolder(std::string_view path) = 0;

  // A whole file's bytes; nothing when it is missing. Throws Error when it cannot be read or is
  // larger than `limit` bytes.
  virtual std::optional<std::string> ReadWholeFile(std::string_view path,
                                                   uint64_t limit = 16u << 20) = 0;

  // Creates or replaces a file in one step: after a failure (Error) or a crash the old content is
  // still there, whole.
  virtual void WriteWholeFile(std::string_view path, std::string_view bytes) = 0;

  // Where a folder really is: links on the way resolved, short (8.3) names written out. The path
  // itself for what cannot be opened, and where no link is followed.
  virtual std::string RealPath(std::string_view path) { return std::string(path); }

  // Declares `folder` as the place the following removals were asked for. Links in it and above it
  // are resolved now and trusted; a removal below it that would meanwhile leave it through a link
  // fails with kDenied. One anchor holds until the next; "" drops it.
  virtual void Anchor(std::string_view folder) = 0;
};

// Makes a folder with those above it; it may exist already. Throws Error.
void MakeFolders(FileSystem& files, std::string_view folder);

}  // namespace quellix
