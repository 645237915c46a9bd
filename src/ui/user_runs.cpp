#include "ui/user_runs.h"

#include <algorithm>

#include "app/entry_list.h"
#include "app/preview_run.h"
#include "app/run_question.h"
#include "platform/error.h"
#include "platform/text.h"

namespace quellix {

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

void UserRuns::WorkFor(const UserProfile& user, const Work& work) {
  text_ += "== " + user.name + "\r\n";
  const auto with_his = [&](const Machine& his) {
    Engine engine(his, view_);
    const std::string problems = engine.Load();
    if (!engine.is_loaded()) throw Error(Error::Kind::kOther, problems);
    const std::shared_ptr<const RunEntries> found = work(user.name, engine, his);
    for (const RunEntry& entry : found->all) {
      const std::string stayed = entry.fate == Fate::kRemoved ? "" : "Stays: ";
      rows_.push_back({user.name, stayed + std::string(KindText(entry.kind)), PlaceText(entry)});
    }
  };
  try {
    const std::string left = here_.open(user, with_his);
    if (!left.empty()) text_ += left + "\r\n";
  } catch (const Error& error) {
    text_ += std::string(error.what()) + "\r\n";
  }
  ++done_;
}

void UserRuns::ForEach(const Pause& pause, const Work& work) {
  rows_.clear();
  text_.clear();
  question_.clear();
  done_ = 0;
  for (const User& user : users_) {
    if (pause({})) return;
    if (user.is_ticked) WorkFor(user.profile, work);
  }
}

std::shared_ptr<const RunEntries> UserRuns::LookFor(const std::string& user, Engine& engine,
                                                    const Machine& his) {
  PreviewRun preview(his, view_);
  preview.Run(engine.selection());
  text_ += preview.state().SomeErrors ? preview.state().RunLog : "";
  const auto shown = preview.state().Parts.Find<modPlugin::ShownRecipes>();
  const RunQuestion question =
      QuestionOf(EntryList(his.system, preview.entries(), true), shown.get(),
                 engine.selection().recipes(), his.system.UserLocale(), true);
  if (!question.heading.empty()) {
    question_ += user + ": " + question.heading + "\r\n";
    if (!question.text.empty()) question_ += question.text + "\r\n";
  }
  return preview.entries();
}

void UserRuns::Look(const Pause& pause) {
  ForEach(pause, [this](const std::string& user, Engine& engine, const Machine& his) {
    return LookFor(user, engine, his);
  });
}

void UserRuns::Clean(const Pause& pause) {
  ForEach(pause, [this](const std::string&, Engine& engine, const Machine&) {
    engine.RunCleaning();
    text_ += engine.state().RunLog + "\r\n";
    return engine.state().Entries;
  });
}

std::string UserRuns::Summary() const {
  return std::to_string(rows_.size()) + (rows_.size() == 1 ? " entry of " : " entries of ") +
         std::to_string(done_) + (done_ == 1 ? " user" : " users");
}

}  // namespace quellix
