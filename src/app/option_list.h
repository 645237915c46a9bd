#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/refusal.h"
#include "platform/machine.h"
#include "settings/list_files.h"

namespace quellix {

// What a list's page shows and offers; lives as long as the program.
struct ListPage {
  OptionsPage page;
  std::string_view title;       // of the page, and of the list in messages
  std::string_view hint;        // what the list does
  std::string_view label;       // of the field for an entry
  const char *file, *defaults;  // in the program folder; no defaults: ""
  enum Browse { kNone, kFile, kFolder } browse = kNone;
  bool has_ticks = false;
};
inline constexpr int kListPages = 7;
std::span<const ListPage, kListPages> ListPages();

// The draft of one of the user's lists: what is done here reaches the disk with Save.
class OptionList {
 public:
  // Reads the list. When it cannot be read it is empty and refuses every change, so that what is in
  // the file is not lost.
  OptionList(const Machine& machine, const ListPage& page);

  const ListPage& page() const { return page_; }
  // A sentence when the list could not be read, else "".
  const std::string& problem() const { return problem_; }
  const std::vector<ListRow>& rows() const { return rows_; }
  bool changed() const { return rows_ != saved_; }

  // Both return "" or, having changed nothing, a sentence why not. Blanks around the texts go. An
  // added row is the last one, ticked.
  std::string Add(std::string_view text, std::string_view description);
  // What to ask before an entry is added or changed to this: a folder whose files go is one that
  // its user knows, as Downloads. "" when nothing needs asking.
  std::string Question(std::string_view text) const;
  std::string Change(size_t row, std::string_view text, std::string_view description);
  void Remove(std::span<const size_t> rows);  // in ascending order
  void Toggle(size_t row) { rows_[row].ticked = !rows_[row].ticked; }
  // What a chosen file or folder is written as in this list.
  std::string FromPath(std::string_view path) const;

  // Whether there is a file of defaults.
  bool HasDefaults() const;
  // Takes the rows of the defaults; returns "" or a sentence why not.
  std::string RestoreDefaults();

  // Replaces the file when something was changed. Throws Error; the old file then stays.
  void Save();

 private:
  std::vector<ListRow> Read(std::string_view name, std::string_view default_name) const;
  std::string WhyNot(std::string_view text, std::string_view description, size_t own_row) const;
  std::string WhyNotText(std::string_view text) const;

  Machine machine_;
  const ListPage& page_;
  std::vector<ListRow> rows_, saved_;
  std::string problem_;
};

}  // namespace quellix
