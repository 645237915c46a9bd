#include "search/drive_list.h"

#include <algorithm>

#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr std::string_view kTypeNames[] = {Mark("Floppy drive"),
                                           Mark("Removable drive"),
                                           Mark("Hard drive"),
                                           Mark("Remote (network) drive"),
                                           Mark("CD-ROM drive"),
                                           Mark("RAM disk"),
                                           Mark("The drive type cannot be determined"),
                                           Mark("The root directory does not exist")};

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

std::string ShownDrive(std::string_view entry) {
  const size_t start = std::min(entry.find(' '), entry.size() - 1) + 1;
  return std::string(entry.substr(0, start)) + Tr(entry.substr(start));
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
