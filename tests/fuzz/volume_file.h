#pragma once

#include <fstream>

#include "support/volume_seed.h"

namespace quellix {

// One file of a volume, for targets whose reader takes a path: written anew for each input, without
// waiting for the disk. Make one for the whole program.
class VolumeFile {
 public:
  // `name` in the program folder.
  explicit VolumeFile(std::string_view name)
      : path_(volume_->machine().program_folder + "\\" + std::string(name)),
        native_(volume_->Native(path_)) {}

  void Write(std::string_view bytes) const {
    std::ofstream(native_, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  const std::string& path() const { return path_; }
  const std::string& native() const { return native_; }
  Machine machine() const { return volume_->machine(); }

 private:
  std::unique_ptr<VolumeTestMachine> volume_ = VolumeTestMachine::CreateVolume();
  std::string path_, native_;
};

}  // namespace quellix
