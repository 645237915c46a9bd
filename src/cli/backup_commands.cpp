#include <filesystem>
#include <iomanip>
#include <iostream>

#include "backup/backups.h"
#include "backup/leftovers.h"
#include "cli/commands.h"
#include "cli/console_view.h"
#include "platform/error.h"
#include "platform/text.h"
#include "settings/own_files.h"

namespace quellix {
namespace {

constexpr int kDateWidth = 24;

struct BackupOptions {
  std::string archive, to, overwrite;
  std::vector<std::string> entries;
  bool is_own_folder = false;  // `to` is one of the console's own system
};

class ConsolePrompts : public NoPrompts {
 public:
  OverwriteAnswer AskOverwrite(std::string_view path) override {
    std::cerr << path << " is there already. Replace it? [y]es, [n]o, [a]ll, n[o]ne, [q]uit: "
              << std::flush;
    std::string line;
    if (!std::getline(std::cin, line)) {
      nobody_answered = true;
      std::cerr << std::endl;
      return OverwriteAnswer::kNone;
    }
    switch (line.empty() ? 'n' : line[0]) {
      case 'y':
        return OverwriteAnswer::kYes;
      case 'a':
        return OverwriteAnswer::kAll;
      case 'o':
        return OverwriteAnswer::kNone;
      case 'q':
        return OverwriteAnswer::kCancel;
      default:
        return OverwriteAnswer::kNo;
    }
  }

