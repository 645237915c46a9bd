#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine.h"
#include "platform/user_profiles.h"
#include "plugins/recipe_run.h"

namespace quellix {

// The users of this Windows, as the program's machine knows them. Both throw Error.
struct OtherUsers {
  // All who have a profile, whoever runs the program among them.
  std::function<std::vector<UserProfile>()> list;
  // Hands the machine of a user to `work`, which does not throw, and lets go of it behind it; calls
  // `breathe` while that takes a while. Returns what could not be undone, a sentence; "" for
  // nothing.
  std::function<std::string(const UserProfile& user,
                            const std::function<void(const Machine&)>& work,
                            const std::function<void()>& breathe)>
      open;
};

// What is ticked, looked for or cleaned for other users of this Windows, one after the other.
class UserRuns {
 public:
  // `own` is the machine of who runs the program; its ports and `view` must outlive this.
  // `most_rows`: see row_count.
  UserRuns(const Machine& own, RunView& view, OtherUsers here,
           size_t most_rows = RunEntries::kMost);

  // Those but who runs the program, by name, none ticked. Throws Error.
  void List();
  size_t count() const { return users_.size(); }
  const UserProfile& user(size_t row) const { return users_[row].profile; }
  bool IsTicked(size_t row) const { return users_[row].is_ticked; }
  void Toggle(size_t row) { users_[row].is_ticked = !users_[row].is_ticked; }
  bool HasTicks() const;

  // By the ticks and settings that are stored. A stop keeps what was done until then. Neither
  // throws: what failed for one user is told, and the next one's turn comes. Cleaned are those
  // alone for whom the last look has come to its end.
  void Look(const Pause& pause);
  void Clean(const Pause& pause);
  // Whether the last look has come to its end for everybody whom it was for, or failed for him.
  bool WasLookedAt() const { return !is_stopped_; }

  // From now on the recipes that the last look carried out to its end may run: its rows have been
  // shown to a person. What hinders it is told.
  void NoteShown();
  const std::shared_ptr<modPlugin::ShownRecipes>& shown() const { return shown_; }

  // What came of it, in that order: an entry each, or with Clean what went and what stayed. Beyond
  // the most they are only counted, user by user.
  struct Row {
    std::string user, what, where;
  };
  size_t row_count() const { return found_.empty() ? 0 : found_.back().end; }
  Row RowAt(size_t row) const;
  // Under each user's name what was told of him, lines.
  const std::string& text() const { return text_; }
  // What to ask before what a look has found is cleaned, a line for each of them; "" for nothing.
  const std::string& question() const { return question_; }
  // "12 entries of 2 users; 3 not listed"
  std::string Summary() const;

 private:
  struct User {
    UserProfile profile;
    bool is_ticked = false;
    bool was_looked_at = false;
  };
  using Work = std::function<std::shared_ptr<const RunEntries>(User& user, Engine& engine,
                                                               const Machine& his)>;

  // Of one user.
  struct Found {
    std::string user;
    std::shared_ptr<const RunEntries> entries;
    size_t end;  // of its rows
  };

  void ForEach(const Pause& pause, const Work& work);
  void WorkFor(User& user, const Pause& pause, const Work& work);
  void WorkWith(const Machine& his, User& user, const Work& work);
  void Tell(const std::string& what) { text_ += what + "\r\n"; }
  std::shared_ptr<const RunEntries> LookFor(User& user, Engine& engine, const Machine& his);

  Machine own_;
  RunView& view_;
  OtherUsers here_;
  std::vector<User> users_;
  const size_t most_rows_;
  std::vector<Found> found_;
  uint64_t not_listed_ = 0;
  std::shared_ptr<modPlugin::ShownRecipes> shown_;
  std::string text_, question_;
  size_t done_ = 0;
  bool is_stopped_ = false;
};

}  // namespace quellix
