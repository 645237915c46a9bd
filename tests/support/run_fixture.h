#pragma once

#include "app/preview_run.h"
#include "engine.h"
#include "platform/text.h"
#include "run/stayed.h"
#include "search/drive_scan.h"
#include "support/scripted_view.h"
#include "support/test_machine.h"

namespace quellix {

inline constexpr RegistryRoot kUser = RegistryRoot::kCurrentUser;
inline constexpr RegistryRoot kMachine = RegistryRoot::kLocalMachine;
inline constexpr const char* kRunMruKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RunMRU";
inline constexpr const char* kTypedUrlsKey = "Software\\Microsoft\\Internet Explorer\\TypedURLs";

// Names behind each other, for comparison.
inline std::string Joined(const Names& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : " ") + name;
  return text;
}

// A fresh real machine with the whole engine on it.
struct RunFixture : ::testing::Test {
  std::string Read(const std::string& path) {
    return ports.files.ReadWholeFile(path).value_or("<missing>");
  }
  // In the program's folder.
  void WriteOwn(const std::string& name, const std::string& bytes) {
    ports.files.WriteWholeFile(own + name, bytes);
  }
  std::string ReadOwn(const std::string& name) { return Read(own + name); }
  // Files of a folder, their names between blanks.
  void MakeFiles(const std::string& folder, const std::string& names,
                 const std::string& bytes = "1") {
    for (const std::string& name : WordsOf(names)) machine->MakeFile(folder + name, bytes);
  }
  // What the scratch folder holds once these, written in any case, are gone.
  Names TreeWithout(const std::string& gone) {
    Names tree = machine->Tree(scratch);
    for (const std::string& name : WordsOf(gone)) {
      EXPECT_EQ(std::erase_if(tree, [&](auto& path) { return EqualsNoCase(path, name); }), 1u)
          << name;
    }
    return tree;
  }
  void WriteSettings(const std::string& text) { WriteOwn("Settings.ini", text); }
  // Puts a folder in the place of a file, which can then be neither read nor written.
  void MakeUnreadable(const std::string& path) {
    if (machine->Exists(path)) ports.files.RemoveFile(path);
    machine->MakeFolder(path);
  }
  void Clean(const char* key) { engine.RunOneItem(*FindItem(key)); }
  void Tick(std::initializer_list<const char*> keys) {
    for (const Item& item : AllItems()) engine.selection().SetChecked(item, false);
    for (const char* key : keys) engine.selection().SetChecked(*FindItem(key), true);
  }
  void StopWhenStatusBegins(const std::string& text) {
    view.on_status = [this, text](const std::string& status) {
      if (status.starts_with(text)) engine.StopCleaning();
    };
  }
  // Files named one by one.
  static FileList Pend(std::initializer_list<std::string> files) {
    FileList list;
    for (const std::string& file : files) list.PendingFiles.Append(file);
    return list;
  }
  // What a cleaner collects below a folder.
  FileList Collect(const std::string& folder, std::string_view mask = "*.*") {
    return CollectFiles(context, ports.files.OpenFolder(folder), folder, mask);
  }

  std::unique_ptr<TestMachine> machine = TestMachine::Create();
  Machine ports = machine->machine();
  std::string own = ports.program_folder + "\\";
  std::string scratch = machine->Scratch();
  std::string temp = ports.system.TempFolder();
  ScriptedView view;
  Engine engine{ports, view};
  Settings settings{ports};
  ModZip mod_zip{ports, engine.state()};
  CleaningContext context{ports, settings, engine.state(), view, mod_zip};
};

}  // namespace quellix
