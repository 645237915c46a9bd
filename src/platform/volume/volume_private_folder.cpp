#include <cerrno>

#include "platform/private_folder.h"
#include "platform/volume/volume_error.h"

namespace quellix {

// Nobody is logged on whose programs could get in.
void MakePrivateFolder(const Machine& machine, const std::string& path) {
  if (machine.files.Look(path, Detail::kKind)) ThrowErrno(EEXIST, path);
  machine.files.CreateFolder(path);
}

}  // namespace quellix
