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
constexpr size_t kPiece = 256;
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
  std::optional<std::string_view> path;  // behind `start_`, with "\" at its end
  UniqueFd opened;                       // none when it cannot be opened
  int folder = -1;
  FileId id;
  std::string name;  // for the room it has
};

LookAhead::LookAhead(int folder, std::span<const std::string_view> paths, size_t start)
    : base_(fcntl(folder, F_DUPFD_CLOEXEC, 0)), paths_(paths), start_(start) {
  const SignalsBlocked blocked;
  try {
    if (base_) thread_ = std::thread([this] { Run(); });
  } catch (const std::system_error&) {  // there may be no more threads: whoever asks looks himself
  }
}

void LookAhead::End() {
  MoveOnTo(paths_.size());
  behind_.notify_one();
  if (thread_.joinable()) thread_.join();
  paths_ = {};
}

void LookAhead::MoveOnTo(size_t number) {
  behind_.store(number, std::memory_order_release);
  if (number % kPiece == 0) behind_.notify_one();
}

bool LookAhead::IsIn(size_t number, const FileId& id, std::string_view name) const {
  const Slot& slot = slots_[number % kMostAhead];
  return slot.number.load(std::memory_order_acquire) == number && slot.folder == id &&
         NamePart(paths_[number - 1]) == name;
}

std::optional<Seen> LookAhead::Take(const FileId& id, std::string_view name) {
  const size_t next = behind_.load(std::memory_order_relaxed) + 1;
  if (next > paths_.size()) return std::nullopt;
  const size_t last = std::min(paths_.size(), next + kMostPassed);
  size_t number = next;
  if (NamePart(paths_[next - 1]) != name) {
    while (number <= last && !IsIn(number, id, name)) ++number;
  }
  if (number > last || !IsIn(number, id, name)) {
    MoveOnTo(next);
    if (++misses_ > kMostMisses) End();
    return std::nullopt;
  }
  misses_ = 0;
  const Seen seen = slots_[number % kMostAhead].seen;
  MoveOnTo(number);
  return seen;
}

// To the next path that is worth a look, when its slot is free; false when there is none.
bool LookAhead::Advance(size_t& number) {
  for (;;) {
    const size_t behind = behind_.load(std::memory_order_acquire);
    const size_t next = std::max(number + 1, behind + kLead);
    if (next > paths_.size()) return false;
    if (next <= behind + kMostAhead) {
      number = next;
      return true;
    }
    behind_.wait(behind);
  }
}

void LookAhead::LookAt(size_t number, Place& place) {
  const std::string_view path = paths_[number - 1].substr(start_);
  const std::string_view folder = FolderPart(path);
  if (folder != place.path) {
    std::string spelled(folder);
    std::ranges::replace(spelled, '\\', '/');
    place.opened =
        OpenBeneath(base_.get(), spelled.empty() ? "." : spelled.c_str(), Mounts::kStay, O_PATH);
    place.folder = place.opened.get();
    place.path = folder;
    struct stat status = {};
    if (place.folder >= 0) fstat(place.folder, &status);
    place.id = IdFrom(status);
  }
  Slot& slot = slots_[number % kMostAhead];
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
