#pragma once

#include <string>
#include <vector>

#include "platform/machine.h"

namespace quellix {

// A language that the windows speak.
struct Language {
  std::string tag;   // "pt_BR", as its catalogue is named
  std::string name;  // in itself
};

// All whose catalogues the program carries, English first.
std::vector<Language> Languages();

// From now on the windows speak the language that is wanted: "" that in which Windows shows itself
// to its user, or the nearest one; else one by its name, or, by a name that ends in ".mo", the
// catalogue that a translator is trying, beside the settings or the program. What is missing or
// broken is English. For the thread of the windows, while none is open.
void SpeakAs(const std::string& wanted, const Machine& machine);

// Whether what is spoken is written from right to left.
bool IsRightToLeft();

}  // namespace quellix
