#include "app/free_space_wiper.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "backup/leftovers.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/random_source.h"

namespace quellix {
namespace {

constexpr size_t kPiece = 1 << 20, kSmallestPiece = 4096;
// The largest file that FAT takes is a byte less than 4 GB.
constexpr uint64_t kLargestFile = (uint64_t{4} << 30) - kPiece;
// What a record of 1,024 bytes has room for beside the file's name and times.
constexpr size_t kInRecord = 600;
// The file table grows by more than that.
constexpr uint64_t kGrown = 128 << 10;

class Wiper {
 public:
  Wiper(const Machine& machine, const std::string& root, const FreeSpaceOptions& options,
        const Pause& pause)
      : files_(machine.files),
        notes_(machine.files, machine.program_folder),
        options_(options),
        pause_(pause),
        piece_(kPiece, '\0') {
    MakeFolder(root, machine.system.TempFolder());
    const uint64_t free = folder_->Room().free;
    total_ = free > options.reserve ? free - options.reserve : 0;
  }
  Wiper(const Wiper&) = delete;
  Wiper& operator=(const Wiper&) = delete;

  FreeSpaceWiped Run() {
    try {
      while (!wiped_.is_stopped && FillOne()) {
      }
      while (!wiped_.is_stopped && wiped_.records < options_.most_records && TakeRecord()) {
      }
    } catch (const Error& error) {
      wiped_.problem = error.what();
    }
    ClearAway();
    return std::move(wiped_);
  }

 private:
  // Where nobody may write to the root, in the temporary folder, if that is on the same drive.
  void MakeFolder(const std::string& root, const std::string& temp) {
    name_ = TemporaryName();
    parent_path_ = WithBackslash(root);
    try {
      parent_ = files_.OpenFolder(parent_path_);
      if (!parent_) throw Error(Error::Kind::kMissing, "There is no drive " + root);
      parent_->CreateFolder(name_);
    } catch (const Error& error) {
      if (error.kind() != Error::Kind::kDenied ||
          !EqualsNoCase(temp.substr(0, 2), root.substr(0, 2)))
        throw;
      parent_path_ = WithBackslash(temp);
      parent_ = files_.OpenFolder(parent_path_);
      if (!parent_) throw;
      parent_->CreateFolder(name_);
    }
    notes_.Add(parent_path_ + name_);
    folder_ = parent_->OpenFolder(name_);
    if (!folder_) throw Error(Error::Kind::kMissing, parent_path_ + name_ + " is not there.");
  }

  std::unique_ptr<RandomFile> MakeFile() {
    names_.push_back(TemporaryName());
    return folder_->Open(names_.back(), OpenMode::kCreateNew);
  }

  std::string_view Content(size_t size) {
    if (!options_.zeros) random_.FillWithPercents({piece_.data(), size});
    return std::string_view(piece_).substr(0, size);
  }

  bool Stops() {
    wiped_.is_stopped = pause_({.done = std::min(wiped_.bytes, total_),
                                .total = total_,
                                .path = parent_path_,
                                .work = "Wiping"});
    return wiped_.is_stopped;
  }

  // What may still be written at once; 0 when the reserve is reached.
  size_t Room() {
    const uint64_t free = folder_->Room().free;
    if (free <= options_.reserve) return 0;
    const uint64_t room = std::min<uint64_t>(kPiece, free - options_.reserve);
    return static_cast<size_t>(room / kSmallestPiece * kSmallestPiece);
  }

  // A file as large as may be. False when the drive is full but for the reserve.
  bool FillOne() {
    const std::unique_ptr<RandomFile> file = MakeFile();
    size_t most = kPiece;
    for (uint64_t at = 0; at < kLargestFile && !Stops();) {
      const size_t size = std::min(most, Room());
      if (size == 0) return Flushed(*file);
      try {
        file->Write(at, Content(size));
        at += size;
        wiped_.bytes += size;
      } catch (const Error& error) {
        if (error.kind() != Error::Kind::kFull || size == kSmallestPiece)
          return Ended(*file, error);
        most = size / 2 / kSmallestPiece * kSmallestPiece;
        if (most == 0) return Flushed(*file);
      }
    }
    Flushed(*file);
    return true;
  }

  static bool Flushed(RandomFile& file) {
    file.Flush();
    return false;
  }
  static bool Ended(RandomFile& file, const Error& error) {
    if (error.kind() != Error::Kind::kFull) throw error;
    return Flushed(file);
  }

  // False when there is no room for one, or the table has grown for it.
  bool TakeRecord() {
    if (Stops()) return false;
    const uint64_t free = folder_->Room().free;
    if (free_at_first_ == 0) free_at_first_ = free;
    if (free + kGrown < free_at_first_) return false;
    try {
      MakeFile()->Write(0, Content(kInRecord));
    } catch (const Error& error) {
      if (error.kind() != Error::Kind::kFull) throw;
      return false;
    }
    ++wiped_.records;
    return true;
  }

  // However it ended; what was made here alone.
  void ClearAway() {
    for (const std::string& name : names_) Remove([&] { folder_->RemoveFile(name); });
    folder_.reset();
    Remove([&] { parent_->RemoveFolder(name_); });
  }

  template <typename Action>
  void Remove(const Action& action) {
    try {
      action();
    } catch (const Error& error) {
      if (error.kind() == Error::Kind::kMissing || !wiped_.problem.empty()) return;
      wiped_.problem = parent_path_ + name_ + " could not be removed. " + error.what();
    }
  }

  FileSystem& files_;
  RestoreNotes notes_;
  const FreeSpaceOptions options_;
  const Pause& pause_;
  RandomSource random_;
  std::string piece_, name_, parent_path_;
  std::unique_ptr<Folder> parent_, folder_;
  std::vector<std::string> names_;
  uint64_t total_ = 0, free_at_first_ = 0;
  FreeSpaceWiped wiped_;
};

}  // namespace

FreeSpaceWiped WipeFreeSpace(const Machine& machine, const std::string& root,
                             const FreeSpaceOptions& options, const Pause& pause) {
  return Wiper(machine, root, options, pause).Run();
}

}  // namespace quellix
