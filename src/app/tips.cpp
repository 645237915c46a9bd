#include "app/tips.h"

#include "platform/error.h"
#include "platform/text.h"
#include "registry_tools/mod_registry.h"
#include "settings/list_files.h"
#include "settings/numbers.h"
#include "settings/own_files.h"

namespace quellix {
namespace {

constexpr std::string_view kFile = "tips.txt";
constexpr uint64_t kLargestFile = 1 << 20;
// Where programs of this family have always kept their users' settings; "kvmo" is the name this
// one goes by there, and users' numbers are found under it.
constexpr std::string_view kStore = "Software\\VB and VBA Program Settings\\kvmo\\Settings";
constexpr std::string_view kLastTip = "Last Tip";

}  // namespace

bool Tips::Load() {
  tips_.clear();
  shown_ = false;
  try {
    last_ = StoredIndex();
    const auto file = machine_.files.Look(FoundPath(machine_, kFile));
    if (!file) return false;
    if (file->size > kLargestFile) return true;
    tips_ = ReadListFile(machine_, kFile);
    std::erase_if(tips_, [](const std::string& tip) { return TrimBlanks(tip).empty(); });
  } catch (const Error&) {
    // A tip that cannot be read is no loss worth a message.
  }
  return true;
}

std::optional<int32_t> Tips::StoredIndex() const {
  const std::optional<double> number = ToNumber(modRegistry::ReadRegString(
      {machine_.registry, machine_.system}, RegistryRoot::kCurrentUser, kStore, kLastTip));
  if (!number || *number < 0 || *number >= INT32_MAX) return std::nullopt;
  return static_cast<int32_t>(*number);
}

std::string Tips::Next() {
  if (tips_.empty()) return "";
  const int64_t next = last_ ? int64_t{*last_} + 1 : 0;
  last_ = next < static_cast<int64_t>(tips_.size()) ? static_cast<int32_t>(next) : 0;
  shown_ = true;
  return tips_[static_cast<size_t>(*last_)];
}

void Tips::Save() const {
  if (!shown_) return;
  try {
    const RegistryValue index{kRegSz, ToUtf16Bytes(std::to_string(*last_)) + std::string(2, '\0')};
    machine_.registry.Create(RegistryRoot::kCurrentUser, kStore)->SetValue(kLastTip, index);
  } catch (const Error&) {
    // The same tip comes again.
  }
}

}  // namespace quellix
