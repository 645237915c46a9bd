#include "app/rights.h"

#include "app/item_catalogue.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "plugins/recipe_list.h"
#include "plugins/recipe_rights.h"

namespace quellix {
namespace {

constexpr std::string_view kSwitch = "-A";
constexpr std::string_view kDigits = "0123456789ABCDEF";

// No command line changes digits, whatever characters a folder's name has.
std::string ToDigits(std::string_view text) {
  std::string digits;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    digits += {kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return digits;
}

std::optional<std::string> FromDigits(std::string_view digits) {
  std::string text;
  if (digits.size() % 2 != 0) return std::nullopt;
  for (size_t i = 0; i < digits.size(); i += 2) {
    const size_t high = kDigits.find(digits[i]), low = kDigits.find(digits[i + 1]);
    if (high == kDigits.npos || low == kDigits.npos) return std::nullopt;
    text += static_cast<char>(high << 4 | low);
  }
  return text;
}

}  // namespace

Profile ProfileOf(const Machine& machine) {
  return {machine.session.UserId(), machine.system.Environment("USERPROFILE").value_or("")};
}

std::string RightsArguments(const Profile& profile) {
  return std::string(kSwitch) + " " + profile.user + " " + ToDigits(profile.folder);
}

std::optional<Profile> ParseRightsArguments(std::string_view arguments) {
  const std::vector<std::string> parts = Split(TrimBlanks(arguments), ' ');
  if (parts.size() != 3 || parts[0] != kSwitch || !parts[1].starts_with("S-1-")) return {};
  const std::optional<std::string> folder = FromDigits(parts[2]);
  if (!folder || folder->empty()) return {};
  return Profile{parts[1], *folder};
}

std::string WhyNotSame(const Profile& wanted, const Profile& here) {
  const bool is_same = !here.user.empty() && wanted.user == here.user && !here.folder.empty() &&
                       EqualsNoCase(WithoutBackslash(wanted.folder), WithoutBackslash(here.folder));
  if (is_same) return {};
  return Tr(
      "Nothing was cleaned. The rights were given in the name of another user: Quellix was to "
      "clean for the profile %1 and would have cleaned %2.\n\nRights that are given in another "
      "user's name cannot clean your profile.",
      // TRANSLATORS: Another profile.
      wanted.folder, here.folder.empty() ? Tr("another one") : here.folder);
}

void KeepOnlyRights(const Machine& machine, Selection& selection) {
  for (const Item& item : AllItems()) {
    if (item.guide.rights == Rights::kNone) selection.SetChecked(item, false);
  }
  selection.browsers().Clear();
  selection.cleaners().Clear();
  if (selection.recipes().empty()) return;
  const modPlugin::RecipeLists lists = modPlugin::LoadRecipeLists(machine);
  for (const std::string& name : selection.recipes().Ticked()) {
    const modPlugin::ListedRecipe* const recipe = lists.Find(name);
    const bool needs = recipe != nullptr && modPlugin::NeedsAdministrator(recipe->plugin);
    if (!needs) selection.recipes().SetTicked(name, false);
  }
}

}  // namespace quellix
