#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

namespace quellix {

// How far a long operation has come.
struct Progress {
  uint64_t done = 0, total = 0;  // in steps that take about the same time; no total: nobody knows
  std::string_view path = {};    // what is in work, "" for nothing to name; valid during the call
  const char* work = "";         // what is being done to it, "Restoring"
};

// What a long operation is handed so that its surface can breathe meanwhile: it handles input,
// shows progress and asks whether to go on. It is called before each entry, key, value or piece
// that is worked on, many thousand times a second, so an implementation returns at once unless it
// is time to do something, and the longest way between two calls is what one of those takes.
//
// True means stop, always. The operation then ends as soon as what it has in hand is whole, or is
// as it was before; what was done so far stays, and the result tells that it is not all. It may be
// called again until then, and goes on to return true. An empty one never stops.
class Pause {
 public:
  Pause() = default;
  template <typename Ask>
  requires(!std::same_as<Ask, Pause>) && std::predicate<Ask&, const Progress&>
      // NOLINTNEXTLINE(google-explicit-constructor): what is asked is written where it is needed
      Pause(Ask ask) : ask_(std::move(ask)) {}

  bool operator()(const Progress& progress = {}) const { return ask_ && ask_(progress); }

 private:
  std::function<bool(const Progress&)> ask_;
};

}  // namespace quellix
