#include "run/programs_in_use.h"

#include <set>

#include "platform/text.h"
#include "platform/words.h"
#include "run/run_log.h"

namespace quellix {
namespace {

// About fifteen seconds: time for a program to write what it has, and for its user to see what it
// asks.
constexpr int kMoments = 300;

// Whose question was answered in this run.
struct AskedPrograms {
  std::set<std::string> names;  // in upper case
};

bool MayAsk(CleaningContext& context) {
  const RunState& state = context.state;
  if (!IsAttended(state) || state.IsPreview) return false;
  if (!context.machine.session.RunsPrograms()) return false;
  return !state.Choice || state.Choice->HasAnyOf(state.ItemInWork, state.Entries->RuleInWork());
}

// Asks it to close and waits; why it may run still, a sentence.
std::string Close(CleaningContext& context, const ProgramInUse& program) {
  const auto closing = context.machine.session.AskToClose(program.use);
  if (!closing) return Tr("It has no window that could be asked to close.");
  context.view.SetStatus(Tr("Waiting for %1 to close...", program.name));
  for (int moment = 0; moment < kMoments && !StopsRun(context); ++moment) {
    if (closing->Await()) return Tr("It closed a window and still runs.");
  }
  return Tr("It has not closed yet. It may be asking something.");
}

}  // namespace

bool IsOutOfTheWay(CleaningContext& context, const ProgramInUse& program,
                   const std::function<bool()>& runs) {
  if (!runs()) return true;
  if (!MayAsk(context)) return false;
  auto& asked = context.state.Parts.Get<AskedPrograms>();
  if (!asked.names.insert(UpCase(program.name)).second) return false;
  ProgramQuestion question{program.name, program.what, ""};
  while (!StopsRun(context)) {
    const ProgramAnswer answer = context.view.AskAboutProgram(question);
    if (answer == ProgramAnswer::kSkip) return false;
    question.told = Tr("It still runs.");
    if (answer == ProgramAnswer::kClose) question.told = Close(context, program);
    if (context.state.AbortRequested || runs()) continue;
    LogLine(context.state, Log("%1 was closed before it was cleaned.", program.name));
    return true;
  }
  return false;
}

}  // namespace quellix
