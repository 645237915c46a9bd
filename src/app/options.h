#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/option_list.h"
#include "app/options_general.h"
#include "app/refusal.h"
#include "cleaners/cookie_lists.h"
#include "search/search_draft.h"

namespace quellix {

// The draft behind the Options window: every setting and list as it is on the disk, to be changed
// at will. Nothing is written before Save.
class Options {
 public:
  explicit Options(const Machine& machine);

  // A sentence for each file that could not be read, a line each. Such a file is not written.
  std::string Problems() const;

  GeneralOptions general;
  SearchDraft search;
  std::vector<OptionList> lists;  // in the order of ListPages()
  CookieLists cookies;

  // The first field that cannot be saved; nothing when Save may be called.
  std::optional<Refusal> Check() const;
  // Writes everything. What cannot be written stays as it was on the disk, stays changed here, and
  // is told in a sentence, a line each; "" when all is saved.
  std::string Save();

 private:
  std::string SaveGeneral();

  Machine machine_;
  GeneralOptions saved_;
  std::string search_problem_, settings_problem_;
};

// The page of a field.
OptionsPage PageOf(OptionsField field);

}  // namespace quellix
