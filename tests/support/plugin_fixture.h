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

  const std::string plugins_folder;
};

}  // namespace quellix
