#include "settings/own_files.h"

#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

bool IsInstalledElsewhere(const Machine& machine) {
  return !EqualsNoCase(machine.installed_folder, machine.program_folder);
}

// What cannot be looked at is there: it is then told that it cannot be read.
bool IsThere(const Machine& machine, const std::string& path) {
  try {
    return machine.files.Look(path, Detail::kKind).has_value();
  } catch (const Error&) {
    return true;
  }
}

}  // namespace

std::string OwnPath(const Machine& machine, std::string_view name) {
  return machine.program_folder + "\\" + std::string(name);
}

std::string FoundPath(const Machine& machine, std::string_view name) {
  std::string own = OwnPath(machine, name);
  if (!IsInstalledElsewhere(machine) || IsThere(machine, own)) return own;
  std::string installed = machine.installed_folder + "\\" + std::string(name);
  return IsThere(machine, installed) ? installed : own;
}

void MakeProgramFolder(const Machine& machine) {
  if (IsInstalledElsewhere(machine)) MakeFolders(machine.files, machine.program_folder + "\\");
}

void TakeOver(const Machine& machine, std::string_view name) {
  MakeProgramFolder(machine);
  const std::string own = OwnPath(machine, name), found = FoundPath(machine, name);
  if (found == own) return;
  if (const auto bytes = machine.files.ReadWholeFile(found)) {
    machine.files.WriteWholeFile(own, *bytes);
  }
}

}  // namespace quellix
