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
  Part part{};       // of use for its own numbers alone
  std::string path;  // behind the part's folder, with "\\" at its end
  UniqueFd opened;   // none when it cannot be opened
  FileId id;
  std::string name;  // for the room it has
};

LookAhead::~LookAhead() {
  is_ending_ = true;
  Wake();
  if (thread_.joinable()) thread_.join();
}

void LookAhead::Wake() {
  ++news_;
  news_.notify_one();
}

bool LookAhead::Start() {
  if (thread_.joinable()) return true;
  const SignalsBlocked blocked;
  slots_ = std::vector<Slot>(kMostAhead);
  try {
    thread_ = std::thread([this] { Run(); });
  } catch (const std::system_error&) {  // whoever asks looks himself
    return false;
  }
  return true;
}

std::shared_ptr<LookAhead> LookAhead::Expect(std::span<const Files> files) {
  if (!Start()) return nullptr;
  size_t last = count_;
  if (behind_ == last) lead_ = 1;  // nobody asks yet
  {
    const std::lock_guard lock(mutex_);
    for (const Files& part : files) {
      if (part.paths.empty()) continue;
      parts_.push_back({part, last});
      last = parts_.back().last();
    }
  }
  misses_ = 0;
  count_ = last;
  Wake();
  return {this, [self = shared_from_this(), last](LookAhead*) { self->Forget(last); }};
}

// Returns when the thread uses none of them any more.
void LookAhead::Forget(size_t last) {
  behind_ = std::max(behind_.load(), last);
  Wake();
  for (size_t at; (at = at_) != 0 && at <= last;) at_.wait(at);
  const std::lock_guard lock(mutex_);
  while (!parts_.empty() && parts_.front().last() <= last) parts_.pop_front();
}

const LookAhead::Part& LookAhead::PartOf(size_t number) const {
  const auto next = std::ranges::upper_bound(parts_, number - 1, {}, &Part::before);
  return *std::prev(next);
}

void LookAhead::MoveOnTo(size_t number) {
  const size_t before = behind_.load(std::memory_order_relaxed);  // changed by this thread alone
  behind_.store(number, std::memory_order_release);
  if (before / kPiece != number / kPiece) Wake();
}

bool LookAhead::IsIn(size_t number, const FileId& id, std::string_view name) const {
  const Slot& slot = slots_[number % slots_.size()];
  if (slot.number.load(std::memory_order_acquire) != number || slot.folder != id) return false;
  const Part& part = PartOf(number);
  return NamePart(part.paths[number - 1 - part.before]) == name;
}

std::optional<Seen> LookAhead::Take(const FileId& id, std::string_view name) {
  lead_.store(kLead, std::memory_order_relaxed);
  const size_t count = count_, next = behind_ + 1;
  if (next > count) return std::nullopt;
  const size_t last = std::min(count, next + kMostPassed);
  size_t number = next;
  while (number <= last && !IsIn(number, id, name)) ++number;
  if (number > last) {
    MoveOnTo(++misses_ > kMostMisses ? count : next);
    return std::nullopt;
  }
  misses_ = 0;
  const Seen seen = slots_[number % slots_.size()].seen;
  MoveOnTo(number);
  return seen;
}

// To the next file that is worth a look, when its slot is free.
bool LookAhead::Advance(size_t& number) const {
  const size_t behind = behind_, next = std::max(number + 1, behind + lead_);
  if (next > count_ || next > behind + slots_.size()) return false;
  number = next;
  return true;
}

// Opens the folder that the file is in, where that is another one than before.
void LookAhead::Enter(size_t number, Place& place) {
  const bool is_same = number > place.part.before && number <= place.part.last();
  if (!is_same) {
    const std::lock_guard lock(mutex_);
    place.part = PartOf(number);
  }
  const std::string_view path =
      place.part.paths[number - 1 - place.part.before].substr(place.part.start);
  const std::string_view folder = FolderPart(path);
  place.name = NamePart(path);
  if (is_same && folder == place.path) return;
  place.path = folder;
  std::string spelled = place.path;
  std::ranges::replace(spelled, '\\', '/');
  place.opened = OpenBeneath(place.part.folder, spelled.empty() ? "." : spelled.c_str(),
                             Mounts::kStay, O_PATH);
  struct stat status = {};
  if (place.opened) fstat(place.opened.get(), &status);
  place.id = IdFrom(status);
}

void LookAhead::LookAt(size_t number, Place& place) {
  Enter(number, place);
  Slot& slot = slots_[number % slots_.size()];
  if (!place.opened || !IsUsableName(place.name)) return;
  if (!See(place.opened.get(), place.name.c_str(), slot.seen)) return;
  slot.folder = place.id;
  slot.number.store(number, std::memory_order_release);
}

// Whoever forgets files has them left behind first and then looks whether the thread is at one of
// them; the thread tells where it is first and then looks whether that is left behind.
void LookAhead::Run() try {
  Place place;
  for (size_t number = 0; !is_ending_;) {
    const uint32_t news = news_;
    if (!Advance(number)) {
      place = Place();  // holds no folder open meanwhile
      if (!is_ending_) news_.wait(news);
      continue;
    }
    at_ = number;
    if (behind_ < number) LookAt(number, place);
    at_ = 0;
    if (behind_ >= number) at_.notify_one();
  }
} catch (const std::exception&) {  // no memory
  at_ = 0;
  at_.notify_one();
}

}  // namespace quellix
