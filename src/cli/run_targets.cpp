#include "cli/run_targets.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>

#include "cli/commands.h"
#include "cli/console_run.h"
#include "cli/console_view.h"
#include "cli/recipe_process.h"
#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

struct Ended {
  int code = kFailed;
  std::string report;
};

// A line is a folder, and behind a tab the folder of its settings; "#" begins a remark.
void AddListed(const std::string& file, std::vector<RunTarget>& volumes) {
  for (std::string line : Split(ReadOwnFile(file, "list of volumes"), '\n')) {
    std::erase(line, '\r');
    if (line.empty() || line[0] == '#') continue;
    const size_t tab = std::min(line.find('\t'), line.size());
    volumes.push_back({line.substr(0, tab), "", line.substr(std::min(tab + 1, line.size()))});
  }
}

// Of several spellings of a place the first one is worked on.
void KeepFirstOfEach(std::vector<RunTarget>& volumes, const ConsolePlatform& platform) {
  std::map<std::string, std::string> known;
  std::erase_if(volumes, [&](const RunTarget& volume) {
    const auto [first, is_new] = known.emplace(platform.identity(volume.volume), volume.volume);
    if (is_new) return false;
    std::cerr << Printable(volume.volume) << " is the same folder as " << Printable(first->second)
              << " and is worked on once." << std::endl;
    return true;
  });
}

std::vector<RunTarget> VolumesOf(const TargetChoice& choice, const ConsolePlatform& platform) {
  if (!platform.works_on_volumes) return {RunTarget{}};
  std::vector<RunTarget> volumes;
  for (const std::string& volume : choice.volumes) volumes.push_back({volume, ""});
  if (!choice.volumes_from.empty()) AddListed(choice.volumes_from, volumes);
  KeepFirstOfEach(volumes, platform);
  return volumes;
}

// All persons, then who was named besides.
std::vector<std::string> UsersOf(const TargetChoice& choice, const ConsolePlatform& platform,
                                 const MachineOptions& machine) {
  std::vector<std::string> users;
  if (choice.all_users) users = platform.users(machine);
  for (const std::string& name : choice.users) {
    const bool is_there =
        std::ranges::any_of(users, [&](const auto& user) { return EqualsNoCase(user, name); });
    if (!is_there) users.push_back(name);
  }
  if (users.empty()) users.emplace_back();
  return users;
}

fs::path PathOf(const std::string& file) { return std::u8string(file.begin(), file.end()); }

// "runs.json" as "runs-2.json".
std::string Numbered(const std::string& file, size_t number) {
  if (file.empty()) return file;
  const fs::path path = PathOf(file);
  fs::path name = path.stem();
  name += "-" + std::to_string(number);
  name += path.extension();
  const std::u8string text = (path.parent_path() / name).u8string();
  return {text.begin(), text.end()};
}

// Of an earlier run: nobody is to take it for one of this. A link leads to it; a pipe stays.
void RemoveOld(const std::string& report) {
  std::error_code error;
  const fs::path path = PathOf(report);
  if (report.empty() || !fs::is_regular_file(path, error)) return;
  fs::remove(fs::canonical(path, error), error);
  if (!error) return;
  throw Error(Error::Kind::kDenied,
              "nothing was done, because " + report + " of an earlier run cannot be removed.");
}

// A run that was killed leaves an empty one, or none.
bool IsWritten(const std::string& report) {
  std::error_code none;
  const fs::path path = PathOf(report);
  if (report.empty() || !fs::exists(path, none)) return false;
  return !fs::is_regular_file(path, none) || fs::file_size(path, none) > 0;
}

const char* WordFor(int code) {
  switch (code) {
    case kDone:
      return "done";
    case kSomeFilesStayed:
      return "some files stayed";
    case kWrongUsage:
      return "wrong usage";
  }
  return "failed, stopped or not begun";
}

int Worst(const std::vector<Ended>& all) {
  for (const int code : {kWrongUsage, kFailed, kSomeFilesStayed}) {
    if (std::ranges::any_of(all, [code](const Ended& each) { return each.code == code; }))
      return code;
  }
  return kDone;
}

int RunOne(const RunTarget& target, ReportOptions& options,
           const std::function<int(const RunTarget&)>& run) {
  ConsoleView::ShowProgress(false);
  ConsoleView::Asks(false);
  options.volume = target.volume;
  options.user = target.user;
  try {
    return run(target);
  } catch (const std::exception& error) {
    return Fail(error.what(), kFailed);
  }
}

// Of tables that follow each other the first alone has its line of names.
void PrintCsv(const std::string& csv, bool& is_first) {
  const size_t names = csv.find('\n') + 1;
  std::cout << std::string_view(csv).substr(is_first ? 0 : names);
  if (!csv.empty()) is_first = false;
}

}  // namespace

std::vector<RunTarget> TargetsOf(const TargetChoice& choice, const ConsolePlatform& platform,
                                 const MachineOptions& machine) {
  std::vector<RunTarget> targets;
  MachineOptions options = machine;
  for (const RunTarget& volume : VolumesOf(choice, platform)) {
    options.volume = volume.volume;
    try {
      for (const std::string& user : UsersOf(choice, platform, options))
        targets.push_back({volume.volume, user, volume.settings});
    } catch (const Error& error) {
      targets.push_back(
          {volume.volume, "", volume.settings,
           std::string("The users cannot be told, and nothing is done: ") + error.what()});
    }
  }
  return targets;
}

int RunOnAll(const std::vector<RunTarget>& targets, const TargetChoice& choice,
             const ConsolePlatform& platform, ReportOptions& options,
             const std::function<int(const RunTarget&)>& run) {
  Report report(options);
  std::vector<Ended> all(targets.size());
  std::vector<ProcessJob> jobs;
  for (size_t i = 0; i < targets.size(); ++i) {
    all[i].report = Numbered(options.file, i + 1);
    RemoveOld(all[i].report);
    jobs.push_back({targets[i].volume, [&, i] {
                      options.file = all[i].report;
                      return RunOne(targets[i], options, run);
                    }});
  }
  bool is_first = true;
  platform.run_processes(jobs, choice.jobs, [&](size_t i, const ProcessResult& result) {
    if (result.code >= 0) all[i].code = result.code;
    report.text() << "== " << Printable(targets[i].Name()) << "\n";
    options.csv ? PrintCsv(result.output, is_first) : void(std::cout << result.output);
    std::cout << std::flush;
    std::cerr << result.errors << std::flush;
  });
  report.text() << "== " << targets.size() << " runs\n";
  for (size_t i = 0; i < targets.size(); ++i)
    report.text() << Printable(targets[i].Name()) << ": " << WordFor(all[i].code) << "\n";
  const auto row = [&](size_t i) -> std::vector<ReportCell> {
    return {targets[i].volume, TextCell(targets[i].user),
            uint64_t{static_cast<unsigned>(all[i].code)},
            TextCell(IsWritten(all[i].report) ? all[i].report : "")};
  };
  options.csv = false;  // of rows of another kind
  return report.Finish({.command = "runs",
                        .columns = {"volume", "user", "exitCode", "report"},
                        .count = targets.size(),
                        .row = row,
                        .summary = {}},
                       Worst(all));
}

}  // namespace quellix