  bool nobody_answered = false;
};

OverwriteMode ModeOf(const Machine& machine, const std::string& word) {
  return ParseOverwriteMode(word).value_or(StoredOverwriteMode(machine));
}

// kSomeFilesStayed when there is something to say.
int SayIfIncomplete(const BackupInfo& info) {
  if (info.incomplete.empty()) return kDone;
  std::cerr << info.name << ": " << info.incomplete << std::endl;
  return kSomeFilesStayed;
}

// "3 files restored, 1 left as it was".
std::string SentenceOf(const RestoreResult& result, BackupKind kind) {
  return Counted(std::to_string(result.restored), kind) + " restored, " +
         std::to_string(result.skipped) + " left as they were" +
         (result.cancelled ? "; stopped at your wish" : "");
}

void ClearLeftovers(const Machine& machine, const Backups& backups) {
  std::vector<std::string> folders = FoundFolders(machine);
  folders.insert(folders.end(), backups.folders().begin(), backups.folders().end());
  quellix::ClearLeftovers(machine.files, folders);
}

bool IsWindowsPath(std::string_view path) {
  return path.starts_with("\\\\") || (path.size() > 2 && path[1] == ':' && path[2] == '\\');
}

// A folder of the console's own system is a drive of its own on a machine that is not this one.
std::string TargetFolder(const std::string& to, ConsoleCommands& commands) {
  const std::u8string utf8(to.begin(), to.end());
  const std::filesystem::path folder = std::filesystem::absolute(utf8).lexically_normal();
  if (!commands.platform().works_on_volumes) {
    const std::u8string text = folder.u8string();
    return std::string(text.begin(), text.end());
  }
  commands.machine_options().own_folder = folder.string();
  return "Z:\\";
}

// Whether a folder of the console's own system is none of the machine's.
bool IsElsewhere(const std::string& folder, ConsoleCommands& commands) {
  const ConsolePlatform& platform = commands.platform();
  return !platform.works_on_volumes || !platform.is_on_machine(commands.machine_options(), folder);
}

bool AreBackupsElsewhere(ConsoleCommands& commands) {
  if (!commands.platform().works_on_volumes) return true;
  MachineOptions options = commands.machine_options();
  options.use = MachineUse::kLook;
  const std::unique_ptr<OpenMachine> open = commands.platform().open(options);
  const Machine machine = open->machine();
  return Backups(machine).folder().starts_with(machine.program_folder) && IsElsewhere("", commands);
}

int ListArchives(const Machine& machine, Report& report) {
  int result = kDone;
  const Locale locale = machine.system.UserLocale();
  const std::vector<BackupInfo> archives = Backups(machine).List();
  for (const BackupInfo& info : archives) {
    report.text() << std::left << std::setw(24) << info.name << std::setw(4)
                  << info.root.substr(0, 2) << std::setw(kDateWidth)
                  << FormatDateTime(info.date, locale) << std::right << std::setw(9) << info.entries
                  << (info.kind == BackupKind::kRegistry ? " key(s) " : " file(s)") << std::setw(14)
                  << info.size << " bytes\n";
    const int state = SayIfIncomplete(info);
    if (result == kDone) result = state;
    if (info.problem.empty()) continue;
    std::cerr << info.name << ": " << info.problem << std::endl;
    result = kFailed;
  }
  const auto row = [&](size_t i) -> std::vector<ReportCell> {
    const BackupInfo& info = archives[i];
    return {info.name,
            info.kind == BackupKind::kRegistry ? "registry" : "files",
            TextCell(info.root),
            LocalTimeCell(info.date),
            uint64_t{info.entries},
            info.size,
            TextCell(info.incomplete),
            TextCell(info.problem)};
  };
  return report.Finish(
      {.command = "backup list",
       .columns = {"archive", "kind", "root", "made", "entries", "bytes", "incomplete", "problem"},
       .count = archives.size(),
       .row = row,
       .summary = {}},
      result);
}

int ListEntries(const std::string& archive, const Machine& machine, Report& report) {
  Backups backups(machine);
  int result = SayIfIncomplete(backups.Check(archive));
  const Locale locale = machine.system.UserLocale();
  const std::vector<BackupEntry> entries = backups.ListEntries(archive);
  for (const BackupEntry& entry : entries) {
    const std::string date =
        entry.last_write == 0
            ? ""
            : FormatDateTime(machine.system.ToLocalTime(entry.last_write), locale);
    report.text() << AttributeLetters(entry.attributes, "-") << std::right << std::setw(14)
                  << entry.size << "  " << std::left << std::setw(kDateWidth) << date << entry.path
                  << "\n";
    if (entry.refusal.empty()) continue;
    std::cerr << entry.refusal << std::endl;
    result = kSomeFilesStayed;
  }
  const auto row = [&](size_t i) -> std::vector<ReportCell> {
    const BackupEntry& entry = entries[i];
    return {entry.path, entry.size, TimeCell(entry.last_write),
            AttributeLetters(entry.attributes, ""), TextCell(entry.refusal)};
  };
  return report.Finish({.command = "backup list",
                        .columns = {"place", "bytes", "modified", "attributes", "note"},
                        .count = entries.size(),
                        .row = row,
                        .summary = {{"archive", archive}}},
                       result);
}

int List(const std::string& archive, const ReportOptions& options, const Machine& machine) {
  Report report(options);
  return archive.empty() ? ListArchives(machine, report) : ListEntries(archive, machine, report);
}

int Restore(const BackupOptions& options, const Machine& machine) {
  Backups backups(machine);
  ClearLeftovers(machine, backups);
  const BackupInfo info = backups.Check(options.archive);
  const int state = SayIfIncomplete(info);
  ConsolePrompts prompts;
  ConsoleView view;
  const auto pause = [&view](const Progress&) { return view.Breathe(); };
  const RestoreResult result = backups.Restore(
      options.archive, {options.entries, options.to, ModeOf(machine, options.overwrite)}, prompts,
      pause);
  for (const std::string& problem : result.problems) std::cerr << problem << "\n";
  std::cout << SentenceOf(result, info.kind) << std::endl;
  if (result.cancelled) return kFailed;
  if (prompts.nobody_answered) {
    std::cerr << "What is there already was left, as nobody could be asked: say what to do with it "
                 "by --overwrite."
              << std::endl;
    return result.restored == 0 ? kFailed : kSomeFilesStayed;
  }
  return result.problems.empty() ? state : kSomeFilesStayed;
}

int Repair(const std::string& archive, const Machine& machine) {
  Backups backups(machine);
  ClearLeftovers(machine, backups);
  const std::string repaired = backups.Repair(archive);
  std::cout << (repaired.empty() ? "The archive is whole; there is nothing to repair." : repaired)
            << std::endl;
  return kDone;
}

}  // namespace

void AddBackupCommands(ConsoleCommands& commands) {
  CLI::App& backup = commands.AddGroup("backup", "List, restore and repair backups");
  const auto options = std::make_shared<BackupOptions>();
  const auto add = [&](const char* name, const char* what, const ConsoleCommands::Action& action) {
    CLI::App& command = commands.AddTo(backup, name, what, action);
    command.add_option("ARCHIVE", options->archive, "Name of an archive in the backup folder")
        ->option_text(" ");
    return &command;
  };
  commands.AddReport(*add("list", "List the archives, or the files in one",
                          [options, &commands](const Machine& machine) {
                            return List(options->archive, commands.report_options(), machine);
                          }));
  CLI::App& restore = *add("restore", "Put files back", [options](const Machine& machine) {
    return Restore(*options, machine);
  });
  CLI::App& repair =
      *add("repair", "Make an incomplete archive whole",
           [options](const Machine& machine) { return Repair(options->archive, machine); });
  for (CLI::App* command : {&restore, &repair}) command->get_option("ARCHIVE")->required();
  restore.add_option("ENTRY", options->entries, "Paths as \"backup list\" shows them; all without")
      ->option_text(" ");
  restore
      .add_option("--to", options->to, "Folder to restore into, instead of where the files were")
      ->type_name("DIR");
  restore.add_option("--overwrite", options->overwrite, "What happens to files that are there")
      ->check(CLI::IsMember({"Always", "Newer", "Never", "Ask"}, CLI::ignore_case));
  commands.Changes(restore, [options, &commands] {
    return options->is_own_folder && IsElsewhere(commands.machine_options().own_folder, commands);
  });
  commands.Changes(repair, [&commands] { return AreBackupsElsewhere(commands); });
  restore.callback([options, &commands] {
    options->is_own_folder = !options->to.empty() && !IsWindowsPath(options->to);
    if (options->is_own_folder) options->to = TargetFolder(options->to, commands);
  });
}

}  // namespace quellix
