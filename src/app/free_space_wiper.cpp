#include "app/free_space_wiper.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

#include "backup/leftovers.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/random_source.h"
#include "settings/own_files.h"

namespace quellix {
namespace {

constexpr size_t kPiece = 1 << 20, kSmallestPiece = 4096;
// What is written is sent to the disk after so many pieces: as many as it takes in about this time.
constexpr int kMostUnsent = 32;
constexpr int64_t kShort = 250'000, kLong = 1'000'000;  // FILETIME steps
// The largest file that FAT takes is a byte less than 4 GB.
constexpr uint64_t kLargestFile = (uint64_t{4} << 30) - kPiece;
// What a record of 1,024 bytes has room for beside the file's name and times.
constexpr size_t kInRecord = 600;
// Small files are made so many at a time. Where they take records that are there, their names alone
// take room, less than so much; where the table grows for them, a record each.
constexpr size_t kBatch = 256;
constexpr uint64_t kNames = kBatch * 700;
// Freed again for the small files' names: what was overwritten.
constexpr uint64_t kForNames = 64u << 20;

class Wiper {
 public:
  Wiper(const Machine& machine, const std::string& root, const FreeSpaceOptions& options,
        const Pause& pause)
      : machine_(machine),
        files_(machine.files),
        root_(WithBackslash(root)),
        temp_(WithBackslash(machine.system.TempFolder())),
        options_(options),
        pause_(pause),
        piece_(kPiece, '\0') {}
  Wiper(const Wiper&) = delete;
  Wiper& operator=(const Wiper&) = delete;

  FreeSpaceWiped Run() {
    try {
      MakeProgramFolder(machine_);
      Begin();
      while (!wiped_.is_stopped && FillOne()) {
      }
      if (!wiped_.is_stopped) TakeRecords();
    } catch (const std::exception& error) {
      wiped_.problem = Shown(error);
    }
    ClearAway();
    return std::move(wiped_);
  }

 private:
  void Begin() {
    // Where nobody may write to the root.
    if (!MakeFolder(root_) && (!EqualsNoCase(temp_.substr(0, 3), root_) || !MakeFolder(temp_)))
      throw Error(Error::Kind::kDenied,
                  Say("No folder can be made on %1, where you may not write. Start Quellix as an "
                      "administrator.",
                      root_));
    const uint64_t free = folder_->Room().free;
    total_ = free > options_.reserve ? free - options_.reserve : 0;
    if (total_ == 0)
      throw Error(Error::Kind::kFull, Say("On %1 no more is free than the reserve.", root_));
  }

  // Noted before it is there; false where it is denied.
  bool MakeFolder(const std::string& parent) {
    parent_ = files_.OpenFolder(parent);
    if (!parent_) throw Error(Error::Kind::kMissing, Say("%1 is not there.", parent));
    name_ = TemporaryName();
    parent_path_ = parent;
    notes_.emplace(files_, machine_.program_folder);
    notes_->Add(parent + name_);
    if (!notes_->IsKept())
      throw Error(Error::Kind::kDenied,
                  Say("Nothing is wiped while the program's folder cannot be written: after a kill "
                      "nobody would know what to clear away."));
    try {
      parent_->CreateFolder(name_);
    } catch (const Error& error) {
      if (error.kind() != Error::Kind::kDenied) throw;
      return false;
    }
    is_made_ = true;
    folder_ = parent_->OpenFolder(name_);
    if (!folder_) throw Error(Error::Kind::kMissing, Say("%1 is not there.", parent + name_));
    return true;
  }

  std::unique_ptr<RandomFile> MakeFile() {
    names_.push_back(TemporaryName());
    std::unique_ptr<RandomFile> file = folder_->Open(names_.back(), OpenMode::kCreateNew);
    file->SetAttributes(kNormal);  // in a compressed folder nothing would be overwritten
    return file;
  }

  std::string_view Content(size_t size) {
    if (!options_.zeros) random_.FillWithPercents({piece_.data(), size});
    return std::string_view(piece_).substr(0, size);
  }

  bool Pauses(std::string_view work) {
    return pause_({.done = std::min(wiped_.bytes, total_),
                   .total = total_,
                   .path = parent_path_,
                   .work = work.data()});
  }

