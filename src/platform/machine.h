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
  std::string program_folder;  // holds Settings.ini and the lists; without trailing "\"
};

}  // namespace quellix
