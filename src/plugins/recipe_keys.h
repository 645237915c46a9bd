#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "platform/words.h"
#include "plugins/plugin_file.h"

namespace quellix::modPlugin {

struct KeyPlace {
  std::optional<RegistryRoot> root;  // nothing when it is refused
  std::string subkey;
  Sentence refusal;
};

// The keys an entry stands for. "*" as a whole name is each key there, through no link; where a key
// is named so itself, as the class of all files, that one alone. Refused is what ProtectedKeys
// names, by whatever spelling or link. A stop ends the search.
std::vector<KeyPlace> FindKeys(Registry& registry, const RegistryEntry& entry,
                               const Pause& pause = {});
// The same without a judgement.
std::vector<KeyPlace> FindAnyKeys(Registry& registry, const RegistryEntry& entry,
                                  const Pause& pause = {});

}  // namespace quellix::modPlugin
