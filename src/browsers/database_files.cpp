#include "browsers/database_files.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <set>
#include <vector>

#include "platform/words.h"

namespace quellix {

// One open file as SQLite wants it. Throws Error.
class DatabaseFiles::Bytes {
 public:
  virtual ~Bytes() = default;
  virtual size_t Read(uint64_t offset, std::span<char> buffer) = 0;
  virtual void Write(uint64_t offset, std::string_view bytes) = 0;
  virtual void Resize(uint64_t size) = 0;
  virtual void Flush() = 0;
  virtual uint64_t Size() const = 0;
};

namespace {

using Bytes = DatabaseFiles::Bytes;

constexpr int kLongestName = 1024;
constexpr uint64_t kPiece = 4096;

class OnDisk : public Bytes {
 public:
  explicit OnDisk(std::unique_ptr<RandomFile> file)
      : file_(std::move(file)), size_(file_->Size()) {}

  size_t Read(uint64_t offset, std::span<char> buffer) override {
    return file_->Read(offset, buffer);
  }
  void Write(uint64_t offset, std::string_view bytes) override {
    file_->Write(offset, bytes);
    size_ = std::max<uint64_t>(size_, offset + bytes.size());
  }
  void Resize(uint64_t size) override {
    file_->Resize(size);
    size_ = size;
  }
  void Flush() override { file_->Flush(); }
  uint64_t Size() const override { return size_; }

 private:
  std::unique_ptr<RandomFile> file_;
  uint64_t size_;
};

// What is written lies in pieces over the file on the disk, which is only read.
class InMemory : public Bytes {
 public:
  explicit InMemory(std::unique_ptr<RandomFile> below)
      : below_(std::move(below)), size_(below_ ? below_->Size() : 0), valid_(size_) {}

  size_t Read(uint64_t offset, std::span<char> buffer) override {
    if (offset >= size_) return 0;
    const size_t size = static_cast<size_t>(std::min<uint64_t>(buffer.size(), size_ - offset));
    std::span<char> wanted = buffer.first(size);
    ReadBelow(offset, wanted);
    ForEachPiece(offset, size, [&](uint64_t piece, uint64_t from, size_t at, size_t count) {
      const auto written = pieces_.find(piece);
      if (written != pieces_.end()) written->second.copy(wanted.data() + at, count, from);
    });
    return size;
  }
  void Write(uint64_t offset, std::string_view bytes) override {
    ForEachPiece(offset, bytes.size(), [&](uint64_t piece, uint64_t from, size_t at, size_t count) {
      auto [written, is_new] = pieces_.try_emplace(piece, kPiece, '\0');
      if (is_new) ReadBelow(piece * kPiece, written->second);
      written->second.replace(from, count, bytes.substr(at, count));
    });
    size_ = std::max<uint64_t>(size_, offset + bytes.size());
  }
  void Resize(uint64_t size) override {
    size_ = size;
    valid_ = std::min(valid_, size);
    pieces_.erase(pieces_.lower_bound((size + kPiece - 1) / kPiece), pieces_.end());
    const auto last = pieces_.find(size / kPiece);
    if (last == pieces_.end()) return;
    std::fill(last->second.begin() + static_cast<ptrdiff_t>(size % kPiece), last->second.end(), 0);
  }
  void Flush() override {}
  uint64_t Size() const override { return size_; }

 private:
  // Zeros where there is nothing.
  void ReadBelow(uint64_t offset, std::span<char> buffer) {
    size_t got = 0;
    if (below_ && offset < valid_) {
      const auto size = static_cast<size_t>(std::min<uint64_t>(buffer.size(), valid_ - offset));
      got = below_->Read(offset, buffer.first(size));
    }
    std::fill(buffer.begin() + static_cast<ptrdiff_t>(got), buffer.end(), '\0');
  }

  template <class Do>
  static void ForEachPiece(uint64_t offset, size_t size, const Do& act) {
    for (size_t at = 0; at < size;) {
      const uint64_t from = (offset + at) % kPiece;
      const auto count = static_cast<size_t>(std::min<uint64_t>(kPiece - from, size - at));
      act((offset + at) / kPiece, from, at, count);
      at += count;
    }
  }

