#include "cli/console_view.h"

#include <algorithm>
#include <atomic>
#include <csignal>

#include "run/removal.h"
#include "run/time_left.h"

namespace quellix {
namespace {

constexpr std::chrono::milliseconds kBetweenLines(100);

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "it is set by a signal handler");

// The first Ctrl-C stops the run in good order, the second ends the program.
void OnInterrupt(int) {
  interrupted = true;
  std::signal(SIGINT, SIG_DFL);
}

}  // namespace

ConsoleView::ConsoleView(std::ostream& out) : out_(out) {
  interrupted = false;
  std::signal(SIGINT, OnInterrupt);
}

ConsoleView::~ConsoleView() {
  ClearLine();
  std::signal(SIGINT, SIG_DFL);
}

bool ConsoleView::WasInterrupted() { return interrupted; }

bool ConsoleView::Breathe() {
  if (shows_progress_ && run_ != nullptr && Clock::now() - shown_ > kBetweenLines) ShowLine();
  return interrupted;
}

// "45 % of this item; 1,204 files, 54.20 MB; about 2 minutes left".
void ConsoleView::ShowLine() {
  shown_ = Clock::now();
  const auto count = [](double number) { return FormatNumber(number, 0, {}); };
  const auto done = static_cast<uint64_t>(std::max(bar_.value, 0)),
             all = static_cast<uint64_t>(std::max(bar_.max, 1));
  std::string text =
      count(run_->RunFilesDeleted) + " files, " + FormatSize(run_->RunSpaceGained, 2, true, {});
  if (done > 0) {
    const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(shown_ - begun_);
    const std::string left =
        TimeLeftText({.done = done, .total = all}, static_cast<uint64_t>(since.count()));
    text = std::to_string(done * 100 / all) + " % of this item; " + text +
           (left.empty() ? "" : "; " + left);
  } else {
    begun_ = shown_;  // another item
  }
  ClearLine();
  std::cerr << text << std::flush;
  line_ = text.size();
}

void ConsoleView::ClearLine() {
  if (line_ > 0) std::cerr << '\r' << std::string(line_, ' ') << '\r' << std::flush;
  line_ = 0;
}

void ConsoleView::ShowCritical(std::string_view text) {
  ClearLine();
  std::cerr << text << std::endl;
}

bool ConsoleView::AskToGoOn(std::string_view question) {
  ClearLine();
  std::cerr << question << " [y]es, [n]o: " << std::flush;
  std::string line;
  if (std::getline(std::cin, line)) return line.starts_with('y') || line.starts_with('Y');
  std::cerr << "\nNobody answered: going on." << std::endl;
  return true;
}

ProgramAnswer ConsoleView::AskAboutProgram(const ProgramQuestion& question) {
  ClearLine();
  if (!question.told.empty()) std::cerr << question.told << "\n";
  std::cerr << question.program
            << " is running. Before this is cleaned it has to be closed: " << question.what
            << ". [c]lose it, [s]kip, [r]etry: " << std::flush;
  std::string line;
  std::getline(std::cin, line);
  switch (line.empty() ? 's' : line.front() | 0x20) {
    case 'c':
      return ProgramAnswer::kClose;
    case 'r':
      return ProgramAnswer::kRetry;
    default:
      return ProgramAnswer::kSkip;
  }
}

void ConsoleView::ShowReport(const RunReport& report) {
  std::string text = report.full_log;
  std::erase(text, '\r');
  ClearLine();
  out_ << text << std::endl;
}

}  // namespace quellix
