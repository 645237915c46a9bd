#include "ui/frm_options.h"

#include <algorithm>

#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/options_cookies_page.h"
#include "ui/options_general_page.h"
#include "ui/options_list_page.h"
#include "ui/options_schedule_page.h"
#include "ui/options_search_page.h"
#include "ui/text_room.h"

namespace quellix {
namespace {

constexpr Anchor kAnchors[] = {{lstPages, 0, 0, 0, 1},
                               {picPage, 0, 0, 1, 1},
                               {IDOK, 1, 1, 1, 1},
                               {IDCANCEL, 1, 1, 1, 1},
                               {cmdApply, 1, 1, 1, 1}};

constexpr int kFirstList = static_cast<int>(OptionsPage::kIgnoredFiles);

// Where a refused value is typed in.
int ControlOf(OptionsField field) {
  switch (field) {
    case OptionsField::kDuration:
      return cmbAutoClean1;
    case OptionsField::kLowDisk:
      return txtLowDisk;
    case OptionsField::kBackupFolder:
      return txtBackup;
    case OptionsField::kDates:
      return dtpSearchFirst;
    case OptionsField::kSize:
      break;
  }
  return txtSearchSize;
}

std::string TitleOf(int page) {
  const int list = page - kFirstList;
  if (list >= 0 && list < kListPages) return Tr(ListPages()[list].title);
  switch (static_cast<OptionsPage>(page)) {
    case OptionsPage::kGeneral:
      return Tr("General");
    case OptionsPage::kDeletion:
      return Tr("Deletion");
    case OptionsPage::kRuns:
      return Tr("Runs");
    case OptionsPage::kSchedule:
      return Tr("Schedule");
    case OptionsPage::kSearch:
      return Tr("Search");
    case OptionsPage::kCookies:
      return Tr("Cookies");
    default:
      return Tr("Backups");
  }
}

}  // namespace

void FrmOptions::Show(HWND owner, std::optional<OptionsPage> page) {
  if (page) page_ = static_cast<int>(*page);
  const HCURSOR arrow = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
  Close();
  pages_.clear();
  options_.emplace(machine_);
  context_.emplace(OptionsContext{machine_, *options_, prompts_,
                                  [this] { EnableWindow(Control(cmdApply), TRUE); }, show_backups,
                                  schedule_});
  Open(frmOptions, owner);
  SetCursor(arrow);
  const std::string problems = options_->Problems();
  if (!problems.empty()) prompts_.Inform(problems);
}

void FrmOptions::OnInit() {
  Remember(machine_, "frmOptions");
  prompts_.Attach(window());
  layout().Add(kAnchors);
  MakePages();
  for (int page = 0; page < kOptionsPages; ++page) {
    SendDlgItemMessageW(window(), lstPages, LB_ADDSTRING, 0,
                        reinterpret_cast<LPARAM>(Wide(TitleOf(page)).c_str()));
  }
  const HWND list = Control(lstPages);
  layout().Need(lstPages, WidestRow(list) * 96.0 / dpi());
  ChoosePage(page_);
}

void FrmOptions::MakePages() {
  pages_.push_back(std::make_unique<OptionsGeneralPage>(*context_));
  pages_.push_back(std::make_unique<OptionsDeletionPage>(*context_));
  pages_.push_back(std::make_unique<OptionsRunsPage>(*context_));
  pages_.push_back(std::make_unique<OptionsSchedulePage>(*context_));
  pages_.push_back(std::make_unique<OptionsSearchPage>(*context_));
  for (OptionList& list : options_->lists) {
    pages_.push_back(std::make_unique<OptionsListPage>(*context_, list));
  }
  pages_.push_back(std::make_unique<OptionsCookiesPage>(*context_));
  pages_.push_back(std::make_unique<OptionsBackupsPage>(*context_));
  HWND before = Control(lstPages);  // the pages come behind it in the order of Tab
  for (const auto& page : pages_) {
    page->Make(window());
    SetWindowPos(page->window(), before, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    before = page->window();
  }
  RequireRoom();
}

// For the page that needs most.
void FrmOptions::RequireRoom() {
  SIZE most{};
  for (const auto& page : pages_) {
    const SIZE size = page->LeastSize();
    most = {std::max(most.cx, size.cx), std::max(most.cy, size.cy)};
    layout().Need(picPage, page->NaturalWidth(), page->NaturalHeight());
  }
  layout().Require(picPage, most.cx * 96.0 / dpi(), most.cy * 96.0 / dpi());
}

void FrmOptions::OnSized() {
  const RECT place = PlaceInParent(Control(picPage));
  for (const auto& page : pages_) page->MoveTo(place);
}

void FrmOptions::OnResolution() {
  for (const auto& page : pages_) page->FollowResolution(dpi());
}

void FrmOptions::ChoosePage(int page) {
  page_ = page;
  SendDlgItemMessageW(window(), lstPages, LB_SETCURSEL, static_cast<WPARAM>(page), 0);
  for (int i = 0; i < kOptionsPages; ++i) {
    if (i != page) pages_[i]->Reveal(false);
  }
  pages_[page]->Reveal(true);
}

void FrmOptions::OnCommand(int id, int code) {
  switch (id) {
    case lstPages:
      if (code == LBN_SELCHANGE) {
        ChoosePage(static_cast<int>(SendDlgItemMessageW(window(), lstPages, LB_GETCURSEL, 0, 0)));
      }
      return;
    case IDOK:
      if (!pages_[page_]->TakeEnter() && Accept()) OnClose();
      return;
    case cmdApply:
      if (Accept()) EnableControl(cmdApply, false, lstPages);
      return;
    case IDCANCEL:
      return OnClose();
    default:
      // Enter on a button inside a page is told to the window around it.
      if (pages_[page_]->Has(id)) pages_[page_]->Command(id, code);
  }
}

// Shows the first page with something typed but not added, and says so.
bool FrmOptions::FindUnfinished() {
  for (int page = 0; page < kOptionsPages; ++page) {
    const std::string unfinished = pages_[page]->Unfinished();
    if (unfinished.empty()) continue;
    ChoosePage(page);
    prompts_.Inform(unfinished);
    pages_[page]->FocusOn(pages_[page]->UnfinishedField());
    return true;
  }
  return false;
}

bool FrmOptions::Check() {
  const std::optional<Refusal> refusal = options_->Check();
  if (!refusal) return true;
  ChoosePage(static_cast<int>(PageOf(refusal->field)));
  prompts_.Inform(refusal->sentence);
  pages_[page_]->FocusOn(ControlOf(refusal->field));
  return false;
}

bool FrmOptions::Accept() {
  if (FindUnfinished() || !Check()) return false;
  std::string problems = options_->Save();
  for (const auto& page : pages_) {
    const std::string problem = page->Store();
    if (!problem.empty()) problems += (problems.empty() ? "" : "\r\n") + problem;
    page->ShowSaved();
  }
  if (on_accepted) on_accepted();
  if (!problems.empty()) prompts_.Inform(problems);
  return problems.empty();
}

}  // namespace quellix
