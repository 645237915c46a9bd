#include "ui/user_runs.h"

#include <algorithm>

#include "app/entry_list.h"
#include "app/preview_run.h"
#include "app/run_question.h"
#include "platform/error.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr const char* kNotLookedAt =
    Mark("Nothing of his is cleaned, as what would go could not be looked at before.");

}  // namespace

UserRuns::UserRuns(const Machine& own, RunView& view, OtherUsers here, size_t most_rows)
    : own_(own), view_(view), here_(std::move(here)), most_rows_(most_rows) {}

void UserRuns::List() {
  users_.clear();
  found_.clear();
  const std::string self = own_.session.UserId();
  for (UserProfile& user : here_.list()) {
    if (!EqualsNoCase(user.sid, self)) users_.push_back({std::move(user)});
  }
  std::ranges::sort(users_, [](const User& a, const User& b) {
    return CompareNoCase(a.profile.name, b.profile.name) < 0;
  });
}

bool UserRuns::HasTicks() const { return std::ranges::any_of(users_, &User::is_ticked); }

void UserRuns::WorkWith(const Machine& his, User& user, const Work& work) {
  Engine engine(his, view_);
  const std::string problems = engine.Load();
  if (!engine.is_loaded()) throw Error(Error::Kind::kOther, problems);
  engine.state().IsForAnother = true;
  const std::shared_ptr<const RunEntries> entries = work(user, engine, his);
  const size_t rows = row_count() + entries->all.size();
  not_listed_ += entries->left_out;
  if (rows <= most_rows_) {
    found_.push_back({user.profile.name, entries, rows});
  } else {
    not_listed_ += entries->all.size();
  }
}

// Whatever fails, the next one's turn comes.
void UserRuns::WorkFor(User& user, const Pause& pause, const Work& work) {
  Tell("== " + user.profile.name);
  const auto with_his = [&](const Machine& his) {
    try {
      WorkWith(his, user, work);
    } catch (const std::exception& error) {
      Tell(Shown(error));
    }
  };
  try {
    const std::string left = here_.open(user.profile, with_his, [&pause] { pause({}); });
    if (!left.empty()) Tell(left);
  } catch (const std::exception& error) {
    Tell(Shown(error));
  }
  ++done_;
}

void UserRuns::ForEach(const Pause& pause, const Work& work) {
  found_.clear();
  not_listed_ = 0;
  shown_.reset();
  text_.clear();
  question_.clear();
  done_ = 0;
  is_stopped_ = false;
  for (User& user : users_) {
    is_stopped_ = is_stopped_ || pause({});
    if (is_stopped_) return;
    if (user.is_ticked) WorkFor(user, pause, work);
  }
}

UserRuns::Row UserRuns::RowAt(size_t row) const {
  const auto found = std::ranges::upper_bound(found_, row, {}, &Found::end);
  const auto& all = found->entries->all;
  const RunEntry& entry = all[row - (found->end - all.size())];
  const std::string what = Tr(KindText(entry.kind));
  return {found->user, entry.fate == Fate::kRemoved ? what : Tr("Stays: %1", what),
          PlaceText(entry)};
}

std::shared_ptr<const RunEntries> UserRuns::LookFor(User& user, Engine& engine,
                                                    const Machine& his) {
  PreviewRun preview(his, view_);
  preview.Run(engine.selection());
  const bool is_refused = preview.state().SomeErrors && preview.entries()->all.empty();
  is_stopped_ = is_stopped_ || preview.state().AbortRequested;
  user.was_looked_at = !is_refused && !is_stopped_;
  text_ += preview.state().SomeErrors ? preview.state().RunLog : "";
  const auto shown = preview.state().Parts.Find<modPlugin::ShownRecipes>();
  // Only what is listed whole was seen.
  if (shown && user.was_looked_at && preview.entries()->left_out == 0 &&
      row_count() + preview.entries()->all.size() <= most_rows_) {
    if (!shown_) shown_ = std::make_shared<modPlugin::ShownRecipes>();
    shown_->all.insert(shown_->all.end(), shown->all.begin(), shown->all.end());
  }
  const RunQuestion question =
      QuestionOf(EntryList(his.system, preview.entries(), true), shown.get(),
                 engine.selection().recipes(), his.system.UserLocale(), true);
  if (!question.heading.empty()) {
    question_ +=
        user.profile.name + ": " + std::string(VerbAndQuestion(question.heading).question) + "\r\n";
    if (!question.text.empty()) question_ += question.text + "\r\n";
  }
  return preview.entries();
}

void UserRuns::Look(const Pause& pause) {
  for (User& user : users_) user.was_looked_at = false;
  ForEach(pause, [this](User& user, Engine& engine, const Machine& his) {
    return LookFor(user, engine, his);
  });
}

void UserRuns::Clean(const Pause& pause) {
  ForEach(pause, [this](User& user, Engine& engine, const Machine&) {
    if (!user.was_looked_at) throw Error(Error::Kind::kOther, Say(kNotLookedAt));
    engine.RunCleaning();
    is_stopped_ = is_stopped_ || engine.state().AbortRequested;
    text_ += engine.state().RunLog + "\r\n";
    return engine.state().Entries;
  });
}

void UserRuns::NoteShown() {
  try {
    modPlugin::KeepShown(own_, shown_);
  } catch (const Error& error) {
    Tell(Tr("Which recipes you have seen could not be stored. %1", Shown(error)));
  }
}

std::string UserRuns::Summary() const {
  const size_t rows = row_count();
  const std::string users = TrN("%1 user", "%1 users", done_, std::to_string(done_));
  // TRANSLATORS: %2 is "2 users".
  const std::string text =
      TrN("%1 entry of %2", "%1 entries of %2", rows, std::to_string(rows), users);
  // TRANSLATORS: %1 is "12 entries of 2 users".
  return not_listed_ > 0 ? Tr("%1; %2 not listed", text, std::to_string(not_listed_)) : text;
}

}  // namespace quellix
