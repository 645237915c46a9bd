#pragma once

#include <string>
#include <string_view>

namespace quellix {

// A file of the shell link format: a local path, if one is named, and a working folder, if any.
inline std::string ShortcutBytes(std::string_view target, std::string_view working_folder,
                                 std::string_view item_list = {}) {
  const auto number = [](size_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 0xFF);
    return text;
  };
  const bool has_folder = !working_folder.empty(), has_target = !target.empty();
  std::string bytes = number(76, 4) + number(0x00021401, 4) + std::string(4, '\0') +
                      std::string("\xC0\0\0\0\0\0\0\x46", 8);
  bytes += number((item_list.empty() ? 0 : 1) | (has_target ? 2 : 0) | (has_folder ? 0x10 : 0), 4);
  bytes += number(0x20, 4) + std::string(24, '\0') + number(0, 4) + number(0, 4) + number(1, 4) +
           std::string(12, '\0');
  if (!item_list.empty()) {
    bytes += number(item_list.size() + 4, 2) + number(item_list.size() + 2, 2) +
             std::string(item_list) + number(0, 2);
  }
  if (has_target) {
    const std::string volume = number(17, 4) + number(3, 4) + number(0, 4) + number(16, 4) + '\0';
    const size_t path_at = 28 + volume.size(), end = path_at + target.size() + 1;
    bytes += number(end + 1, 4) + number(28, 4) + number(1, 4) + number(28, 4) +
             number(path_at, 4) + number(0, 4) + number(end, 4) + volume + std::string(target) +
             '\0' + '\0';
  }
  if (has_folder) bytes += number(working_folder.size(), 2) + std::string(working_folder);
  return bytes + number(0, 4);
}

}  // namespace quellix
