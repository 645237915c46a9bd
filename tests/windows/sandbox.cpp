#include "sandbox.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "failure_pictures.h"
#include "window_input.h"

namespace quellix::test {
namespace {

// These tests empty folders of the user who runs them, so they start only where that user is made
// up: in a prefix that says so and from which no drive leads out.
struct SandboxGuard : testing::Environment {
  void SetUp() override {
    wchar_t value[4] = {};
    GetEnvironmentVariableW(L"QUELLIX_SANDBOX", value, 4);
    const bool marked = std::wstring_view(value) == L"1" &&
                        GetFileAttributesW(L"C:\\quellix-sandbox") != INVALID_FILE_ATTRIBUTES;
    if (marked && GetDriveTypeW(L"Z:\\") == DRIVE_NO_ROOT_DIR) return TakePicturesOfFailures();
    std::fputs("window_tests runs in the sandbox only\n", stderr);
    std::_Exit(2);
  }
};
const auto* const kGuard = testing::AddGlobalTestEnvironment(new SandboxGuard);

const fs::path kTests = L"C:\\quellix-tests";

}  // namespace

fs::path ProgramFolder() { return L"C:\\Program Files\\Quellix"; }

fs::path TempFolder() {
  wchar_t path[MAX_PATH + 1] = {};
  GetTempPathW(MAX_PATH + 1, path);
  return path;
}

fs::path BackupFolder() { return ProgramFolder() / "Backup"; }

void ResetSandbox() {
  std::vector<fs::path> made;
  for (const char* name : {"Settings.ini", "chkItems.txt", "plg.txt", "recipes.txt", "Winapp2.ini",
                           "keep.txt", "ck.txt", "srch.txt", "IFI.txt", "IE.txt", "UDIFO.txt",
                           "UNFI.txt", "UDFI.txt", "UDFO.txt", "trial.mo", "Backup", "Logs"}) {
    made.push_back(ProgramFolder() / name);
  }
  for (const fs::path& folder : {TempFolder(), kTests}) {
    for (const auto& entry : fs::directory_iterator(folder)) {
      const bool is_the_tests = entry.path().extension() == ".exe" && folder == kTests;
      if (!is_the_tests && entry.path() != kTests / kPicturesOfFailures)
        made.push_back(entry.path());
    }
  }
  for (const auto& entry : fs::directory_iterator(ProgramFolder() / "Plugins")) {
    if (entry.path().filename().string().starts_with("qx")) made.push_back(entry.path());
  }
  // What another program has just opened goes when it has closed it.
  for (const fs::path& path : made) {
    std::error_code failed;
    if (!Await([&] { return fs::remove_all(path, failed) != static_cast<uintmax_t>(-1); }))
      throw std::runtime_error("cannot remove " + path.string());
  }
}

std::string CheckStates(const std::set<int>& set) {
  std::string line;
  for (int place = 1; place <= 30; ++place)
    line += (place > 1 ? "," : "") + std::string(set.contains(place) ? "1" : "0");
  return line + "\r\n";
}

void WriteChecks(const std::set<int>& set) {
  WriteBytes(ProgramFolder() / "chkItems.txt", CheckStates(set));
}

void WriteSettings(const std::string& lines) {
  WriteBytes(ProgramFolder() / "Settings.ini", "[General]\r\n" + lines);
}

// Wiping takes its time byte by byte.
fs::path SeedEndlessRun() {
  const fs::path file = TempFolder() / "large.tmp";
  WriteChecks({22});
  WriteSettings("DelMethod=W\r\n");
  WriteBytes(file, std::string(4 << 20, 'x'));
  return file;
}

std::string Fields(std::string text) {
  std::ranges::replace(text, '|', '\x01');
  return text;
}

void WriteBytes(const fs::path& path, std::string_view bytes) {
  fs::create_directories(path.parent_path());
  if (!Await([&] {
        std::ofstream file(path, std::ios::binary);
        file << bytes;
        return static_cast<bool>(file.flush());
      })) {
    throw std::runtime_error("cannot write " + path.string());
  }
}

std::string ReadBytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace quellix::test
