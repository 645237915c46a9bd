#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/machine.h"

namespace quellix {

// Tells which registry values name a file or folder that is gone. Made for one walk: what it has
// learned about paths it does not ask again.
class ReferenceJudge {
 public:
  explicit ReferenceJudge(const Machine& machine);

  // The text of a value that names something gone, as the value has it; nothing when there is no
  // such text, or when it cannot be judged: another drive, a server, an unknown variable, what is
  // no path at all. Of a list of texts the first that is gone.
  std::optional<std::string> FindGone(const RegistryValue& value);

 private:
  bool IsGoneText(std::string_view text);
  std::optional<std::string> PathOf(std::string_view text);
  bool IsGoneCommand(std::string_view text);
  bool IsNumberInFile(std::string_view path);
  bool IsThere(const std::string& path, bool may_go_on);
  bool IsGone(std::string_view path);
  std::string Expand(std::string_view text);

  Machine machine_;
  std::string drives_;  // letters, upper case
  std::unordered_map<std::string, bool> known_;
};

}  // namespace quellix
