#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace quellix {

// How cookie files are named: until Windows 8, and since.
inline constexpr std::string_view kCookieFiles = "*.txt;*.cookie";

// The text of ck.txt, "" without one: paths with \x01 between. Throws Error.
std::string ReadKeptCookies(const Machine& machine);

// The cookie files on the machine against those of ck.txt, which are kept; a draft that reaches the
// disk with Save. Both lists hold full paths, sorted by name, none in both.
class CookieLists {
 public:
  // When ck.txt cannot be read nothing can be moved, so that what is in it is not lost.
  explicit CookieLists(const Machine& machine);

  const std::string& problem() const { return problem_; }  // a sentence, or ""
  const std::vector<std::string>& on_machine() const { return on_machine_; }
  const std::vector<std::string>& kept() const { return kept_; }
  bool changed() const { return kept_ != saved_; }

  // Move rows of one list to the other. A cookie that is no longer on the machine just goes.
  void Keep(std::span<const size_t> rows);
  void Release(std::span<const size_t> rows);

  // Replaces ck.txt when something was moved. Throws Error; the old file then stays.
  void Save();

 private:
  void ListRest();

  Machine machine_;
  std::vector<std::string> all_, on_machine_, kept_, saved_;
  std::string problem_;
};

}  // namespace quellix
