#pragma once

#include "support/jump_list_bytes.h"

namespace quellix {

// A file of the shell link format: a local path, if one is named, and a working folder, if any.
inline std::string ShortcutBytes(std::string_view target, std::string_view working_folder,
                                 std::string_view item_list = {}) {
  const bool has_folder = !working_folder.empty(), has_target = !target.empty();
  std::string bytes = Little(76, 4) + Little(0x00021401, 4) + std::string(4, '\0') +
                      std::string("\xC0\0\0\0\0\0\0\x46", 8);
  bytes += Little((item_list.empty() ? 0 : 1) | (has_target ? 2 : 0) | (has_folder ? 0x10 : 0), 4);
  bytes += Little(0x20, 4) + std::string(24, '\0') + Little(0, 4) + Little(0, 4) + Little(1, 4) +
           std::string(12, '\0');
  if (!item_list.empty()) {
    bytes += Little(item_list.size() + 4, 2) + Little(item_list.size() + 2, 2) +
             std::string(item_list) + Little(0, 2);
  }
  if (has_target) {
    const std::string volume = Little(17, 4) + Little(3, 4) + Little(0, 4) + Little(16, 4) + '\0';
    const size_t path_at = 28 + volume.size(), end = path_at + target.size() + 1;
    bytes += Little(end + 1, 4) + Little(28, 4) + Little(1, 4) + Little(28, 4) +
             Little(path_at, 4) + Little(0, 4) + Little(end, 4) + volume + std::string(target) +
             '\0' + '\0';
  }
  if (has_folder) bytes += Little(working_folder.size(), 2) + std::string(working_folder);
  return bytes + Little(0, 4);
}

}  // namespace quellix
