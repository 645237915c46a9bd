#include "settings/own_files.h"

#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kPrograms = "Programs.txt";

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

// A line of UTF-16, as installers read it, for each folder whose program keeps its files here.
// Without it an uninstaller leaves them.
void NameProgram(const Machine& machine) try {
  constexpr std::string_view kMark = "\xFF\xFE";
  const std::string path = OwnPath(machine, kPrograms);
  std::string bytes = machine.files.ReadWholeFile(path).value_or(std::string(kMark));
  if (!bytes.starts_with(kMark) || bytes.size() % 2 != 0) bytes = kMark;
  for (const std::string& line : Split(FromUtf16Bytes(bytes.substr(kMark.size())), '\n')) {
    if (EqualsNoCase(line.substr(0, line.find('\r')), machine.installed_folder)) return;
  }
  machine.files.WriteWholeFile(path, bytes + ToUtf16Bytes(machine.installed_folder + "\r\n"));
} catch (const Error&) {
  return;
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

std::vector<std::string> FoundFolders(const Machine& machine) {
  std::vector<std::string> folders{machine.program_folder};
  if (IsInstalledElsewhere(machine)) folders.push_back(machine.installed_folder);
  return folders;
}

Machine BesideProgram(const Machine& machine) {
  Machine beside = machine;
  beside.program_folder = beside.installed_folder;
  return beside;
}

void MakeProgramFolder(const Machine& machine) {
  if (!IsInstalledElsewhere(machine)) return;
  MakeFolders(machine.files, machine.program_folder + "\\");
  NameProgram(machine);
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
