#include "cli/console.h"

#include <iostream>

#include "cli/commands.h"
#include "cli/console_view.h"
#include "cli/nearest.h"

namespace quellix {
namespace {

// A word that is no command is answered with the one that was meant.
void SuggestCommand(const CLI::App& app, const std::vector<std::string>& words) {
  const CLI::App* group = &app;
  for (const std::string& word : words) {
    std::vector<std::string> names;
    const CLI::App* next = nullptr;
    for (const CLI::App* const command : group->get_subcommands(nullptr)) {
      names.push_back(command->get_name());
      if (command->get_name() == word) next = command;
    }
    if (next == nullptr) {
      const std::string nearest = word.starts_with('-') ? "" : Nearest(word, names);
      if (nearest.empty()) return;
      const std::string before = group == &app ? "" : group->get_name() + " ";
      std::cerr << "Did you mean \"quellixctl " << before << nearest << "\"?" << std::endl;
      return;
    }
    group = next;
  }
}

}  // namespace

int RunConsole(std::vector<std::string> arguments, const ConsolePlatform& platform) {
  CLI::App app("Quellix cleans a Windows machine of junk and traces of use.", "quellixctl");
  app.require_subcommand(1);
  const auto version = [&platform] {
    return "quellixctl " QUELLIX_VERSION "\nSettings, lists and logs: " +
           platform.settings_folder();
  };
  app.set_version_flag("--version", version, "Print the version and where settings are");
  ConsoleView::ShowProgress(platform.shows_progress);
  ConsoleView::Asks(platform.can_ask);
  ConsoleCommands commands(app, platform);
  for (const auto& add :
       {AddCleanCommands, AddBrowserCommands, AddBackupCommands, AddPluginCommands,
        AddRecipeCommands, AddCacheCommands, AddSearchCommand, AddRemoveCommand, AddWipeFreeCommand,
        AddRegistryCommand, AddKeepCommands, AddFavoritesCommands, AddWindowsCommands,
        AddVolumesCommand, AddUpdateCommand, AddManualCommand, AddCompletionCommand}) {
    add(commands);
  }
  try {
    app.parse(
        std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // as CLI11 takes them
  } catch (const CLI::ParseError& error) {
    if (app.exit(error, std::cout, std::cerr) == 0) return kDone;
    SuggestCommand(app, arguments);
    return kWrongUsage;
  }
  try {
    return commands.Run();
  } catch (const std::exception& error) {
    return Fail(error.what(), kFailed);
  }
}

}  // namespace quellix
