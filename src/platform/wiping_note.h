#pragma once

#include <string_view>

namespace quellix {

// What stays readable of files that were wiped on a machine of this build: a sentence, "" for
// nothing that has to be said.
std::string_view WipingNote();

}  // namespace quellix
