#include "cleaners/user_lists.h"

#include <string>
#include <utility>

#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/text.h"
#include "run/run_steps.h"

namespace quellix {
namespace {

constexpr RegistryRoot kUser = RegistryRoot::kCurrentUser;

}  // namespace

void UserLists::AddValues(std::string_view key) {
  const std::string names = ListUserValues(context_, key);
  if (names.empty()) return;
  for (std::string& name : Split(names, '\0')) {
    targets_.push_back({RegistryTarget::Kind::kValue, kUser, std::string(key), std::move(name)});
  }
}

void UserLists::AddToday(std::string_view pattern) {
  std::vector<std::string> keys = {""};
  for (const std::string& part : Split(pattern, '\\')) {
    std::vector<std::string> next;
    for (const std::string& key : keys) {
      const std::string start = key.empty() ? "" : key + "\\";
      if (part != "*") {
        next.push_back(start + part);
        continue;
      }
      for (const std::string& name : KeysBelow(key)) next.push_back(start + name);
    }
    keys = std::move(next);
  }
  for (const std::string& key : keys) {
    if (pattern.ends_with("\\*")) {
      targets_.push_back({RegistryTarget::Kind::kTree, kUser, key});
    } else {
      AddTexts(key);
    }
  }
}

void UserLists::AddTexts(std::string_view key) {
  try {
    const auto opened = context_.machine.registry.Open(kUser, key, RegistryAccess::kRead);
    if (!opened) return;
    NotePlace(context_.state);
    for (uint32_t i = 0; const auto value = opened->ValueAt(i); ++i) {
      if (StopsRun(context_)) return;
      if (value->type == kRegDword) continue;
      targets_.push_back({RegistryTarget::Kind::kValue, kUser, std::string(key), value->name});
    }
  } catch (const Error&) {
    return;
  }
}

std::vector<std::string> UserLists::KeysBelow(const std::string& key) {
  try {
    const auto opened = context_.machine.registry.Open(kUser, key, RegistryAccess::kRead);
    if (!opened) return {};
    std::vector<std::string> names = SubKeyNames(*opened, PauseOf(context_));
    std::erase_if(names, [&opened](const std::string& name) { return opened->IsLink(name); });
    return names;
  } catch (const Error&) {
    return {};
  }
}

Erasure UserLists::Erase() { return RegistryEraser::OfRun(context_).Erase(targets_); }

}  // namespace quellix
