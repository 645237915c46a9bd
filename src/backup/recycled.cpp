#include "backup/recycled.h"

#include <map>

#include "backup/restore.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/recycle_index.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr size_t kLargestRecord = 70'000;  // bytes; a path has at most 32,767 characters

struct InBin {
  std::string bin;   // the folder, without trailing "\"
  std::string name;  // what follows "$R" and "$I"
  int64_t deleted = 0;
};

// By the path where each was, in upper case, and its size.
using Bins = std::map<std::pair<std::string, uint64_t>, InBin>;

// Of one path the last counts; what cannot be read is nobody's.
void AddRecord(const Machine& machine, const std::string& bin, std::string_view name, Bins& found) {
  const std::string record = bin + "\\" + std::string(name);
  try {
    const auto bytes = machine.files.ReadWholeFile(record, kLargestRecord);
    const RecycleIndex index = ReadRecycleIndex(bytes.value_or(""));
    InBin& last = found[{UpCase(index.path), index.size}];
    if (last.name.empty() || index.deleted > last.deleted)
      last = {bin, std::string(name.substr(2)), index.deleted};
  } catch (const Error&) {
  }
}

Bins ReadBins(const Machine& machine, const Pause& pause) {
  Bins found;
  for (const std::string& bin : machine.shell.RecycleBins()) {
    std::vector<std::string> records;
    machine.files.Enumerate(bin, Detail::kKind, [&](const Entry& entry) {
      if (entry.name.starts_with("$I") && !entry.info.is_folder) records.emplace_back(entry.name);
      return !pause();
    });
    for (const std::string& record : records) AddRecord(machine, bin, record, found);
  }
  return found;
}

// The record goes last: without it nobody would know what the file is. A link that stands by now
// where a folder was leads nowhere.
void MoveBack(const Machine& machine, const InBin& from, const std::string& path) {
  const std::string root_path = path.substr(0, 3);
  const auto bin = machine.files.OpenFolder(from.bin), root = machine.files.OpenFolder(root_path);
  if (!bin || !root)
    throw Error(Error::Kind::kMissing, Say("The recycle bin is not there: %1", from.bin));
  const std::string_view folder = FolderPart(path).substr(root_path.size());
  const auto made = folder.empty() ? nullptr : OpenOrMake(*root, WithoutBackslash(folder));
  bin->MoveTo("$R" + from.name, made ? *made : *root, NamePart(path));
  bin->RemoveFile("$I" + from.name);
}

}  // namespace

RestoreResult RestoreRecycled(const Machine& machine, const std::vector<RecycledFile>& files,
                              const Pause& pause) {
  RestoreResult result;
  const Bins bins = ReadBins(machine, pause);
  for (const RecycledFile& file : files) {
    if (pause()) {
      result.cancelled = true;
      break;
    }
    const auto from = bins.find({UpCase(file.path), file.bytes});
    const bool is_full = file.path.find(":\\") == 1;
    try {
      if (from == bins.end() || !is_full)
        throw Error(Error::Kind::kMissing, Say("It is not in the recycle bin: %1", file.path));
      MoveBack(machine, from->second, file.path);
      ++result.restored;
    } catch (const Error& error) {
      if (error.kind() == Error::Kind::kExists) ++result.skipped;
      result.problems.push_back(Shown(error));
    }
  }
  return result;
}

}  // namespace quellix
