#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quellix {

// Attribute bits as Windows documents them for FILE_ATTRIBUTE_*.
enum FileAttribute : uint32_t {
  kReadOnly = 0x1,
  kHidden = 0x2,
  kSystem = 0x4,
  kFolderAttribute = 0x10,
  kArchive = 0x20,
  kNormal = 0x80,
  kSparse = 0x200,
  kReparsePoint = 0x400,
  kCompressed = 0x800,
};

// What a file or folder is, however a path spells it: the number of its volume and its own there.
struct FileId {
  uint64_t volume = 0;
  std::array<uint64_t, 2> number{};
  auto operator<=>(const FileId&) const = default;
  bool is_known() const { return volume != 0 || number != std::array<uint64_t, 2>{}; }
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
  kReadKept,       // an existing file that nobody makes now (kInUse); nor does on Windows meanwhile
  kWrite,          // an existing file, for overwriting; it need not be readable
  kReadAndCreate,  // for reading and writing, by one at a time; made, empty and at once on the
                   // disk, when missing
  kCreateNew,      // for reading and writing, made now; kExists when the name is taken, by whatever
};

// A part of a file: bytes from `offset` (0-based) on.
struct Extent {
  uint64_t offset = 0;
  uint64_t size = 0;
};

// One of a file's further (named) data streams.
struct StreamInfo {
  std::string name;   // "Zone.Identifier"
  uint64_t size = 0;  // bytes
};

// One open file, used in place; never a folder, a link, a pipe or a device. Closes itself. All
// functions but Size throw Error.
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
  // Sends on its way what is written, so that flushing many files one after the other costs little
  // more than flushing one. Promises nothing.
  virtual void BeginFlush() {}
  virtual FileTimes Times() = 0;
  virtual uint32_t Attributes() = 0;  // FileAttribute bits
  // Later writes move the times on. A time the medium does not keep is ignored.
  virtual void SetTimes(const FileTimes& times) = 0;

  // What follows is told by real files; one that is only in memory has the answers given here.

  virtual FileId Id() { return {}; }
  // The names it has; above 1 the same bytes are reached by another name as well.
  virtual uint32_t LinkCount() { return 1; }
  // The parts that take room on the disk, in order: all of it unless the file is sparse.
  virtual std::vector<Extent> Allocated() { return {{0, Size()}}; }
  // Sets the FileAttribute bits; kSparse and kCompressed change how it is stored, where the medium
  // can. What the medium does not keep is ignored.
  virtual void SetAttributes(uint32_t /*attributes*/) {}
  virtual std::vector<StreamInfo> Streams() { return {}; }
  virtual std::string ReadStream(std::string_view /*name*/) { return {}; }
  // Makes or replaces one. Throws Error (kNotAvailable) where the medium has none.
  virtual void WriteStream(std::string_view name, std::string_view bytes);
};

// What the disk that a folder lies on still takes.
struct DiskRoom {
  bool is_read_only = false;  // as it is mounted; access to the folder is another matter
  uint64_t free = 0;          // bytes this user may still fill
  uint64_t size = 0;          // bytes in all, for this user
};

enum class IfThere { kFail, kReplace };

// What a folder is opened for first; it may be used for anything all the same.
enum class OpenFor { kWork, kListing };

// One folder, held open and worked in: whatever its path comes to mean meanwhile, this is the
// folder that is read and changed. Names are single components that compare as Windows compares
// them, without regard to case; one that is none (empty, ".", "..", with a separator or ":" in it)
// is missing. A name with an unpaired surrogate is carried through as WTF-8.
//
// No function follows a link. Changing ones throw Error, kMissing when the name is not there, and
// leave things as they were, attributes included, except where stated.
class Folder {
 public:
  virtual ~Folder() = default;

  virtual FileId Id() = 0;
  // The folders it lies in, nearest first, up to the drive's root, as they are at this moment.
  // Throws Error when that cannot be told.
  virtual std::vector<FileId> Above() = 0;
  virtual DiskRoom Room() = 0;  // throws Error when that cannot be told

  // Visits the entries, without "." and "..", in the file system's order. Entries added or removed
  // meanwhile may or may not be seen. Throws Error when the folder may not be listed.
  virtual void Enumerate(Detail detail, const EntryVisitor& visit) = 0;
  // The entry itself; nothing when it is missing. With Detail::kKind attributes and last_write are
  // not asked for.
  virtual std::optional<FileInfo> Look(std::string_view name, Detail detail = Detail::kFull) = 0;
  // What the entry is; nothing when it is missing.
  virtual std::optional<FileId> IdOf(std::string_view name) = 0;

