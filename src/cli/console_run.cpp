#include "cli/console_run.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

#include "platform/error.h"
#include "plugins/recipe_run.h"
#include "run/removal.h"
#include "run/stayed.h"

namespace quellix {
namespace {

// Its log is printed behind the list.
class PreviewView : public ConsoleView {
 public:
  using ConsoleView::ConsoleView;
  bool AskToGoOn(std::string_view question) override {
    std::cerr << question << std::endl;
    return true;
  }
  void ShowReport(const RunReport&) override {}
};

std::string Count(size_t count, const std::string& one) {
  return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

void PrintTotals(std::ostream& out, const RunEntries& entries, const Locale& locale) {
  size_t files = 0, folders = 0, others = 0;
  uint64_t bytes = 0;
  for (const RunEntry& entry : entries.all) {
    if (entry.fate != Fate::kRemoved) continue;
    bytes += CountsAsFiles(entry) ? entry.bytes : 0;
    (CountsAsFiles(entry)               ? files
     : entry.kind == EntryKind::kFolder ? folders
                                        : others) += entry.count;
  }
  out << "Nothing was changed. A run would remove " << Count(files, "file") << " ("
      << FormatSize(static_cast<double>(bytes), 2, true, locale) << "), "
      << Count(folders, "folder") << " and " << others << " other"
      << (others == 1 ? " thing." : " things.") << std::endl;
}

}  // namespace

std::string Printable(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
  // Some terminals obey U+0080 to U+009F as well.
  for (size_t at = 0; (at = text.find('\xC2', at)) != text.npos; ++at) {
    if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0)
      text.replace(at, 2, "?");
  }
  return text;
}

void LoadEngine(Engine& engine, bool removes) {
  std::cerr << engine.Load();
  if (!removes) return;
  engine.ClearLeftovers();
  if (engine.context().settings.IsReadable()) return;
  throw Error(Error::Kind::kDenied, "Nothing is removed while the settings cannot be read.");
}

ConsoleRun::ConsoleRun(const Machine& machine, RunKind kind, std::ostream& out)
    : machine_(machine), out_(out) {
  if (kind == RunKind::kPreview) {
    view_ = std::make_unique<PreviewView>();
    preview_.emplace(machine);
    archive_.emplace(preview_->machine().files);
    engine_.emplace(preview_->machine(), *view_, &*archive_);
    engine_->state().IsPreview = true;
  } else {
    view_ = std::make_unique<ConsoleView>(out);
    engine_.emplace(machine, *view_);
  }
  view_->Follow(engine_->state());
  engine_->state().BySelf = !ConsoleView::asks();
  engine_->state().IsForAnother = ConsoleView::works_for_another();
  LoadEngine(*engine_, kind == RunKind::kReal);
}

ExitCode ConsoleRun::Outcome() {
  return engine_->is_loaded() ? ExitCodeOf(engine_->state()) : kFailed;
}

void ConsoleRun::PrintPreview() {
  const RunState& state = engine_->state();
  for (const RunEntry& entry : state.Entries->all) {
    if (entry.fate != Fate::kRemoved) continue;
    out_ << std::left << std::setw(16) << KindText(entry.kind) << Printable(PlaceText(entry))
         << "\n";
  }
  std::string log = state.RunLog + StayedNames(state, kNamesSaved);
  std::erase(log, '\r');
  if (!log.empty()) out_ << "The log of such a run:\n" << log << (log.ends_with('\n') ? "" : "\n");
  PrintTotals(out_, *state.Entries, engine_->context().machine.system.UserLocale());
  const bool a_person_reads = out_.rdbuf() != nullptr;
  if (a_person_reads) modPlugin::KeepShown(machine_, state.Parts.Find<modPlugin::ShownRecipes>());
}

}  // namespace quellix
