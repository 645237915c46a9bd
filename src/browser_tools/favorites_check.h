#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/http.h"
#include "platform/system.h"

namespace quellix {

// What came of asking for an address.
struct AddressAnswer {
  enum State {
    kNotAsked,     // or none of the web: such addresses are never opened
    kAnswers,      // something is there
    kMoved,        // for good; `text` says where
    kGone,         // the server says that there is nothing
    kUnreachable,  // the server, as things stand
  };
  State state = kNotAsked;
  std::string text;  // "it answers", for a window
};

// Asks for addresses of the web, at most eight at a time and ten seconds each: with HEAD, and where
// that is answered with an error with GET. Redirects are followed a few times, to addresses of the
// web alone. `found` is called for each in the order in which they end; after a stop the others are
// not asked. Addresses that are none of the web are not asked.
void AskAddresses(Http& http, System& system, const std::vector<std::string>& addresses,
                  const std::function<void(size_t index, const AddressAnswer& answer)>& found,
                  const Pause& pause);

}  // namespace quellix
