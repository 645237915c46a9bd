#pragma once

#include "run/views.h"
#include "ui/windows_api.h"

namespace quellix {

// Tells and asks in windows before `owner`.
class WindowPrompts : public Prompts {
 public:
  void Attach(HWND owner) { owner_ = owner; }

  void Inform(std::string_view text) override;
  bool AskYesNo(std::string_view question) override;
  std::optional<std::string> AskText(std::string_view question, std::string_view preset) override;
  std::optional<std::string> AskFile(std::span<const FileFilter> filters,
                                     std::string_view folder) override;
  std::optional<std::string> AskFolder(std::string_view title) override;
  OverwriteAnswer AskOverwrite(std::string_view path) override;

 private:
  HWND owner_ = nullptr;
};

// A dialog that asks where to save; nothing when cancelled. `filter` is one title and its masks,
// `extension` is added to a name without one.
std::optional<std::string> AskWhereToSave(HWND owner, const FileFilter& filter,
                                          std::string_view name, std::string_view extension);

// Opens a file, folder or address with the program Windows has for it; false when it has none.
bool OpenByShell(HWND owner, std::string_view target);

}  // namespace quellix
