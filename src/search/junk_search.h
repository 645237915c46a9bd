#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/context.h"

namespace quellix {

enum class JunkKind { kUnnecessaryFiles = 1, kEmptyFiles = 2, kDeadShortcuts = 3 };

// One find, as the results show it.
struct ResultRow {
  std::string name;
  uint64_t bytes = 0;
  std::string date_time;   // last write, as FormatFileTime writes it
  std::string attributes;  // letters of R, A, S, H
  std::string path;        // the folder; ends in "\"
  std::string file_type;   // behind the last dot, in upper case; "" without one
  std::string_view category;
};

// Takes the finds of a search as they come.
class ResultSink {
 public:
  virtual ~ResultSink() = default;
  virtual void Add(ResultRow row) = 0;
};

// "Unnecessary Files", "Empty Files", "Dead Shortcuts".
std::string_view CategoryText(JunkKind kind);

// Searches the drives of srch.txt, one after another, and hands each find to `sink`; nothing is
// changed. Ends early, with "Aborted by user" in the status, when the user stops. Throws Error when
// options or lists cannot be read, or when the date filter is on and its dates make no sense.
void SearchJunk(CleaningContext& context, JunkKind kind, ResultSink& sink);

// The letters of R, A, S, H that are set, in this order.
std::string AttributeLetters(uint32_t attributes);

}  // namespace quellix
