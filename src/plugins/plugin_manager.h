#pragma once

#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "plugins/plugin_list.h"
#include "run/context.h"

namespace quellix::modPlugin {

// The rules of the manager's window: the installed plug-ins, which of them are ticked, and its
// commands. The list is the truth while it is open; plg.txt is written by Save alone.
class PluginManager {
 public:
  PluginManager(const Machine& machine, Prompts& prompts) : machine_(machine), prompts_(prompts) {}

  // Reads plg.txt; a file that cannot be read is told, and Save overwrites none that was not read.
  void Load();
  // Writes plg.txt; a failure is told. A list that could not be read is read anew before.
  void Save();

  const std::vector<InstalledPlugin>& rows() const { return rows_; }
  std::string PathOf(size_t row) const;                  // of its file, full
  const std::string& status() const { return status_; }  // lblStatus
  void SetStatus(std::string_view text) { status_ = text; }

  // What a row tells of itself, read when it is first asked.
  const PluginGuide& GuideOf(size_t row);
  // The cost of what is ticked becomes the status.
  void Toggle(size_t row);
  // What loses data for good is not ticked along unless SelectRisky is set.
  void TickAll(bool ticked);
  // Asks for a plug-in file in the folder Plugins and adds it, unticked. One that is listed already
  // is listed again, as it always was; reading the list drops the second.
  void Add();
  // After a question that names them, deletes the files of the rows and the rows. A file that
  // cannot be deleted keeps its row. False when the answer was No.
  bool Delete(std::span<const size_t> rows);
  // A plug-in that the editor saved: a row of that name gets the description, else there is a new
  // one, ticked.
  void AddSaved(std::string_view file, std::string_view description);

  // Carries the rows' plug-ins out and removes what they name, whatever their ticks. `show` is
  // called whenever status() has changed.
  void Process(CleaningContext& context, std::span<const size_t> rows,
               const std::function<void()>& show);

 private:
  std::string QuestionFor(std::span<const size_t> rows) const;
  void AddUnread();
  void ShowCount();

  Machine machine_;
  Prompts& prompts_;
  std::vector<InstalledPlugin> rows_;
  std::map<std::string, PluginGuide> guides_;  // by file
  std::string status_;
  bool is_read_ = false;
};

// The main window's command: the ticked plug-ins. Returns what is to be told, "" when the user
// stopped. Throws Error when plg.txt cannot be read.
std::string ProcessTickedPlugins(CleaningContext& context);

}  // namespace quellix::modPlugin
