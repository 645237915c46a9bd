#include "ui/user_runs.h"

#include <algorithm>

#include "app/entry_list.h"
#include "app/preview_run.h"
#include "app/run_question.h"
#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr const char* kNotLookedAt =
    "Nothing of his is cleaned, as what would go could not be looked at before.";

}  // namespace

UserRuns::UserRuns(const Machine& own, RunView& view, OtherUsers here)
    : own_(own), view_(view), here_(std::move(here)) {}

void UserRuns::List() {
  users_.clear();
  rows_.clear();
  const std::string self = own_.session.UserId();
  for (UserProfile& user : here_.list()) {
    if (!EqualsNoCase(user.sid, self)) users_.push_back({std::move(user)});
  }
  std::ranges::sort(users_, [](const User& a, const User& b) {
    return CompareNoCase(a.profile.name, b.profile.name) < 0;
  });
}

bool UserRuns::HasTicks() const { return std::ranges::any_of(users_, &User::is_ticked); }

void UserRuns::WorkFor(User& user, const Work& work) {
  const std::string& name = user.profile.name;
  text_ += "== " + name + "\r\n";
  const auto with_his = [&](const Machine& his) {
    Engine engine(his, view_);
    const std::string problems = engine.Load();
    if (!engine.is_loaded()) throw Error(Error::Kind::kOther, problems);
    engine.state().IsForAnother = true;
    const std::shared_ptr<const RunEntries> found = work(user, engine, his);
    for (const RunEntry& entry : found->all) {
      const std::string stayed = entry.fate == Fate::kRemoved ? "" : "Stays: ";
      rows_.push_back({name, stayed + std::string(KindText(entry.kind)), PlaceText(entry)});
    }
  };
  try {
    const std::string left = here_.open(user.profile, with_his);
    if (!left.empty()) text_ += left + "\r\n";
  } catch (const std::exception& error) {  // the next one's turn comes all the same
    text_ += std::string(error.what()) + "\r\n";
  }
  ++done_;
}

void UserRuns::ForEach(const Pause& pause, const Work& work) {
  rows_.clear();
  text_.clear();
  question_.clear();
  done_ = 0;
  is_stopped_ = false;
  for (User& user : users_) {
    is_stopped_ = is_stopped_ || pause({});
    if (is_stopped_) return;
    if (user.is_ticked) WorkFor(user, work);
  }
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
  const RunQuestion question =
      QuestionOf(EntryList(his.system, preview.entries(), true), shown.get(),
                 engine.selection().recipes(), his.system.UserLocale(), true);
  if (!question.heading.empty()) {
    question_ += user.profile.name + ": " + question.heading + "\r\n";
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
    if (!user.was_looked_at) throw Error(Error::Kind::kOther, kNotLookedAt);
    engine.RunCleaning();
    is_stopped_ = is_stopped_ || engine.state().AbortRequested;
    text_ += engine.state().RunLog + "\r\n";
    return engine.state().Entries;
  });
}

std::string UserRuns::Summary() const {
  return std::to_string(rows_.size()) + (rows_.size() == 1 ? " entry of " : " entries of ") +
         std::to_string(done_) + (done_ == 1 ? " user" : " users");
}

}  // namespace quellix
