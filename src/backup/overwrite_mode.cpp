#include "backup/overwrite_mode.h"

#include "platform/text.h"

namespace quellix {
namespace {

constexpr struct {
  std::string_view word;
  OverwriteMode mode;
} kWords[] = {{"Always", OverwriteMode::kAlways},
              {"Newer", OverwriteMode::kNewer},
              {"Never", OverwriteMode::kNever},
              {"Ask", OverwriteMode::kAsk}};

}  // namespace

std::optional<OverwriteMode> ParseOverwriteMode(std::string_view word) {
  for (const auto& row : kWords) {
    if (EqualsNoCase(word, row.word)) return row.mode;
  }
  return std::nullopt;
}

std::string_view OverwriteWord(OverwriteMode mode) {
  for (const auto& row : kWords) {
    if (row.mode == mode) return row.word;
  }
  return "";
}

}  // namespace quellix
