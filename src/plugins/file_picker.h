#pragma once

#include <string>
#include <vector>

#include "platform/machine.h"

namespace quellix::modPlugin {

// The editor's way through drives and folders to files.
class FilePicker {
 public:
  explicit FilePicker(const Machine& machine);

  const std::vector<std::string>& drives() const { return drives_; }  // "C:"
  // Place among the drives; 0 when there are none.
  size_t drive() const { return drive_; }
  void ChooseDrive(size_t drive);

  // The open folder with those above it, from the drive on, then its sub-folders by name.
  struct Row {
    std::string name;
    size_t depth;  // 0 is the drive's root
  };
  const std::vector<Row>& folders() const { return folders_; }
  size_t open_row() const { return open_row_; }
  void OpenFolder(size_t row);

  // Full path, with "\" at its end for a drive's root only.
  std::string Folder() const;
  const std::vector<std::string>& files() const { return files_; }  // by name

 private:
  void Read();

  Machine machine_;
  std::vector<std::string> drives_;
  size_t drive_ = 0;
  std::vector<Row> folders_;
  size_t open_row_ = 0;
  std::vector<std::string> files_;
};

}  // namespace quellix::modPlugin
