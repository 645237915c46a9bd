#include "ui/options_cookies_page.h"

#include <numeric>

#include "platform/path.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/row_menu.h"

namespace quellix {
namespace {

constexpr Column kColumns[] = {{Mark("Cookie"), 100}};
constexpr Anchor kAnchors[] = {
    {lblCookieHint, 0, 0, 1, 0},  {lblCookies, 0, 0, 0.5, 0},   {lstvCookies, 0, 0, 0.5, 1},
    {lblKept, 0.5, 0, 1, 0},      {lstvKept, 0.5, 0, 1, 1},     {cmdKeep, 0.5, 0, 0.5, 0},
    {cmdKeepAll, 0.5, 0, 0.5, 0}, {cmdRelease, 0.5, 0, 0.5, 0}, {cmdReleaseAll, 0.5, 0, 0.5, 0}};

std::vector<size_t> AllRows(size_t count) {
  std::vector<size_t> rows(count);
  std::iota(rows.begin(), rows.end(), size_t{0});
  return rows;
}

}  // namespace

void OptionsCookiesPage::Fill() {
  layout().Add(kAnchors);
  const CookieLists& cookies = options().cookies;
  const bool none = cookies.on_machine().empty() && cookies.kept().empty();
  SetText(lblCookieHint, none ? Tr("Internet Explorer keeps no cookies on this machine.")
                              : Tr("The item Cookies removes the cookies of Internet Explorer, but "
                                   "never those that are kept."));
  Attach(on_machine_, lstvCookies, cookies.on_machine());
  Attach(kept_, lstvKept, cookies.kept());
  ShowCookies();
}

// The names tell whose cookies they are; the whole path shows under the mouse.
void OptionsCookiesPage::Attach(ListView& view, int id, const std::vector<std::string>& cookies) {
  view.Attach(Control(id), kColumns, [&cookies](int row, int) {
    return Cell{Wide(NamePart(cookies[static_cast<size_t>(row)]))};
  });
  view.SetTotals(context().machine.system.UserLocale());
  view.SetEmpty([id]() -> std::string {
    return id == lstvKept ? Tr("None are kept. Choose some on the left and press Keep.")
                          : Tr("Internet Explorer has left none here.");
  });
  view.SetTips([&cookies](int row) { return Wide(cookies[static_cast<size_t>(row)]); });
}

void OptionsCookiesPage::ShowCookies() {
  on_machine_.SetRows(static_cast<int>(options().cookies.on_machine().size()));
  kept_.SetRows(static_cast<int>(options().cookies.kept().size()));
  EnableCommands();
}

void OptionsCookiesPage::OnSized() {
  on_machine_.FillWith(0, 0);
  kept_.FillWith(0, 0);
}

void OptionsCookiesPage::EnableCommands() {
  const CookieLists& cookies = options().cookies;
  Enable(cmdKeep, on_machine_.CountSelected() > 0);
  Enable(cmdKeepAll, !cookies.on_machine().empty());
  Enable(cmdRelease, kept_.CountSelected() > 0);
  Enable(cmdReleaseAll, !cookies.kept().empty());
}

void OptionsCookiesPage::OnControl(int id, int /*code*/) {
  if (id >= cmdKeep && id <= cmdReleaseAll) Move(id);
}

void OptionsCookiesPage::Move(int command) {
  CookieLists& cookies = options().cookies;
  if (command == cmdKeep) cookies.Keep(on_machine_.SelectedRows());
  if (command == cmdKeepAll) cookies.Keep(AllRows(cookies.on_machine().size()));
  if (command == cmdRelease) cookies.Release(kept_.SelectedRows());
  if (command == cmdReleaseAll) cookies.Release(AllRows(cookies.kept().size()));
  ShowCookies();
  const bool kept = command == cmdKeep || command == cmdKeepAll;
  SetFocus(Control(kept ? lstvCookies : lstvKept));  // the button may be of no use any more
  Changed();
}

LRESULT OptionsCookiesPage::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  if (on_machine_.OnNotify(header, result) || kept_.OnNotify(header, result)) return result;
  const bool list = header.idFrom == lstvCookies || header.idFrom == lstvKept;
  if (list && (header.code == LVN_ITEMCHANGED || header.code == LVN_ODSTATECHANGED)) {
    EnableCommands();
  }
  return 0;
}

void OptionsCookiesPage::OnContextMenu(HWND control, POINT screen) {
  const bool is_kept = control == Control(lstvKept);
  if (!is_kept && control != Control(lstvCookies)) return;
  const CookieLists& cookies = options().cookies;
  const auto place_of = [&cookies, is_kept](size_t row) {
    return PlaceNamedBy((is_kept ? cookies.kept() : cookies.on_machine())[row]);
  };
  RowMenu{is_kept ? kept_ : on_machine_, context().machine.shell, place_of}.Show(window(), screen);
}

}  // namespace quellix
