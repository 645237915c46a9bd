#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine.h"
#include "platform/user_profiles.h"

namespace quellix {

// The users of this Windows, as the program's machine knows them. Both throw Error.
struct OtherUsers {
  // All who have a profile, whoever runs the program among them.
  std::function<std::vector<UserProfile>()> list;
  // Hands the machine of a user to `work` and lets go of it behind it. Returns what could not be
  // undone, a sentence; "" for nothing.
  std::function<std::string(const UserProfile& user,
                            const std::function<void(const Machine&)>& work)>
      open;
};

// What is ticked, looked for or cleaned for other users of this Windows, one after the other.
class UserRuns {
 public:
  // `own` is the machine of who runs the program; its ports and `view` must outlive this.
  UserRuns(const Machine& own, RunView& view, OtherUsers here);

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

  // What came of it, in that order: an entry each, or with Clean what went and what stayed.
  struct Row {
    std::string user, what, where;
  };
  const std::vector<Row>& rows() const { return rows_; }
  // Under each user's name what was told of him, lines.
  const std::string& text() const { return text_; }
  // What to ask before what a look has found is cleaned, a line for each of them; "" for nothing.
  const std::string& question() const { return question_; }
  // "12 entries of 2 users"
  std::string Summary() const;

 private:
  struct User {
    UserProfile profile;
    bool is_ticked = false;
    bool was_looked_at = false;
  };
  using Work = std::function<std::shared_ptr<const RunEntries>(User& user, Engine& engine,
                                                               const Machine& his)>;

  void ForEach(const Pause& pause, const Work& work);
  void WorkFor(User& user, const Work& work);
  std::shared_ptr<const RunEntries> LookFor(User& user, Engine& engine, const Machine& his);

  Machine own_;
  RunView& view_;
  OtherUsers here_;
  std::vector<User> users_;
  std::vector<Row> rows_;
  std::string text_, question_;
  size_t done_ = 0;
  bool is_stopped_ = false;
};

}  // namespace quellix
