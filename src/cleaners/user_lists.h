#pragma once

#include <string_view>
#include <vector>

#include "registry_tools/registry_eraser.h"
#include "run/context.h"

namespace quellix {

// What is to go from lists in the user's registry, to be erased together: a volume's hive is
// written as a whole each time.
class UserLists {
 public:
  explicit UserLists(CleaningContext& context) : context_(context) {}

  // The values of one key, as far as the settings say that lists are cleared.
  void AddValues(std::string_view key);

  // Lists of today's Windows and Office, always whole. In the pattern of a key "*" as a name stands
  // for each sub-key, also where one is named so itself, as in the lists of dialogs. Of the keys
  // that fit, all values go but numbers, which say how a list is shown; where "*" comes last, the
  // keys themselves with all in them. Links are passed over, and so is what cannot be read.
  void AddToday(std::string_view pattern);

  // Throws Error when some stayed.
  Erasure Erase();

 private:
  void AddTexts(std::string_view key);
  std::vector<std::string> KeysBelow(const std::string& key);

  CleaningContext& context_;
  std::vector<RegistryTarget> targets_;
};

}  // namespace quellix
