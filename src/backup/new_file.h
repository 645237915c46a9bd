#pragma once

#include <memory>
#include <string>

#include "platform/file_system.h"

namespace quellix {

// A file under a random name in the folder where it is to stand; it goes again unless it takes its
// name. The functions throw Error.
class NewFile {
 public:
  // The folder must outlive it.
  explicit NewFile(Folder& folder);
  ~NewFile() { Remove(); }
  NewFile(NewFile&& other) noexcept;
  NewFile& operator=(NewFile&& other) noexcept;

  // Until Take or Place.
  RandomFile& file() { return *file_; }
  // For who closes it before Place.
  std::unique_ptr<RandomFile> Take() { return std::move(file_); }
  // Gives it its name, in one step; what it holds should be on the disk by then.
  void Place(std::string_view name, IfThere if_there);

 private:
  void Remove() noexcept;

  Folder* folder_;
  std::string name_;  // "" once it is placed
  std::unique_ptr<RandomFile> file_;
};

}  // namespace quellix
