#include "results_winbench.h"

#include <filesystem>
#include <stdexcept>

#include "many_files.h"
#include "ui/resource.h"
#include "windows/quellix_window.h"

namespace quellix {
namespace {

constexpr int kPages = 200;
// What nobody takes for a pause, in seconds.
constexpr double kPage = 0.1, kAnswer = 0.3, kFirstRow = 0.5;

std::filesystem::path Junk() { return L"C:\\QxScratch\\junk"; }

// What the user sees of the list, and how long it takes to answer.
class ResultsWindow {
 public:
  explicit ResultsWindow(HWND window) : window_(window), list_(GetDlgItem(window, lstvDeletion)) {}

  LRESULT Rows() const { return SendMessageW(list_, LVM_GETITEMCOUNT, 0, 0); }
  bool IsSearching() const { return IsWindowEnabled(GetDlgItem(window_, cmdAbort)) != FALSE; }
  double SecondsToAnswer() const {
    return SideBySide::Seconds([&] { SendMessageW(list_, WM_NULL, 0, 0); });
  }
  double SecondsFor(UINT message, WPARAM wparam) const {
    return SideBySide::Seconds([&] {
      SendMessageW(message == WM_COMMAND ? window_ : list_, message, wparam, 0);
      UpdateWindow(list_);
    });
  }

 private:
  HWND window_, list_;
};

void MeasureSearch(SideBySide& table, const ResultsWindow& results, double seconds_to_window) {
  double longest = 0, first = seconds_to_window;
  first += SideBySide::Seconds([&] {
    while (results.Rows() == 0) Sleep(1);
  });
  while (results.IsSearching()) {
    longest = std::max(longest, results.SecondsToAnswer());
    Sleep(5);
  }
  if (results.Rows() < kManyFiles) throw std::runtime_error("junk files were not found");
  table.Report("first row after Clean / what may be waited for", first, kFirstRow, "s", 1.0);
  table.Report("longest wait for an answer while rows arrive", longest, kAnswer, "s", 1.0);
}

void MeasureRows(SideBySide& table, const ResultsWindow& results) {
  std::vector<double> pages;
  for (int i = 0; i < kPages; ++i) pages.push_back(results.SecondsFor(WM_VSCROLL, SB_PAGEDOWN));
  table.Report("a page of 200,000 rows", *std::ranges::max_element(pages), kPage, "s", 1.0);
  double longest = 0;
  for (int column = 0; column < 7; ++column) {
    longest = std::max(longest, results.SecondsFor(WM_COMMAND, mnuSortResults + column));
  }
  table.Report("sort 200,000 rows, slowest column", longest, kAnswer, "s", 1.0);
}

}  // namespace

void MeasureResultsWindow(SideBySide& table) {
  test::ResetSandbox();
  std::filesystem::remove_all(Junk());
  MakeManyFiles(Junk(), L".qxj");
  test::WriteBytes(test::ProgramFolder() / "UNFI.txt", "1\x01*.qxj\x01Ours\r\n");
  {
    const test::QuellixWindow program;
    program.Click(chkUnNecessaryFiles);
    HWND window = nullptr;
    const double seconds = SideBySide::Seconds([&] {
      program.Press(cmdClean);
      window = program.AwaitWindow(L"Search results");
    });
    if (!window) throw std::runtime_error("no window of results appeared");
    const ResultsWindow results(window);
    MeasureSearch(table, results, seconds);
    MeasureRows(table, results);
    SendMessageW(window, WM_CLOSE, 0, 0);
  }
  std::filesystem::remove(test::ProgramFolder() / "UNFI.txt");
  std::filesystem::remove_all(Junk());
}

}  // namespace quellix
