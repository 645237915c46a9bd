#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "cli/console.h"

namespace quellix {

// "quellixctl backup": lists, restores and repairs backups.
class BackupCommands {
 public:
  // `add_machine` gives a command the options that name the machine.
  using AddMachine = std::function<void(CLI::App& command, MachineOptions& options)>;
  BackupCommands(CLI::App& app, const AddMachine& add_machine);

  bool parsed() const { return backup_->parsed(); }
  // An ExitCode; throws Error.
  int Run(const ConsolePlatform& platform);

 private:
  int ListArchives(const Machine& machine) const;
  int ListEntries(const Machine& machine) const;
  int Restore(const Machine& machine) const;
  int Repair(const Machine& machine) const;
  std::string TargetFolder(const ConsolePlatform& platform);

  CLI::App* backup_;
  CLI::App* list_;
  CLI::App* restore_;
  CLI::App* repair_;
  MachineOptions machine_;
  std::string archive_, to_, overwrite_;
  std::vector<std::string> entries_;
};

}  // namespace quellix
