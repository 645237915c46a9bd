#pragma once

#include "engine.h"
#include "platform/text.h"
#include "search/drive_scan.h"
#include "support/scripted_view.h"
#include "support/test_machine.h"

namespace quellix {

inline constexpr RegistryRoot kUser = RegistryRoot::kCurrentUser;
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
  RunFixture()
      : machine(TestMachine::Create()),
        ports(machine->machine()),
        own(ports.program_folder + "\\"),
        scratch(machine->Scratch()),
        temp(ports.system.TempFolder()),
        engine(ports, view),
        settings(ports),
        mod_zip(ports, engine.state()),
        context{ports, settings, engine.state(), view, mod_zip} {}

  std::string Read(const std::string& path) {
    return ports.files.ReadWholeFile(path).value_or("<missing>");
  }
  // In the program's folder.
  void WriteOwn(const std::string& name, const std::string& bytes) {
    ports.files.WriteWholeFile(own + name, bytes);
  }
  std::string ReadOwn(const std::string& name) { return Read(own + name); }
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

  std::unique_ptr<TestMachine> machine;
  Machine ports;
  std::string own;  // the program's folder, with "\\" at its end
  std::string scratch;
  std::string temp;
  ScriptedView view;
  Engine engine;
  Settings settings;
  ModZip mod_zip;
  CleaningContext context;
};

}  // namespace quellix
