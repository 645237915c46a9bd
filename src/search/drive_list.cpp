#include "search/drive_list.h"

#include <algorithm>

#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kTypeNames[] = {"Floppy drive",
                                           "Removable drive",
                                           "Hard drive",
                                           "Remote (network) drive",
                                           "CD-ROM drive",
                                           "RAM disk",
                                           "The drive type cannot be determined",
                                           "The root directory does not exist"};

}  // namespace

std::string_view DriveTypeName(const Drive& drive) {
  const char letter = static_cast<char>(drive.letter & ~0x20);
  switch (drive.type) {
    case DriveType::kRemovable:
      return kTypeNames[letter == 'A' || letter == 'B' ? 0 : 1];
    case DriveType::kFixed:
      return kTypeNames[2];
    case DriveType::kRemote:
      return kTypeNames[3];
    case DriveType::kCdRom:
      return kTypeNames[4];
    case DriveType::kRamDisk:
      return kTypeNames[5];
    case DriveType::kUnknown:
      return kTypeNames[6];
    case DriveType::kNoRoot:
      return kTypeNames[7];
  }
  return {};
}

std::vector<std::string> DriveList(System& system) {
  std::vector<std::string> entries;
  for (const Drive& drive : system.Drives()) {
    entries.push_back(std::string(1, drive.letter) + ": " + std::string(DriveTypeName(drive)));
  }
  return entries;
}

std::vector<std::string> ParseDriveLine(std::string_view line) {
  std::string rest(line);
  for (const std::string_view name : kTypeNames) rest = ReplaceNoCase(rest, name, "");
  std::erase(rest, ' ');
  std::vector<std::string> roots = Split(rest, ':');
  roots.pop_back();
  for (std::string& root : roots) root += ":\\";
  return roots;
}

std::string WindowsDriveRoot(System& system) {
  const std::string folder = system.WindowsFolder();
  return folder.substr(0, folder.find('\\')) + "\\";
}

}  // namespace quellix
