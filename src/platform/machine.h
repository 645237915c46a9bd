#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/profile_strings.h"
#include "platform/registry.h"
#include "platform/session.h"
#include "platform/shell.h"
#include "platform/system.h"
#include "platform/system_cleaners.h"
#include "platform/url_cache.h"

namespace quellix {

// The machine the engine works on: the Windows it runs on, or a mounted volume. The ports must
// outlive whatever holds a Machine.
struct Machine {
  FileSystem& files;
  Registry& registry;
  Shell& shell;
  UrlCache& url_cache;
  ProfileStrings& profile;
  System& system;
  Session& session;
  SystemCleaners& cleaners;
  // Without trailing "\". The first holds Settings.ini, the lists and whatever else is its user's;
  // the second the program itself and what it came with. They are mostly the same.
  std::string program_folder;
  std::string installed_folder = program_folder;
};

}  // namespace quellix
