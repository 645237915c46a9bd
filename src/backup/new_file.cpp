#include "backup/new_file.h"

#include <utility>

#include "platform/error.h"
#include "platform/path.h"

namespace quellix {

NewFile::NewFile(Folder& folder)
    : folder_(&folder), name_(TemporaryName()), file_(folder.Open(name_, OpenMode::kCreateNew)) {}

NewFile::NewFile(NewFile&& other) noexcept
    : folder_(other.folder_),
      name_(std::exchange(other.name_, {})),
      file_(std::move(other.file_)) {}

NewFile& NewFile::operator=(NewFile&& other) noexcept {
  std::swap(folder_, other.folder_);
  name_.swap(other.name_);
  file_.swap(other.file_);
  return *this;
}

void NewFile::Place(std::string_view name, IfThere if_there) {
  file_.reset();
  folder_->Rename(name_, name, if_there);
  name_.clear();
}

void NewFile::Remove() noexcept {
  file_.reset();
  if (name_.empty()) return;
  try {
    folder_->RemoveFile(name_);
  } catch (const Error&) {
    return;  // the failure that led here is told; a later start clears it away
  }
}

}  // namespace quellix
