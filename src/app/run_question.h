#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/entry_list.h"
#include "platform/locale.h"
#include "platform/machine.h"
#include "plugins/recipe_run.h"
#include "run/run_state.h"

namespace quellix {

// The choice to leave what a look has found in use to the next start of Windows.
struct StartOffer {
  std::string text;             // "" for none
  std::vector<size_t> entries;  // of the look, by index: what it is about
};

// The word of the button that says yes to a question, and the question. English ones begin with
// the word. A translation whose verb stands elsewhere tells the word before a bar:
// "Löschen|20.000 Dateien endgültig löschen?".
struct VerbOf {
  std::string_view verb, question;
};
VerbOf VerbAndQuestion(std::string_view question);

// What a person is asked before a run that does what a look has found.
struct RunQuestion {
  // "Delete 20,000 files (54.00 MB) for good?", see VerbAndQuestion; "" for nothing
  std::string heading;
  std::string text;    // what cannot be had again, and what is left; lines
  StartOffer further;  // what may be chosen besides
};

// Of what is ticked in `found`. What recipes take that cannot be had again, neither from the
// recycle bin nor from a backup, is asked about once for all of them, whatever the settings say;
// the rest where `asks`, and then also what is left out as nobody has seen it by `ticks`. `shown`:
// what the look carried out; null for no recipes.
RunQuestion QuestionOf(const EntryList& found, const modPlugin::ShownRecipes* shown,
                       const modPlugin::RecipeTicks& ticks, const Locale& locale, bool asks);

// None where nothing is in use, or where that takes rights that are not there.
StartOffer OfferOfStart(const RunState& look, const Machine& machine);

}  // namespace quellix
