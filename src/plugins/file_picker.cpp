#include "plugins/file_picker.h"

#include <algorithm>

#include "platform/text.h"

namespace quellix::modPlugin {
namespace {

void SortNames(std::vector<std::string>& names) {
  std::ranges::sort(names, {}, [](const std::string& name) { return UpCase(name); });
}

}  // namespace

FilePicker::FilePicker(const Machine& machine) : machine_(machine) {
  for (const Drive& drive : machine.system.Drives()) {
    drives_.push_back(std::string(1, drive.letter) + ":");
  }
  const std::string of_windows = machine.system.WindowsFolder().substr(0, 2);
  const auto found = std::ranges::find_if(
      drives_, [&](const std::string& name) { return EqualsNoCase(name, of_windows); });
  ChooseDrive(found == drives_.end() ? 0 : static_cast<size_t>(found - drives_.begin()));
}

void FilePicker::ChooseDrive(size_t drive) {
  if (drive >= drives_.size()) return;
  drive_ = drive;
  folders_ = {{drives_[drive] + "\\", 0}};
  open_row_ = 0;
  Read();
}

void FilePicker::OpenFolder(size_t row) {
  if (row >= folders_.size()) return;
  if (row > open_row_) {  // one of the sub-folders
    std::swap(folders_[open_row_ + 1], folders_[row]);
    row = open_row_ + 1;
  }
  open_row_ = row;
  Read();
}

std::string FilePicker::Folder() const {
  std::string path;
  for (size_t row = 0; row < folders_.size() && row <= open_row_; ++row) {
    if (!path.empty() && path.back() != '\\') path += '\\';
    path += folders_[row].name;
  }
  return path;
}

void FilePicker::Read() {
  folders_.resize(open_row_ + 1);
  files_.clear();
  std::vector<std::string> names;
  machine_.files.Enumerate(Folder(), Detail::kKind, [&](const Entry& entry) {
    if (!entry.info.is_folder) files_.emplace_back(entry.name);
    if (entry.info.is_folder && !entry.info.is_link) names.emplace_back(entry.name);
    return true;
  });
  SortNames(files_);
  SortNames(names);
  for (std::string& name : names) folders_.push_back({std::move(name), open_row_ + 1});
}

}  // namespace quellix::modPlugin
