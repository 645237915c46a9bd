#include "cli/console_view.h"

#include <atomic>
#include <csignal>

namespace quellix {
namespace {

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

ConsoleView::~ConsoleView() { std::signal(SIGINT, SIG_DFL); }

bool ConsoleView::Breathe() { return interrupted; }

void ConsoleView::ShowCritical(std::string_view text) { std::cerr << text << std::endl; }

bool ConsoleView::AskToGoOn(std::string_view question) {
  std::cerr << question << " [y]es, [n]o: " << std::flush;
  std::string line;
  if (std::getline(std::cin, line)) return line.starts_with('y') || line.starts_with('Y');
  std::cerr << "\nNobody answered: going on." << std::endl;
  return true;
}

void ConsoleView::ShowReport(const RunReport& report) {
  std::string text = report.full_log;
  std::erase(text, '\r');
  out_ << text << std::endl;
}

}  // namespace quellix
