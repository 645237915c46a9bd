#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/machine.h"
#include "platform/pause.h"
#include "registry_tools/file_reference.h"

namespace quellix {

enum class StartupKind {
  kValue,   // of a Run key
  kFile,    // in a start-up folder
  kTask,    // of the task scheduler
  kService  // of those that start by themselves
};

// Something that starts when Windows does, or when its user logs on.
struct StartupEntry {
  StartupKind kind = StartupKind::kValue;
  std::string name = {};
  std::string command = {};  // as it is written there; of a shortcut what it leads to
  std::string place = {};    // "Run (user)", for the window
  RegistryRoot root = RegistryRoot::kCurrentUser;
  std::string key = {};       // that holds it, "" for a file
  std::string value = {};     // its name in the key
  std::string file = {};      // that it is, "" for what is in the registry
  std::string approval = {};  // the key that tells whether it is on, "" where it cannot be switched
  CommandOf whose = CommandOf::kAnyProgram;
  bool is_on = true;
  bool is_known = true;  // whether the command is one that can be judged
  int64_t since = 0;     // FILETIME since when it is as it is, as far as is known; else 0
  std::string maker = {}, description = {};  // as the entry itself tells, "" where it does not
};

struct StartupEntries {
  std::vector<StartupEntry> entries;
  std::vector<std::string> unread;  // keys, folders and files that could not be read
  std::string damage;               // that of a hive, a sentence
};

// All of them, in the order of the places. A stop leaves out the rest.
StartupEntries ReadStartupEntries(const Machine& machine, const Pause& pause);

}  // namespace quellix
