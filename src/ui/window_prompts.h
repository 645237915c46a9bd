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

// Windows' own box before `owner`, in the direction of the language that is spoken; the button's
// id. "" is the program's own title.
int ShowBox(HWND owner, std::string_view text, UINT style, std::string_view title = {});

// A dialog that asks where to save, and as which of the filters (from 0); nothing when cancelled.
// Each filter is a title and one mask, whose extension is added to a name without one.
struct SavePlace {
  std::string path;
  size_t filter = 0;
};
std::optional<SavePlace> AskWhereToSave(HWND owner, std::span<const FileFilter> filters,
                                        std::string_view name);

// A question before what cannot be undone: its buttons say what they do, and Cancel is the default.
enum class AskedForGood { kYes, kShow, kCancel };
// A box below the buttons, which is not ticked; "" for none.
struct FurtherChoice {
  std::string_view text;
  bool is_ticked = false;  // when the first button was pressed
};
// `question` has the word of the first button in it (see VerbAndQuestion), and `text` stands below
// it; `shows` adds one that shows what goes.
AskedForGood AskForGood(HWND owner, std::string_view question, std::string_view text, bool shows,
                        FurtherChoice* further = nullptr);
// The same where nothing can be shown; without a question nothing is asked.
inline bool MayGo(HWND owner, std::string_view question, std::string_view text = {},
                  FurtherChoice* further = nullptr) {
  return question.empty() ||
         AskForGood(owner, question, text, false, further) == AskedForGood::kYes;
}

// A program in the way of a run; Skip is the default, and what closing the box means.
ProgramAnswer AskAboutProgramBefore(HWND owner, const ProgramQuestion& question);

// Starts this program anew with administrator rights, which Windows asks its user for; false when
// they were not given.
bool StartWithRights(HWND owner, std::string_view arguments);

// Opens a file, folder or address with the program Windows has for it; false when it has none.
bool OpenByShell(HWND owner, std::string_view target);

}  // namespace quellix
