#include "backup/restore.h"

#include <algorithm>

#include "backup/entry_path.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr uint64_t kStepsAFile = 16 << 10;
constexpr size_t kMostWritten = 256;
constexpr uint64_t kMostBytes = 16 << 20;
constexpr size_t kHole = 64 << 10;
constexpr uint32_t kSettable = kReadOnly | kHidden | kSystem | kArchive;

// The folder that nobody chooses: the root of a drive, the folder named, or the share of a server.
std::string BaseOf(const std::string& root, std::string_view path) {
  if (root != "\\\\") return root;
  const size_t server = path.find('\\'), share = path.find('\\', server + 1);
  if (server == path.npos || share == path.npos) {
    throw Error(Error::Kind::kOther, Say("\"%1\" names no share of a server.", path));
  }
  return root + std::string(path.substr(0, share + 1));
}

bool IsZero(std::string_view bytes) { return bytes.find_first_not_of('\0') == bytes.npos; }

// Of a sparse file what is zero takes no room.
void WriteSparse(RandomFile& file, uint64_t at, std::string_view bytes) {
  for (size_t done = 0; done < bytes.size(); done += kHole) {
    const std::string_view part = bytes.substr(done, kHole);
    if (!IsZero(part)) file.Write(at + done, part);
  }
}

}  // namespace

std::unique_ptr<Folder> OpenOrMake(Folder& base, std::string_view names) {
  if (auto folder = base.OpenFolder(names)) return folder;
  std::unique_ptr<Folder> last;
  for (const std::string& name : Split(names, '\\')) {
    Folder& above = last ? *last : base;
    auto next = above.OpenFolder(name);
    if (!next) {
      above.CreateFolder(name);
      above.Flush();
      next = above.OpenFolder(name);
    }
    if (!next) throw Error(Error::Kind::kMissing, Say("The folder %1 vanished.", name));
    last = std::move(next);
  }
  return last;
}

int64_t LastWriteOf(const ZipEntry& entry, System& system) {
  return entry.times.last_write != 0 ? entry.times.last_write
                                     : FromLocalTime(system, FromDosTime(entry.dos_time));
}

uint64_t StepsOf(const ZipEntry& entry) { return entry.size + kStepsAFile; }

Restorer::Restorer(const Machine& machine, ZipReader& archive, Target target, Prompts& prompts)
    : machine_(machine), archive_(archive), target_(std::move(target)), prompts_(prompts) {}

void Restorer::OnPause(const Pause& pause, uint64_t total) {
  pause_ = pause;
  progress_.total = total;
}

// A pause, that many steps into the entry in hand.
bool Restorer::Stops(uint64_t done) {
  Progress progress = progress_;
  progress.done += done;
  if (pause_(progress)) result_.cancelled = true;
  return result_.cancelled;
}

bool Restorer::Restore(const ZipEntry& entry) {
  progress_.path = path_ = EntryPath(entry.name);
  if (Stops(0)) return false;
  try {
    Put(entry);
  } catch (const Error& error) {
    if (!result_.cancelled) result_.problems.push_back(Shown(error));
  }
  progress_.done += StepsOf(entry);
  return !result_.cancelled;
}

RestoreResult Restorer::Take() {
  PlaceAll();
  return std::move(result_);
}

void Restorer::Put(ZipEntry entry) {
  if (const auto refusal = RefusalOf(entry.name, entry.own)) {
    throw Error(Error::Kind::kDenied, *refusal);
  }
  const std::string path = EntryPath(entry.name);
  Enter(std::string(FolderPart(path)));
  if (path.ends_with('\\')) return;  // a folder
  const std::string name = GiveName(entry, std::string(NamePart(path)));
  const auto is_same = [&](const Written& other) { return EqualsNoCase(other.name, name); };
  if (std::ranges::any_of(written_, is_same)) PlaceAll();
  const std::optional<FileInfo> there = folder_->Look(name);
  if (!there || MayWrite(entry, name, *there)) {
    Write(entry, name, there ? IfThere::kReplace : IfThere::kFail);
  } else if (!result_.cancelled) {
    ++result_.skipped;
  }
}

// `folder` is below the root and ends in "\", or is empty.
void Restorer::Enter(const std::string& folder) {
  const std::string path = target_.root + folder;
  if (folder_ && path == folder_path_) return;
  PlaceAll();
  folder_.reset();
  const std::string base = BaseOf(target_.root, folder);
  if (!base_ || base != base_path_) {
    if (target_.root.size() > 3) MakeFolders(machine_.files, target_.root);
    base_ = machine_.files.OpenFolder(base);
    base_path_ = base;
    if (!base_) throw Error(Error::Kind::kMissing, Say("There is no folder %1.", base));
  }
  const std::string_view below = std::string_view(path).substr(base.size());
  folder_ =
      below.empty() ? machine_.files.OpenFolder(base) : OpenOrMake(*base_, WithoutBackslash(below));
  if (!folder_) throw Error(Error::Kind::kMissing, Say("There is no folder %1.", base));
  folder_path_ = path;
  if (target_.notes) target_.notes->Add(folder_path_);
}

