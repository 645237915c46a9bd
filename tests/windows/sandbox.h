// The machine that the program is tried on, and what lies there.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <string_view>

namespace quellix::test {

namespace fs = std::filesystem;

inline constexpr int kYes = 100, kShow = 101;  // of a question before what cannot be undone

// The sandbox's files, by what they are.
fs::path ProgramFolder();
fs::path TempFolder();
fs::path BackupFolder();  // where archives are kept
// Takes away what the program and the tests have made, but for the registry, as at a first start.
void ResetSandbox();
// The 1st to 30th value of chkItems.txt that are set; the rest are not.
std::string CheckStates(const std::set<int>& set);
// The next start finds these ticked.
void WriteChecks(const std::set<int>& set);
// The lines of Settings.ini, those of [General] first.
void WriteSettings(const std::string& lines);
// A run of the temporary files that goes on until it is stopped; returns the file that it wipes.
fs::path SeedEndlessRun();
// "2|a.cdp" with what stands between fields in the program's files.
std::string Fields(std::string text);
// Waits while another program has the file open.
void WriteBytes(const fs::path& path, std::string_view bytes);
std::string ReadBytes(const fs::path& path);

struct SandboxTest : testing::Test {
  SandboxTest() { ResetSandbox(); }
};

}  // namespace quellix::test
