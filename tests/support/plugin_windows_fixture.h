#pragma once

#include "plugins/mod_plugin.h"
#include "plugins/plugin_editor.h"
#include "support/plugin_fixture.h"
#include "support/scripted_prompts.h"

namespace quellix::modPlugin {

// The manager and the editor, whose user answers as the test says.
struct PluginWindowsTest : PluginFixture {
  std::string LastTold() { return prompts.informed.empty() ? "" : prompts.informed.back(); }
  // What was added; each refusal is told once, with this beginning.
  void ExpectRefused(bool added, const std::string& told) {
    EXPECT_FALSE(added) << told;
    EXPECT_EQ(prompts.informed.size(), ++refusals);
    EXPECT_EQ(LastTold().substr(0, told.size()), told);
  }
  // Runs the manager's Process command; the statuses it showed.
  Names Process(std::vector<size_t> rows) {
    Names shown;
    manager.Process(context, rows, [&] { shown.push_back(manager.status()); });
    return shown;
  }

  void ExpectOneFinishedArchive() {
    const std::string backups = engine.state().BackupFolder;
    const Names archives = machine->Tree(backups);
    ASSERT_EQ(archives.size(), 1u);
    EXPECT_TRUE(Holds(Read(backups + archives[0]), "PK\5\6"));
  }

  ScriptedPrompts prompts;
  size_t refusals = 0;
  PluginManager manager{ports, prompts};
  PluginEditor editor{ports, prompts, manager};
};

}  // namespace quellix::modPlugin