// Two names that differ in case alone cannot stand in one folder here: the second gets another.
std::string Restorer::GiveName(const ZipEntry& entry, std::string name) {
  const auto [given, is_new] = given_.try_emplace(UpCase(folder_path_ + name), name);
  if (is_new || given->second == name) return name;
  const size_t dot = std::min(name.rfind('.'), name.size());
  for (int number = 2;; ++number) {
    std::string other =
        name.substr(0, dot) + " (" + std::to_string(number) + ")" + name.substr(dot);
    const std::string key = UpCase(folder_path_ + other);
    if (given_.contains(key) || folder_->Look(other)) continue;
    given_.emplace(key, other);
    result_.problems.push_back(Tr(
        "\"%1\" is restored as \"%2\": the archive holds another file whose name differs in case "
        "alone.",
        entry.name, other));
    return other;
  }
}

bool Restorer::MayWrite(const ZipEntry& entry, const std::string& name, const FileInfo& there) {
  const std::string path = folder_path_ + name;
  if (there.is_folder) {
    throw Error(Error::Kind::kOther,
                Say("%1 is not restored: there is a folder of this name.", path));
  }
  const Sentence reason = target_.places.WhyNotFile(*folder_, path, Claim::kOwnList);
  if (!reason.empty()) {
    // TRANSLATORS: %2 begins with a small letter: "it is kept by your line *.doc."
    throw Error(Error::Kind::kDenied, Say("%1 is not restored, as %2", path, reason));
  }
  if (target_.mode == OverwriteMode::kNewer) {
    return LastWriteOf(entry, machine_.system) > there.last_write;
  }
  if (target_.mode != OverwriteMode::kAsk) return target_.mode == OverwriteMode::kAlways;
  const OverwriteAnswer answer = prompts_.AskOverwrite(path);
  if (answer == OverwriteAnswer::kAll) target_.mode = OverwriteMode::kAlways;
  if (answer == OverwriteAnswer::kNone) target_.mode = OverwriteMode::kNever;
  if (answer == OverwriteAnswer::kCancel) result_.cancelled = true;
  return answer == OverwriteAnswer::kYes || answer == OverwriteAnswer::kAll;
}

void Restorer::Write(ZipEntry& entry, const std::string& name, IfThere if_there) {
  NewFile made(*folder_);
  RandomFile& file = made.file();
  const uint32_t kind = entry.attributes & (kSparse | kCompressed);
  if (kind != 0) file.SetAttributes(kind);
  Fill(entry, file);
  archive_.ReadHeader(entry);
  for (const auto& [stream, bytes] : entry.streams) {
    try {
      file.WriteStream(stream, bytes);
    } catch (const Error& error) {
      result_.problems.push_back(Tr("%1 is restored without its stream \"%2\": %3",
                                    folder_path_ + name, stream, Shown(error)));
    }
  }
  FileTimes times = entry.times;
  times.last_write = LastWriteOf(entry, machine_.system);
  file.SetTimes(times);
  file.BeginFlush();
  written_.push_back({std::move(made), name, if_there, entry.attributes & kSettable});
  written_bytes_ += entry.size;
  if (written_.size() >= kMostWritten || written_bytes_ >= kMostBytes) PlaceAll();
}

void Restorer::Fill(const ZipEntry& entry, RandomFile& file) {
  const bool sparse = (entry.attributes & kSparse) != 0;
  uint64_t at = 0;
  archive_.Extract(entry, [&](std::string_view bytes) {
    sparse ? WriteSparse(file, at, bytes) : file.Write(at, bytes);
    at += bytes.size();
    if (Stops(at)) throw Error(Error::Kind::kOther, Say("The restore was stopped."));
  });
  if (sparse) file.Resize(at);
}

// The user may delete the archive next, so all is on the disk before the names tell of it. What is
// written by now is finished whatever a pause says.
void Restorer::PlaceAll() {
  std::vector<Written> written = std::move(written_);
  written_.clear();
  written_bytes_ = 0;
  if (written.empty()) return;
  const auto attempt = [&](const auto& step) {
    try {
      step();
      return true;
    } catch (const Error& error) {
      result_.problems.push_back(Shown(error));
      return false;
    }
  };
  std::erase_if(written, [&](Written& file) {
    Stops(0);
    return !attempt([&] { file.made.file().Flush(); });
  });
  for (Written& file : written) {
    Stops(0);
    if (!attempt([&] { file.made.Place(file.name, file.if_there); })) continue;
    ++result_.restored;
    const uint32_t attributes = file.attributes == 0 ? uint32_t{kNormal} : file.attributes;
    attempt([&] { folder_->SetAttributes(file.name, attributes); });
  }
  attempt([&] { folder_->Flush(); });
}

}  // namespace quellix
