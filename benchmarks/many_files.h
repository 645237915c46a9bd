#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "ui/windows_api.h"

namespace quellix {

inline constexpr int kManyFiles = 200'000, kManyAFolder = 1000;

// Empty files below a folder, kManyAFolder each in folders of their own, none in the order of its
// name.
inline void MakeManyFiles(const std::filesystem::path& below, const wchar_t* extension) {
  for (int i = 0; i < kManyFiles; ++i) {
    const std::filesystem::path folder = below / std::to_wstring(i / kManyAFolder);
    if (i % kManyAFolder == 0) std::filesystem::create_directories(folder);
    const std::wstring file =
        (folder / (std::to_wstring(i * 7919LL % kManyFiles) + extension)).wstring();
    const HANDLE handle =
        CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    if (handle == INVALID_HANDLE_VALUE) throw std::runtime_error("a file could not be made");
    CloseHandle(handle);
  }
}

}  // namespace quellix
