#pragma once

#include <windows.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace quellix {

// Writes what a test carries in its resources by that name ("window_program"), as what is tried in
// the sandbox has to lie in it.
inline void Unpack(const wchar_t* name, const std::filesystem::path& path) {
  const HRSRC found = FindResourceW(nullptr, name, RT_RCDATA);
  const HGLOBAL loaded = LoadResource(nullptr, found);
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  const bool is_whole =
      WriteFile(file, LockResource(loaded), SizeofResource(nullptr, found), &written, nullptr);
  CloseHandle(file);
  if (!is_whole || written == 0) throw std::runtime_error("cannot unpack " + path.string());
}

// A process of a program that a test has unpacked; ended with the object.
class UnpackedProgram {
 public:
  // Returns when its window takes input.
  explicit UnpackedProgram(const std::filesystem::path& path, const std::wstring& arguments = {}) {
    STARTUPINFOW start{};
    start.cb = sizeof start;
    std::wstring line = L"\"" + path.wstring() + L"\" " + arguments;
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                        &process_))
      throw std::runtime_error("cannot start " + path.string());
    WaitForInputIdle(process_.hProcess, 10'000);
  }
  ~UnpackedProgram() {
    TerminateProcess(process_.hProcess, 0);
    WaitForSingleObject(process_.hProcess, 10'000);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
  }
  UnpackedProgram(const UnpackedProgram&) = delete;
  UnpackedProgram& operator=(const UnpackedProgram&) = delete;

  bool HasEnded() const { return WaitForSingleObject(process_.hProcess, 0) == WAIT_OBJECT_0; }

 private:
  PROCESS_INFORMATION process_{};
};

}  // namespace quellix
