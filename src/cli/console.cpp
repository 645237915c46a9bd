#include "cli/console.h"

#include <algorithm>
#include <iostream>

#include "cli/commands.h"

namespace quellix {

int RunConsole(std::vector<std::string> arguments, const ConsolePlatform& platform) {
  CLI::App app("Quellix cleans a Windows machine of junk and traces of use.", "quellixctl");
  app.require_subcommand(1);
  ConsoleCommands commands(app, platform);
  for (const auto& add : {AddCleanCommands, AddBackupCommands, AddPluginCommands, AddCacheCommands,
                          AddSearchCommand, AddRegistryCommand, AddKeepCommands}) {
    add(commands);
  }
  std::reverse(arguments.begin(), arguments.end());  // as CLI11 takes them
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, std::cout, std::cerr) == 0 ? kDone : kWrongUsage;
  }
  try {
    return commands.Run();
  } catch (const std::exception& error) {
    return Fail(error.what(), kFailed);
  }
}

}  // namespace quellix