  std::unique_ptr<RandomFile> below_;
  uint64_t size_;
  uint64_t valid_;  // of below_, what was never cut off
  std::map<uint64_t, std::string> pieces_;
};

// As SQLite allocates it.
struct OpenFile {
  sqlite3_file base;
  std::shared_ptr<Bytes>* bytes;
  DatabaseFiles* files;
};

OpenFile& Of(sqlite3_file* file) { return *reinterpret_cast<OpenFile*>(file); }

// Nothing is thrown into SQLite: what goes wrong is kept for who called it.
template <class Act>
int Guarded(DatabaseFiles& files, int code, const Act& act) {
  try {
    return act();
  } catch (const std::exception& error) {
    files.Fail(error);
    return code;
  }
}

int Close(sqlite3_file* file) {
  delete Of(file).bytes;
  Of(file).bytes = nullptr;
  return SQLITE_OK;
}

int Read(sqlite3_file* file, void* buffer, int size, sqlite3_int64 offset) {
  return Guarded(*Of(file).files, SQLITE_IOERR_READ, [&] {
    const std::span<char> wanted(static_cast<char*>(buffer), static_cast<size_t>(size));
    const size_t got = (*Of(file).bytes)->Read(static_cast<uint64_t>(offset), wanted);
    if (got == wanted.size()) return SQLITE_OK;
    std::memset(wanted.data() + got, 0, wanted.size() - got);
    return SQLITE_IOERR_SHORT_READ;
  });
}

int Write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
  return Guarded(*Of(file).files, SQLITE_IOERR_WRITE, [&] {
    (*Of(file).bytes)
        ->Write(static_cast<uint64_t>(offset),
                {static_cast<const char*>(bytes), static_cast<size_t>(size)});
    return SQLITE_OK;
  });
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  return Guarded(*Of(file).files, SQLITE_IOERR_TRUNCATE, [&] {
    (*Of(file).bytes)->Resize(static_cast<uint64_t>(size));
    return SQLITE_OK;
  });
}

int Sync(sqlite3_file* file, int) {
  return Guarded(*Of(file).files, SQLITE_IOERR_FSYNC, [&] {
    (*Of(file).bytes)->Flush();
    return SQLITE_OK;
  });
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
  *size = static_cast<sqlite3_int64>((*Of(file).bytes)->Size());
  return SQLITE_OK;
}

// The file itself is held alone as long as it is open.
int Lock(sqlite3_file*, int) { return SQLITE_OK; }

int CheckReservedLock(sqlite3_file*, int* is_reserved) {
  *is_reserved = 0;
  return SQLITE_OK;
}

int FileControl(sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; }
int SectorSize(sqlite3_file*) { return static_cast<int>(kPiece); }
int DeviceCharacteristics(sqlite3_file*) { return 0; }

// Without shared memory: logs of writes ahead work for who holds the database alone.
sqlite3_io_methods MakeMethods() {
  sqlite3_io_methods methods{};
  methods.iVersion = 1;
  methods.xClose = Close;
  methods.xRead = Read;
  methods.xWrite = Write;
  methods.xTruncate = Truncate;
  methods.xSync = Sync;
  methods.xFileSize = FileSize;
  methods.xLock = Lock;
  methods.xUnlock = Lock;
  methods.xCheckReservedLock = CheckReservedLock;
  methods.xFileControl = FileControl;
  methods.xSectorSize = SectorSize;
  methods.xDeviceCharacteristics = DeviceCharacteristics;
  return methods;
}

DatabaseFiles& FilesOf(sqlite3_vfs* system) {
  return *static_cast<DatabaseFiles*>(system->pAppData);
}

int OpenOne(sqlite3_vfs* system, const char* name, sqlite3_file* file, int flags, int* out_flags) {
  static const sqlite3_io_methods kMethods = MakeMethods();
  DatabaseFiles& files = FilesOf(system);
  file->pMethods = nullptr;
  return Guarded(files, SQLITE_CANTOPEN, [&] {
    constexpr int kKnown = SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_WAL;
    if (name == nullptr || (flags & kKnown) == 0) return SQLITE_CANTOPEN;
    Of(file).bytes =
        new std::shared_ptr<Bytes>(files.Open(name, (flags & SQLITE_OPEN_CREATE) != 0));
    Of(file).files = &files;
    file->pMethods = &kMethods;
    if (out_flags != nullptr) *out_flags = flags;
    return SQLITE_OK;
  });
}

int Delete(sqlite3_vfs* system, const char* name, int flush) {
  return Guarded(FilesOf(system), SQLITE_IOERR_DELETE, [&] {
    if (!FilesOf(system).Exists(name)) return SQLITE_IOERR_DELETE_NOENT;
    FilesOf(system).Remove(name, flush != 0);
    return SQLITE_OK;
  });
}

int Access(sqlite3_vfs* system, const char* name, int, int* result) {
  return Guarded(FilesOf(system), SQLITE_IOERR_ACCESS, [&] {
    *result = FilesOf(system).Exists(name) ? 1 : 0;
    return SQLITE_OK;
  });
}

// A name in the folder is as full as it needs to be.
int FullPathname(sqlite3_vfs*, const char* name, int size, char* full) {
  const size_t length = std::strlen(name);
  if (length >= static_cast<size_t>(size)) return SQLITE_CANTOPEN;
  std::memcpy(full, name, length + 1);
  return SQLITE_OK;
}

int Randomness(sqlite3_vfs*, int size, char* bytes) {
  std::random_device random;
  for (int i = 0; i < size; ++i) bytes[i] = static_cast<char>(random());
  return size;
}

int Sleep(sqlite3_vfs*, int) { return 0; }

int CurrentTime(sqlite3_vfs*, double* julian_day) {
  *julian_day = 0;
  return SQLITE_OK;
}

int LastError(sqlite3_vfs*, int, char*) { return 0; }

}  // namespace