  // A folder below this one, by names joined with "\" ("a\b"). Null when it is missing; throws
  // Error (kDenied) when one of the names is a link or may not be opened, (kOther) for a file.
  virtual std::unique_ptr<Folder> OpenFolder(std::string_view names,
                                             OpenFor use = OpenFor::kWork) = 0;
  virtual std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) = 0;

  // Makes one folder; it may exist already.
  virtual void CreateFolder(std::string_view name) = 0;
  // Within this folder, in one step; kExists when `to` is taken and is to stay. A folder is never
  // replaced, nor by one. With kReplace `from` is first brought onto the disk.
  virtual void Rename(std::string_view from, std::string_view to, IfThere if_there) = 0;
  // Moves a file into another open folder of the same drive, in one step; kExists when `to` is
  // taken.
  virtual void MoveTo(std::string_view from, Folder& folder, std::string_view to);
  // Returns when the names as they are now are on the disk, where the system can promise it.
  virtual void Flush() = 0;

  // Removes one file, or a link to a file itself, whatever its attributes (read-only, hidden,
  // system). When it returns the name is gone: kInUse when someone else's handle keeps it.
  virtual void RemoveFile(std::string_view name) = 0;
  // Looks at a file (kSize, into `seen`) and removes it, where this machine can do so while another
  // thread does the same here or in other folders, and where it is a plain file of just this
  // spelling. False, with nothing changed, in all other cases; RemoveFile may tell why.
  virtual bool RemoveAsSpelled(std::string_view /*name*/, FileInfo& /*seen*/) { return false; }
  // Removes one empty folder, or a link to a folder itself, whatever its attributes. Kind kNotEmpty
  // when something is left in it.
  virtual void RemoveFolder(std::string_view name) = 0;
  // Throws Error where the removal of the entry would, as far as that can be told without a change:
  // who may not remove here, who else has it open.
  virtual void RequireRemovable(std::string_view name) = 0;
  // Moves a file into the recycle bin of its drive without asking, so that it can be restored.
  // Throws Error (kDenied) as well where this folder cannot be kept in its place meanwhile.
  virtual void Recycle(std::string_view name) = 0;
  // Has the system remove a file at its next start, before anybody has it open. It will do so by
  // the path, with all rights; so Error (kDenied) unless only administrators could make that path
  // lead to anything else until then, and (kNotAvailable) on a machine that is not running.
  virtual void RemoveAtStart(std::string_view name);
  // Sets the FileAttribute bits of a file or folder (kNormal clears them all). May be silently
  // kept where the medium has no such attribute.
  virtual void SetAttributes(std::string_view name, uint32_t attributes) = 0;
};

// Files below an open folder, each behind the first `start` bytes of its path.
struct FilesBelow {
  Folder* folder = nullptr;
  std::span<const std::string_view> paths{};
  size_t start = 0;
};

// The files of one machine. Paths are full Windows paths in UTF-8 ("C:\Temp\a.txt"), of any length.
// What is to be removed is looked for and removed through a Folder; the functions that take a path
// are for the program's own files and for single ones.
//
// No operation follows a link in the last component; links above it are followed where the machine
// follows any.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Null when it is missing; throws Error (kDenied) when it is a link or may not be opened,
  // (kOther) for a file. A trailing "\" is accepted.
  virtual std::unique_ptr<Folder> OpenFolder(std::string_view path) = 0;
  // The same, but of a link to a folder what it leads to, where this machine can follow it: to know
  // what that is, not to work in it.
  virtual std::unique_ptr<Folder> OpenLinked(std::string_view path) { return OpenFolder(path); }

  // The entry itself, a link not followed; nothing when it is missing or unreachable. A trailing
  // "\" is accepted for folders.
  // With Detail::kKind attributes and last_write are not asked for.
  virtual std::optional<FileInfo> Look(std::string_view path, Detail detail = Detail::kFull) = 0;
  // Files that will soon be looked at (kSize), in about this order, in those folders and in others
  // that are opened from them. What Look then tells may have been seen a moment before, for as long
  // as the returned object lives, which folders and paths must outlast. Null where they are
  // expected already, or nothing is done ahead.
  virtual std::shared_ptr<void> ExpectLooks(std::span<const FilesBelow> /*files*/) { return {}; }

  // Whether nothing is at `path`, a link followed; false where this machine cannot know, such as
  // for a drive that a volume does not map. Never throws.
  virtual bool IsGone(std::string_view path) = 0;

  // A whole file's bytes; nothing when it is missing. Throws Error when it cannot be read or is
  // larger than `limit` bytes.
  virtual std::optional<std::string> ReadWholeFile(std::string_view path,
                                                   uint64_t limit = 16u << 20) = 0;

  // Creates or replaces a file in one step: after a failure (Error) or a crash the old content is
  // still there, whole. Access list, attributes and creation time of an old file are kept.
  virtual void WriteWholeFile(std::string_view path, std::string_view bytes) = 0;

  // Made of the above, for single paths. Each throws Error; a folder on the way that is missing is
  // kMissing.

  // False when the folder cannot be enumerated: missing, denied, a file, or a link.
  bool Enumerate(std::string_view folder, Detail detail, const EntryVisitor& visit);
  std::unique_ptr<RandomFile> Open(std::string_view path, OpenMode mode);
  void CreateFolder(std::string_view path);
  void SetAttributes(std::string_view path, uint32_t attributes);
  void RemoveFile(std::string_view path);
  void RemoveFolder(std::string_view path);
  void Recycle(std::string_view path);
  // Within one folder; fails (kExists) when `to` exists.
  void Rename(std::string_view from, std::string_view to);
};

// The folder that `path` lies in, for working on NamePart(path). Throws Error (kMissing).
std::unique_ptr<Folder> OpenFolderOf(FileSystem& files, std::string_view path);

// Makes a folder with those above it; it may exist already. Throws Error.
void MakeFolders(FileSystem& files, std::string_view folder);

}  // namespace quellix