  bool Stops() {
    wiped_.is_stopped = wiped_.is_stopped || Pauses(Mark("Wiping"));
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
      RequireEnd();
      const size_t size = std::min(most, Room());
      if (size == 0) return Flushed(*file);
      try {
        file->Write(at, Content(size));
        at += size;
        wiped_.bytes += size;
        SendOn(*file);
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

  // A file of gigabytes that is sent to the disk at once would keep everybody waiting.
  void SendOn(RandomFile& file) {
    if (++unsent_ < most_unsent_) return;
    unsent_ = 0;
    const int64_t begun = machine_.system.UtcNow();
    file.Flush();
    const int64_t took = machine_.system.UtcNow() - begun;
    if (took < kShort) most_unsent_ = std::min(2 * most_unsent_, kMostUnsent);
    if (took > kLong) most_unsent_ = std::max(most_unsent_ / 2, 1);
  }

  static bool Flushed(RandomFile& file) {
    file.Flush();
    return false;
  }
  static bool Ended(RandomFile& file, const Error& error) {
    if (error.kind() != Error::Kind::kFull) throw error;
    return Flushed(file);
  }

  // Some disks store what is written smaller than it is, and are never full.
  void RequireEnd() const {
    if (wiped_.bytes <= 2 * total_ + kForNames) return;
    throw Error(
        Error::Kind::kOther,
        Say("The drive takes more than was free on it: it stores what is written smaller than it "
            "is, so that not all is overwritten."));
  }

  // Until the table has grown for them twice.
  void TakeRecords() {
    Shorten();
    int grown = 0;
    while (grown < 2 && wiped_.records < options_.most_records && !Stops()) {
      const uint64_t before = folder_->Room().free;
      if (before < options_.reserve / 2 || !TakeBatch()) {
        wiped_.problem =
            Tr("The drive was full before all free records of its file table were taken.");
        return;
      }
      const uint64_t after = folder_->Room().free;
      grown = after + kNames < before ? grown + 1 : 0;
    }
  }

  void Shorten() {
    const std::unique_ptr<RandomFile> file = folder_->Open(names_.back(), OpenMode::kReadAndCreate);
    file->Resize(file->Size() - std::min(file->Size(), kForNames));
  }

  // On the disk before they go, or their records would never be written. False when it is full.
  bool TakeBatch() {
    std::vector<std::unique_ptr<RandomFile>> batch;
    const uint64_t count = std::min<uint64_t>(kBatch, options_.most_records - wiped_.records);
    try {
      while (batch.size() < count && !Stops()) {
        batch.push_back(MakeFile());
        batch.back()->Write(0, Content(kInRecord));
        batch.back()->BeginFlush();
      }
      for (const auto& file : batch) {
        if (Stops()) break;
        file->Flush();
        ++wiped_.records;
      }
    } catch (const Error& error) {
      if (error.kind() != Error::Kind::kFull) throw;
      return false;
    }
    return true;
  }

  // However it ended, and whatever a pause says; what was made here alone.
  void ClearAway() {
    if (!is_made_) return;
    for (const std::string& name : names_) {
      PauseAllTheSame();
      Remove([&] { folder_->RemoveFile(name); });
    }
    folder_.reset();
    Remove([&] {
      parent_->RemoveFolder(name_);
      left_.clear();  // with it all that was in it has gone
    });
    if (left_.empty()) return;
    notes_->Leave();
    wiped_.problem += (wiped_.problem.empty() ? "" : " ") + left_;
  }

  void PauseAllTheSame() {
    try {
      Pauses(kClearingAway);
    } catch (const std::exception&) {  // what is being cleared away goes first
      return;
    }
  }

  template <typename Action>
  void Remove(const Action& action) {
    try {
      action();
    } catch (const std::exception& error) {
      const auto* const known = dynamic_cast<const Error*>(&error);
      const bool is_gone = known != nullptr && known->kind() == Error::Kind::kMissing;
      if (is_gone || !left_.empty()) return;
      left_ = Tr("%1 could not be removed. %2", parent_path_ + name_, Shown(error));
    }
  }

  const Machine& machine_;
  FileSystem& files_;
  std::optional<RestoreNotes> notes_;  // of the one folder that is made
  const std::string root_, temp_;
  const FreeSpaceOptions options_;
  const Pause& pause_;
  RandomSource random_;
  std::string piece_, name_, parent_path_, left_;
  std::unique_ptr<Folder> parent_, folder_;
  bool is_made_ = false;
  std::vector<std::string> names_;
  uint64_t total_ = 0;
  int unsent_ = 0, most_unsent_ = 1;  // pieces
  FreeSpaceWiped wiped_;
};

}  // namespace

FreeSpaceWiped WipeFreeSpace(const Machine& machine, const std::string& root,
                             const FreeSpaceOptions& options, const Pause& pause) {
  return Wiper(machine, root, options, pause).Run();
}

}  // namespace quellix
