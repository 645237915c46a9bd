#include "platform/volume/look_ahead.h"

#include <fcntl.h>
#include <pthread.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <system_error>

#include "platform/path.h"

namespace quellix {
namespace {

// Nearer to who asks it would be overtaken while it looks.
constexpr size_t kLead = 64;
// So often a thread that waits is woken.
constexpr size_t kPiece = 1024;
// So many that were not asked for are passed over.
constexpr size_t kMostPassed = 64;
// After so many in vain it is of no use.
constexpr size_t kMostMisses = 4096;

// While the object lives, signals wait for the threads that are there already.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

}  // namespace

// The folder that the thread has open.
struct LookAhead::Place {
  const Part* part = nullptr;
  std::string_view path;  // behind the part's folder, with "\\" at its end
  UniqueFd opened;        // none when it cannot be opened
  int folder = -1;
  FileId id;
  std::string name;  // for the room it has
};

LookAhead::LookAhead(std::vector<Part> parts)
    : parts_([&] {
        for (size_t i = 1; i < parts.size(); ++i) {
          parts[i].before = parts[i - 1].before + parts[i - 1].paths.size();
        }
        return std::move(parts);
      }()),
      count_(parts_.empty() ? 0 : parts_.back().before + parts_.back().paths.size()),
      slots_(std::min(kMostAhead, count_)) {
  const SignalsBlocked blocked;
  try {
    if (count_ > 0) thread_ = std::thread([this] { Run(); });
  } catch (const std::system_error&) {  // there may be no more threads: whoever asks looks himself
  }
}

void LookAhead::End() {
  MoveOnTo(count_);
  behind_.notify_one();
  if (thread_.joinable()) thread_.join();
}

const LookAhead::Part& LookAhead::PartOf(size_t number) const {
  const auto next = std::ranges::upper_bound(parts_, number - 1, {}, &Part::before);
  return *std::prev(next);
}

std::string_view LookAhead::NameOf(size_t number) const {
  const Part& part = PartOf(number);
  return NamePart(part.paths[number - 1 - part.before]);
}

void LookAhead::MoveOnTo(size_t number) {
  behind_.store(number, std::memory_order_release);
  if (number % kPiece == 0) behind_.notify_one();
}

bool LookAhead::IsIn(size_t number, const FileId& id, std::string_view name) const {
  const Slot& slot = slots_[number % slots_.size()];
  return slot.number.load(std::memory_order_acquire) == number && slot.folder == id &&
         NameOf(number) == name;
}

std::optional<Seen> LookAhead::Take(const FileId& id, std::string_view name) {
  const size_t next = behind_.load(std::memory_order_relaxed) + 1;
  if (next > count_) return std::nullopt;
  const size_t last = std::min(count_, next + kMostPassed);
  size_t number = next;
  while (number <= last && !IsIn(number, id, name)) ++number;
  if (number > last) {
    MoveOnTo(next);
    if (++misses_ > kMostMisses) End();
    return std::nullopt;
  }
  misses_ = 0;
  const Seen seen = slots_[number % slots_.size()].seen;
  MoveOnTo(number);
  return seen;
}

// To the next path that is worth a look, when its slot is free; false when there is none.
bool LookAhead::Advance(size_t& number) {
  for (;;) {
    const size_t behind = behind_.load(std::memory_order_acquire);
    const size_t next = std::max(number + 1, behind + kLead);
    if (next > count_) return false;
    if (next <= behind + slots_.size()) {
      number = next;
      return true;
    }
    behind_.wait(behind);
  }
}

void LookAhead::LookAt(size_t number, Place& place) {
  const Part& part = PartOf(number);
  const std::string_view path = part.paths[number - 1 - part.before].substr(part.start);
  const std::string_view folder = FolderPart(path);
  if (&part != place.part || folder != place.path) {
    std::string spelled(folder);
    std::ranges::replace(spelled, '\\', '/');
    place.opened =
        OpenBeneath(part.folder, spelled.empty() ? "." : spelled.c_str(), Mounts::kStay, O_PATH);
    place.folder = place.opened.get();
    place.part = &part;
    place.path = folder;
    struct stat status = {};
    if (place.folder >= 0) fstat(place.folder, &status);
    place.id = IdFrom(status);
  }
  Slot& slot = slots_[number % slots_.size()];
  place.name = NamePart(path);
  if (place.folder < 0 || !IsUsableName(place.name)) return;
  if (!See(place.folder, place.name.c_str(), slot.seen)) return;
  slot.folder = place.id;
  slot.number.store(number, std::memory_order_release);
}

void LookAhead::Run() {
  Place place;
  try {
    for (size_t number = 0; Advance(number);) LookAt(number, place);
  } catch (const std::exception&) {  // no memory
  }
}

}  // namespace quellix