DatabaseFiles::DatabaseFiles(Folder& folder, std::string_view name, Use use)
    : folder_(folder),
      name_(name),
      use_(use),
      system_name_("quellix-" + std::to_string(reinterpret_cast<uintptr_t>(this))),
      system_(std::make_unique<sqlite3_vfs>()) {
  *system_ = {};
  system_->iVersion = 1;
  system_->szOsFile = sizeof(OpenFile);
  system_->mxPathname = kLongestName;
  system_->zName = system_name_.c_str();
  system_->pAppData = this;
  system_->xOpen = OpenOne;
  system_->xDelete = Delete;
  system_->xAccess = Access;
  system_->xFullPathname = FullPathname;
  system_->xRandomness = Randomness;
  system_->xSleep = Sleep;
  system_->xCurrentTime = CurrentTime;
  system_->xGetLastError = LastError;
  if (sqlite3_initialize() != SQLITE_OK || sqlite3_vfs_register(system_.get(), 0) != SQLITE_OK) {
    throw Error(Error::Kind::kOther, Say("SQLite cannot be used."));
  }
}

DatabaseFiles::~DatabaseFiles() { sqlite3_vfs_unregister(system_.get()); }

std::shared_ptr<Bytes> DatabaseFiles::Open(const std::string& name, bool may_create) {
  if (use_ == Use::kChange) {
    if (!may_create && !folder_.Look(name, Detail::kKind))
      throw Error(Error::Kind::kMissing, Say("%1 is no longer there.", name));
    return std::make_shared<OnDisk>(folder_.Open(name, OpenMode::kReadAndCreate));
  }
  const auto known = in_memory_.find(name);
  if (known != in_memory_.end() && known->second) return known->second;
  const bool was_there = known == in_memory_.end() && folder_.Look(name, Detail::kKind);
  auto bytes =
      std::make_shared<InMemory>(was_there ? folder_.Open(name, OpenMode::kRead) : nullptr);
  return in_memory_[name] = bytes;
}

void DatabaseFiles::Remove(const std::string& name, bool flush) {
  if (use_ == Use::kLook) {
    in_memory_[name] = nullptr;
    return;
  }
  folder_.RemoveFile(name);
  if (flush) folder_.Flush();
}

// An empty journal is none. What another program's journals name is a full path of its own.
bool DatabaseFiles::Exists(const std::string& name) {
  const std::string own = name.substr(name.find_last_of("\\/") + 1);
  const auto known = in_memory_.find(own);
  if (known != in_memory_.end()) return known->second && known->second->Size() > 0;
  const auto info = folder_.Look(own, Detail::kSize);
  return info && !info->is_folder && info->size > 0;
}

void DatabaseFiles::Fail(const std::exception& error) {
  if (failure_) return;
  const auto* const own = dynamic_cast<const Error*>(&error);
  failure_.emplace(own ? own->kind() : Error::Kind::kOther, SentenceOf(error));
}

}  // namespace quellix
