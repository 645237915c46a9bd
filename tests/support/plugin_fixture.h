#pragma once

#include "plugins/plugin_file.h"
#include "support/run_fixture.h"

namespace quellix {

inline constexpr const char* kKey = "Software\\Quellix Test";

// A machine with an empty folder Plugins. Recipes and lists are written with "|" for the separator.
struct PluginFixture : RunFixture {
  PluginFixture() : plugins_folder(own + "Plugins\\") {
    machine->MakeFolder(plugins_folder);
    machine->RemoveRegistryTree(kUser, kKey);
  }

  static std::string Text(std::string text) {
    for (char& character : text) {
      if (character == '|') character = modPlugin::kSeparator;
    }
    return text;
  }
  void WriteRecipe(const std::string& name, const std::string& text) {
    machine->MakeFile(plugins_folder + name, Text(text));
  }
  void WriteList(const std::string& text) { WriteOwn("plg.txt", Text(text)); }
  // The test's keys anew, a value each ("key:value").
  void MakeKeys(const std::string& places) {
    machine->RemoveRegistryTree(kUser, kKey);
    for (const std::string& place : WordsOf(places)) {
      const size_t end = place.find(':');
      machine->SetText(kUser, std::string(kKey) + "\\" + place.substr(0, end),
                       place.substr(end + 1), "x");
    }
  }
  // All keys below the test's own, with the values in them ("key:value"), sorted.
  Names Keys() {
    Names found;
    const auto top = ports.registry.Open(kUser, kKey, RegistryAccess::kRead);
    if (!top) return found;
    WalkKeys(*top, RegistryAccess::kRead, {.enter = [&](RegistryKey& key, const std::string& path) {
      if (!path.empty()) found.push_back(path.substr(1));
      for (uint32_t i = 0; const auto value = key.ValueAt(i); ++i)
        found.push_back((path.empty() ? "" : path.substr(1)) + ":" + value->name);
    }});
    std::ranges::sort(found);
    return found;
  }
  // Of the keys made, just those go; what runs a second time changes nothing.
  void ExpectKeysGo(const std::string& made, const std::string& gone,
                    const std::function<void()>& run) {
    MakeKeys(made);
    Names expected = Keys();
    for (const std::string& each : WordsOf(gone)) EXPECT_EQ(std::erase(expected, each), 1u) << each;
    for (int i = 0; i < 2; ++i) {
      run();
      EXPECT_EQ(Keys(), expected) << engine.state().RunLog;
    }
  }

  const std::string plugins_folder;
};

}  // namespace quellix
