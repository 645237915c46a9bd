#include "browser_tools/favorites_check.h"

#include <map>

#include "platform/url.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr size_t kAtATime = 8;
constexpr int kSeconds = 10, kMostHops = 5;
constexpr int kMilliseconds = 20;
constexpr int64_t kFiletimesASecond = 10'000'000;

bool LeadsOn(int status) { return status >= 300 && status < 400; }
bool IsForGood(int status) { return status == 301 || status == 308; }
bool IsFine(int status) { return status >= 200 && status < 400; }

// An address on the way to its answer.
struct Asked {
  size_t index = 0;
  Url url;
  bool head = true;
  int hops = 0;
  bool has_moved = true;  // all hops so far were for good
  int64_t begun = 0;      // FILETIME
};

// Where a page was asked for, of an answer that needs no further request.
AddressAnswer Judge(const Asked& asked, const HttpAnswer& answer) {
  const std::string status = std::to_string(answer.status);
  if (answer.end != HttpEnd::kAnswered)
    return {AddressAnswer::kUnreachable, Tr(HttpEndText(answer.end))};
  const bool is_gone = answer.status == 404 || answer.status == 410;
  // Of where it leads for the moment, as a page to log on, nothing follows for itself.
  if (is_gone && (asked.hops == 0 || asked.has_moved))
    return {AddressAnswer::kGone, Tr("the page is gone (%1)", status)};
  if (is_gone)
    return {AddressAnswer::kUnreachable, Tr("it leads to a page that is not there (%1)", status)};
  if (answer.status == 401 || answer.status == 403)
    return {AddressAnswer::kAnswers, Tr("it lets nobody in unknown (%1)", status)};
  if (!IsFine(answer.status))
    return {AddressAnswer::kUnreachable, Tr("the server has an error (%1)", status)};
  if (asked.hops > 0 && asked.has_moved)
    return {AddressAnswer::kMoved, Tr("it has moved to %1", RequestText(asked.url))};
  return {AddressAnswer::kAnswers, Tr("it answers")};
}

class Asking {
 public:
  using Found = std::function<void(size_t index, const AddressAnswer& answer)>;

  Asking(Http& http, System& system, const std::vector<std::string>& addresses, const Found& found)
      : http_(http), system_(system), addresses_(addresses), found_(found) {}

  void Run(const Pause& pause) {
    while (true) {
      while (in_hand_.size() < kAtATime && next_ < addresses_.size()) BeginNext();
      if (in_hand_.empty() && next_ >= addresses_.size()) return;
      for (auto& [id, answer] : http_.Wait(kMilliseconds)) {
        const Asked asked = in_hand_.at(id);
        in_hand_.erase(id);
        Take(asked, answer);
      }
      if (!pause({.done = done_, .total = addresses_.size(), .work = Mark("Asking")})) continue;
      return http_.GiveUp();
    }
  }

 private:
  void BeginNext() {
    const size_t index = next_++;
    const auto url = ParseUrl(addresses_[index]);
    if (!url || !url->IsWeb()) {
      ++done_;
      return;
    }
    Begin({.index = index, .url = *url, .begun = system_.UtcNow()});
  }

  void Begin(const Asked& asked) {
    const int64_t past = (system_.UtcNow() - asked.begun) / kFiletimesASecond;
    // A clock that is set meanwhile neither ends nor prolongs it.
    const int left = past < 0 || past > 60 ? kSeconds : kSeconds - static_cast<int>(past);
    if (left <= 0) return Finish(asked, Judge(asked, {.end = HttpEnd::kTimeout}));
    in_hand_[next_id_] = asked;
    http_.Begin(next_id_++, {.url = RequestText(asked.url),
                             .head = asked.head,
                             .headers_only = !asked.head,
                             .limit = 0,
                             .seconds = left});
  }

  void Take(Asked asked, const HttpAnswer& answer) {
    const bool is_answered = answer.end == HttpEnd::kAnswered;
    if (is_answered && LeadsOn(answer.status) && !answer.location.empty())
      return Follow(std::move(asked), answer);
    // Some servers know no HEAD, and say so in many ways.
    const bool may_know_get = is_answered ? !IsFine(answer.status)
                                          : answer.end == HttpEnd::kCutOff ||
                                                answer.end == HttpEnd::kNoHttp ||
                                                answer.end == HttpEnd::kTooLarge;
    if (!asked.head || !may_know_get) return Finish(asked, Judge(asked, answer));
    asked.head = false;
    Begin(asked);
  }

  void Follow(Asked asked, const HttpAnswer& answer) {
    const auto next = Resolve(asked.url, answer.location);
    if (!next || !next->IsWeb())
      return Finish(asked,
                    {AddressAnswer::kUnreachable, Tr("it leads to what is not opened from here")});
    // What lies on this machine or in its network no other may have asked for.
    if (MayBeNear(*next) && !MayBeNear(asked.url))
      return Finish(asked,
                    {AddressAnswer::kUnreachable, Tr("it leads to this machine or its network")});
    if (++asked.hops > kMostHops)
      return Finish(asked, {AddressAnswer::kUnreachable, Tr("it leads on and on")});
    asked.has_moved = asked.has_moved && IsForGood(answer.status);
    asked.url = *next;
    Begin(asked);
  }

  void Finish(const Asked& asked, const AddressAnswer& answer) {
    ++done_;
    found_(asked.index, answer);
  }

  Http& http_;
  System& system_;
  const std::vector<std::string>& addresses_;
  const Found& found_;
  std::map<size_t, Asked> in_hand_;
  size_t next_ = 0, next_id_ = 0, done_ = 0;
};

}  // namespace

void AskAddresses(Http& http, System& system, const std::vector<std::string>& addresses,
                  const std::function<void(size_t index, const AddressAnswer& answer)>& found,
                  const Pause& pause) {
  Asking(http, system, addresses, found).Run(pause);
}

}  // namespace quellix
