#include "app/run_logs.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app/item_catalogue.h"
#include "app/run_table.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/exit_code.h"
#include "settings/own_files.h"

namespace quellix {
namespace {

using Json = nlohmann::json;

constexpr uint64_t kLargest = 512u << 20;  // a run lists a million entries at most

// "dddd-dd-dd dd.dd.dd.json": no other file is ever taken for a run.
bool IsRunName(std::string_view name) {
  constexpr std::string_view kForm = "0000-00-00 00.00.00.json";
  return std::ranges::equal(name, kForm, [](char c, char form) {
    return form == '0' ? c >= '0' && c <= '9' : c == form;
  });
}

std::string TextOf(const Json& row, const char* field) {
  const auto found = row.find(field);
  return found != row.end() && found->is_string() ? found->get<std::string>() : std::string();
}

struct KeptRun {
  std::string name;
  Folder* folder;
};

// None where the folder cannot be listed.
std::vector<KeptRun> RunsIn(Folder& folder) try {
  std::vector<KeptRun> runs;
  folder.Enumerate(Detail::kKind, [&](const Entry& entry) {
    const bool is_file = !entry.info.is_folder && !entry.info.is_link;
    if (is_file && IsRunName(entry.name)) runs.push_back({std::string(entry.name), &folder});
    return true;
  });
  return runs;
} catch (const Error&) {
  return {};
}

// The folders that are there, held open.
std::vector<std::unique_ptr<Folder>> OpenAll(FileSystem& files,
                                             const std::vector<std::string>& paths) {
  std::vector<std::unique_ptr<Folder>> folders;
  for (const std::string& path : paths) try {
      if (auto folder = files.OpenFolder(path)) folders.push_back(std::move(folder));
    } catch (const Error&) {  // has no runs for this user
    }
  return folders;
}

// Newest first.
std::vector<KeptRun> RunsIn(const std::vector<std::unique_ptr<Folder>>& folders) {
  std::vector<KeptRun> runs;
  for (const auto& folder : folders) std::ranges::move(RunsIn(*folder), std::back_inserter(runs));
  std::ranges::sort(runs, std::greater(), &KeptRun::name);
  return runs;
}

// What is no count, or does not fit, counts as 0.
template <class Number>
Number NumberOf(const Json& row, const char* field) {
  const auto found = row.find(field);
  if (found == row.end() || !found->is_number_unsigned()) return {};
  const auto number = found->get<uint64_t>();
  constexpr auto kMost = static_cast<uint64_t>(INT32_MAX);
  return sizeof(Number) < sizeof(uint64_t) && number > kMost ? Number{}
                                                             : static_cast<Number>(number);
}

// Rows of a rule follow each other, and so do those of an archive.
RunEntry ToEntry(const Json& row, RunEntries& entries) {
  RunEntry entry{.kind = KindOf(TextOf(row, "kind")),
                 .fate = FateOf(TextOf(row, "fate")),
                 .way = WayOf(TextOf(row, "way")),
                 .archive = entries.ArchiveNumber(TextOf(row, "archive")),
                 .count = std::max(NumberOf<uint32_t>(row, "count"), 1u),
                 .bytes = NumberOf<uint64_t>(row, "bytes"),
                 .last_write = FiletimeOf(TextOf(row, "modified")),
                 .place = TextOf(row, "place"),
                 .part = TextOf(row, "part"),
                 .note = TextOf(row, "note")};
  if (const Item* const item = FindItem(TextOf(row, "item")))
    entry.item = static_cast<uint8_t>(item->run_order);
  entries.BeginRule(TextOf(row, "rule"));
  return entry;
}

RunTotals ToTotals(const Json& report) {
  const Json& summary = report.at("summary");
  RunTotals totals;
  totals.AbortRequested = summary.value("stopped", false);
  const int exit_code = report.value("exitCode", int{kFailed});
  totals.SomeErrors = exit_code == kFailed;
  totals.SomeFilesLocked = exit_code == kSomeFilesStayed;
  totals.RunFilesDeleted = NumberOf<int32_t>(summary, "files");
  totals.RunSpaceGained = NumberOf<double>(summary, "bytes");
  totals.FilesBackedUp = NumberOf<int32_t>(summary, "backedUp");
  totals.FilesNotBackedUp = NumberOf<int32_t>(summary, "notBackedUp");
  totals.StayedCount = NumberOf<uint64_t>(summary, "stayed");
  totals.KeptCount = NumberOf<uint64_t>(summary, "kept");
  totals.Entries->left_out = NumberOf<uint64_t>(summary, "leftOut");
  totals.RunLog = ReplaceNoCase(TextOf(summary, "log"), "\n", "\r\n");
  for (const Item& item : AllItems()) {
    totals.Outcomes[static_cast<size_t>(item.run_order) - 1] = OutcomeOf(TextOf(summary, item.key));
  }
  for (const Json& row : report.at("rows")) totals.Entries->Add(ToEntry(row, *totals.Entries));
  return totals;
}

}  // namespace

RunLogs::RunLogs(const Machine& machine) : machine_(machine) {
  for (const std::string& folder : FoundFolders(machine)) folders_.push_back(folder + "\\Logs\\");
}

// What nobody can look at in another copy's folder is not listed from there either.
bool RunLogs::HasRun(const std::string& folder, const std::string& name) const try {
  return machine_.files.Look(folder + name, Detail::kKind).has_value();
} catch (const Error&) {
  if (folder == folders_[0]) throw;
  return false;
}

std::string RunLogs::FreeName() const {
  LocalTime now = machine_.system.ToLocalTime(machine_.system.UtcNow());
  for (;; ++now.second) {
    char name[96];
    std::snprintf(name, sizeof name, "%04d-%02d-%02d %02d.%02d.%02d.json", now.year, now.month,
                  now.day, now.hour, now.minute, now.second);
    const auto has_it = [&](const std::string& folder) { return HasRun(folder, name); };
    // Beyond the minute's end as well the order of names is that of the runs.
    if (now.second == 99 || std::ranges::none_of(folders_, has_it)) return name;
  }
}

std::string RunLogs::Keep(const RunTotals& totals, int most) {
  std::string kept;
  if (most > 0) {
    MakeFolders(machine_.files, folders_[0]);
    std::ostringstream text;
    WriteJson(text, TableOfRun("clean", totals, false), ExitCodeOf(totals));
    kept = FreeName();
    machine_.files.WriteWholeFile(folders_[0] + kept, text.str());
  }
  return RemoveOld(kept, static_cast<size_t>(std::max(most - 1, 0)));
}

// After a clock was moved back the last run need not have the last name.
std::string RunLogs::RemoveOld(const std::string& kept, size_t most) {
  std::string stayed;
  const auto folders = OpenAll(machine_.files, {folders_[0]});  // another copy removes its own
  std::vector<KeptRun> runs = RunsIn(folders);
  std::erase_if(runs, [&](const KeptRun& run) { return run.name == kept; });
  for (size_t i = most; i < runs.size(); ++i) {
    try {
      runs[i].folder->RemoveFile(runs[i].name);
    } catch (const Error& error) {
      stayed = Logged(error);
    }
  }
  return stayed;
}

std::vector<std::string> RunLogs::List() const {
  std::vector<std::string> names;
  const auto folders = OpenAll(machine_.files, folders_);
  for (KeptRun& run : RunsIn(folders)) {
    if (names.empty() || names.back() != run.name) names.push_back(std::move(run.name));
  }
  return names;
}

std::string RunLogs::TitleOf(const std::string& name) {
  std::string title = name.substr(0, name.rfind('.'));
  std::ranges::replace(title, '.', ':');
  return title;
}

RunTotals RunLogs::Read(const std::string& name) const {
  for (const std::string& folder : folders_) {
    const std::optional<std::string> text =
        IsRunName(name) ? machine_.files.ReadWholeFile(folder + name, kLargest) : std::nullopt;
    if (!text) continue;
    try {
      return ToTotals(Json::parse(*text));
    } catch (const Json::exception&) {
      throw Error(Error::Kind::kOther, Say("The run cannot be read: %1", folder + name));
    }
  }
  throw Error(Error::Kind::kMissing, Say("There is no run of that name: %1", name));
}

}  // namespace quellix
