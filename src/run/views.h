#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quellix {

struct Item;
struct RunTotals;

// The categories of the log window, in its order.
enum class Category { kFolderFiles, kMiscellaneous, kInternet, kFirefox, kPlugins, kRegistry };
inline constexpr size_t kCategories = 6;

// What became of an item in a run, and of a category: of that the last that one of its items has.
enum class Outcome {
  kNotChosen,
  kNothingFound,  // nothing of its kind is here
  kNotPossible,   // not on this machine, or not in such a run; the log says why
  kCleaned,
  kFailed
};

// What a finished run shows.
struct RunReport {
  std::string log;           // RunLog, with the first names of what stayed
  std::string full_log;      // with all of them
  std::string files;         // the run's file count
  std::string space_gained;  // with its unit
  std::array<Outcome, kCategories> outcomes{};
  std::shared_ptr<const RunTotals> totals;  // with all it came by
};

struct ProgressBar {
  bool visible = false;
  int32_t max = 1;
  int32_t value = 0;
  bool operator==(const ProgressBar&) const = default;
};

// How far the list of files in work is.
struct FileProgress {
  uint64_t done = 0, total = 0;  // files; no total: there is no list in work
  double bytes = 0;              // of those that are gone, and of the one in work
  double all_bytes = 0;          // of all, where it is bytes that take the time, else 0
  bool operator==(const FileProgress&) const = default;
};

// Which commands the user has at the moment.
struct Commands {
  bool clean = true;
  bool stop = false;
  bool menus = true;
  bool operator==(const Commands&) const = default;
};

// A program that holds open what a run is about to clean.
struct ProgramQuestion {
  std::string program;  // "Google Chrome", or its file's name
  std::string what;     // is cleaned once it does not run: "Google Chrome, Cookies"
  std::string told;     // what came of the answer before, a sentence; "" at first
};
enum class ProgramAnswer { kClose, kSkip, kRetry };

// What a run shows while it works. Calls are frequent: an implementation keeps them cheap and
// paints at its own pace, at the latest in Breathe when it is due.
class RunView {
 public:
  virtual ~RunView() = default;

  // What a Pause does: waiting input is handled; true when the run is to stop.
  virtual bool Breathe() = 0;
  virtual void SetStatus(std::string_view text) = 0;        // lblStatus
  virtual void SetProgress(const ProgressBar& bar) = 0;     // pgClean
  virtual void ShowFiles(const FileProgress& /*files*/) {}  // beside pgClean
  virtual void SetCommands(const Commands& commands) = 0;   // cmdClean, cmdStop, the four menus
  virtual void ShowCurrentItem(const Item* item) = 0;       // imgCurrent; null hides it
  virtual void ShowLastCleaned(std::string_view text) = 0;  // lblCleanDate
  // A critical message box titled with the application's title. Never called in a hidden run.
  virtual void ShowCritical(std::string_view text) = 0;
  // A question before anything is done, with Yes and No. Never called in a hidden run. Where nobody
  // can answer, as in one, it is Yes.
  virtual bool AskToGoOn(std::string_view question) = 0;
  // What is to become of a program in the way: it is asked to close, or what it holds stays as it
  // is, or it is looked for anew. Only asked of a run that somebody watches.
  virtual ProgramAnswer AskAboutProgram(const ProgramQuestion& /*question*/) {
    return ProgramAnswer::kSkip;
  }
  virtual void ShowReport(const RunReport& report) = 0;  // the log window
  // The same of a hidden run, or of one that was stopped: nothing is shown now.
  virtual void KeepReport(const RunReport& /*report*/) {}
};

enum class OverwriteAnswer { kYes, kNo, kAll, kNone, kCancel };

// The files a file dialog offers: what it calls them, and their masks ("*.hlp;*.cnt").
struct FileFilter {
  std::string_view title;
  std::string_view masks;
};

// What a command tells and asks its user. Texts are UTF-8, paths full Windows paths.
class Prompts {
 public:
  virtual ~Prompts() = default;
  virtual void Inform(std::string_view text) = 0;
  // A question with Yes and No; closing it is No.
  virtual bool AskYesNo(std::string_view question) = 0;
  // A line of text, `preset` at first; nothing when the user cancels.
  virtual std::optional<std::string> AskText(std::string_view question,
                                             std::string_view preset) = 0;
  // A file that is there, chosen from `folder` ("" for the last one) on; nothing when cancelled.
  virtual std::optional<std::string> AskFile(std::span<const FileFilter> filters,
                                             std::string_view folder) = 0;
  // A folder, without trailing "\" unless it is a drive's root; nothing when cancelled.
  virtual std::optional<std::string> AskFolder(std::string_view title) = 0;
  // Whether a restored file may replace the one at `path`; kAll and kNone answer for the files that
  // follow as well.
  virtual OverwriteAnswer AskOverwrite(std::string_view path) = 0;
};

// Where nobody can be asked: nothing is chosen, agreed to or overwritten.
class NoPrompts : public Prompts {
 public:
  void Inform(std::string_view) override {}
  bool AskYesNo(std::string_view) override { return false; }
  std::optional<std::string> AskText(std::string_view, std::string_view) override { return {}; }
  std::optional<std::string> AskFile(std::span<const FileFilter>, std::string_view) override {
    return {};
  }
  std::optional<std::string> AskFolder(std::string_view) override { return {}; }
  OverwriteAnswer AskOverwrite(std::string_view) override { return OverwriteAnswer::kNone; }
};

}  // namespace quellix
