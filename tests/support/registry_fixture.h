#pragma once

#include "backup/backups.h"
#include "registry_tools/scan_tools.h"
#include "support/run_fixture.h"

namespace quellix {

// Records what a scan shows.
struct ScriptedScanView : ScanView {
  Names problems;

  void ShowState() override {}
  void ShowProblem(std::string_view sentence) override { problems.emplace_back(sentence); }
};

inline RegistryValue Text(std::string_view text, uint32_t type = kRegSz) {
  return {type, ToUtf16Bytes(text) + std::string(2, '\0')};
}
inline RegistryValue Number(uint32_t number) {
  RegistryValue value{kRegDword, {}};
  for (int shift = 0; shift < 32; shift += 8) value.bytes += static_cast<char>(number >> shift);
  return value;
}

// Every key and value below some keys, for comparison.
using RegistryPicture = std::map<std::string, std::string>;

// A machine with the keys of the tools, empty at first, and what undoes their deletions.
struct RegistryFixture : RunFixture {
  RegistryFixture() : backups(ports, own + "Backup\\") { Clear(); }
  ~RegistryFixture() override { Clear(); }

  void Set(RegistryRoot root, const std::string& key, const std::string& name,
           const RegistryValue& value) {
    machine->SetRegistryValue(root, key, name, value);
  }
  void Picture(RegistryRoot root, const std::string& key, RegistryPicture& picture) {
    const auto open = ports.registry.Open(root, key, RegistryAccess::kRead);
    if (!open) return;
    const std::string path = std::string(RootName(root)) + "\\" + key;
    picture[path] = "";
    std::string name;
    RegistryValue value;
    for (uint32_t i = 0; open->ReadValueAt(i, name, value); ++i)
      picture[path + ":" + name] = std::to_string(value.type) + "," + value.bytes;
    for (uint32_t i = 0; const auto sub_key = open->SubKeyAt(i); ++i)
      Picture(root, key + "\\" + *sub_key, picture);
  }
  RegistryPicture PictureOfAll() {
    RegistryPicture picture = UserPicture();
    for (const char* key : kToolKeys) Picture(kMachine, key, picture);
    return picture;
  }
  RegistryPicture UserPicture() {
    RegistryPicture picture;
    for (const char* key : kUserKeys) Picture(kUser, key, picture);
    return picture;
  }
  Names UndoFiles() { return machine->Tree(own + "Backup"); }
  RestoreResult RestoreFile(const std::string& name) {
    NoPrompts prompts;
    return backups.Restore(name, {.entry_paths = {}, .to = "", .mode = OverwriteMode::kAlways},
                           prompts);
  }
  // From the one file that a deletion has left.
  void RestoreAll() {
    ASSERT_EQ(UndoFiles().size(), 1u);
    EXPECT_TRUE(RestoreFile(UndoFiles()[0]).problems.empty());
  }

  std::unique_ptr<RegistryScan> ScanOf(ScanTool tool, const Machine& of) {
    auto scan = MakeScan(tool, of, scan_view);
    scan->StartScan();
    return scan;
  }
  // Of a tool that ticks nothing, the rows whose first text `is_own` takes: the sign of each mark
  // and what `text_of` says.
  static Names RowsOf(const RegistryScan& scan,
                      const std::function<bool(const std::string&)>& is_own,
                      const std::function<std::string(const ScanRow&)>& text_of) {
    Names rows;
    for (size_t i = 0; i < scan.RowCount(); ++i) {
      const ScanRow& row = scan.row(i);
      EXPECT_FALSE(row.checked) << "nothing is ticked for the user";
      if (is_own(row.texts[0])) rows.push_back(" !+?"[static_cast<int>(row.mark)] + text_of(row));
    }
    std::ranges::sort(rows);
    return rows;
  }
  // The first row of that name.
  static size_t RowOf(const RegistryScan& scan, const std::string& name) {
    for (size_t i = 0; i < scan.RowCount(); ++i) {
      if (scan.row(i).texts[0] == name) return i;
    }
    throw std::runtime_error(name + " is not listed");
  }

  static constexpr const char* kWindowsKey = "Software\\Microsoft\\Windows\\CurrentVersion";
  static constexpr const char* kDlls = "Software\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs";
  static constexpr const char* kApps = "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths";
  static constexpr const char* kHelp = "Software\\Microsoft\\Windows\\Help";
  static constexpr const char* kHtmlHelp = "Software\\Microsoft\\Windows\\HTML Help";
  static constexpr const char* kComponents =
      "Software\\Microsoft\\Active Setup\\Installed Components";
  static constexpr const char* kToolKeys[] = {kDlls, kApps, kHelp, kHtmlHelp, kComponents};
  static constexpr const char* kUserKeys[] = {"Q", "Qx1", "Qx2"};

  ScriptedScanView scan_view;
  Backups backups;

  void Clear() {
    for (const char* key : kToolKeys) machine->RemoveRegistryTree(kMachine, key);
    for (const char* key : kUserKeys) machine->RemoveRegistryTree(kUser, key);
    const auto user = ports.registry.Open(kUser, "", RegistryAccess::kWrite);
    for (const std::string& name : machine->ValueNames(kUser, "")) {
      if (name.starts_with("Qx")) user->DeleteValue(name);
    }
  }
};

}  // namespace quellix
