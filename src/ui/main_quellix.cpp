

#include <exception>

#include "engine.h"
#include "platform/win32/win32_machine.h"
#include "platform/win32/win32_text.h"
#include "ui/dialog.h"
#include "ui/frm_main.h"
#include "ui/run_display.h"
#include "ui/windows_api.h"

namespace {

void LoadControlClasses() {
  INITCOMMONCONTROLSEX classes{sizeof(classes),
                               ICC_PROGRESS_CLASS | ICC_LISTVIEW_CLASSES | ICC_DATE_CLASSES};
  InitCommonControlsEx(&classes);
}

// How the program was started. Every command line starts it normally so far.
int RunProgram() {
  quellix::Win32Machine live;
  quellix::RunDisplay display;
  quellix::Engine engine(live.machine(), display);
  quellix::FrmMain main_window(engine, display, live.machine());
  main_window.Open(engine.Load());
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) quellix::Dialog::Dispatch(message);
  return 0;
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  try {
    LoadControlClasses();
    return RunProgram();
  } catch (const std::exception& error) {
    MessageBoxW(nullptr, quellix::Wide(error.what()).c_str(),
                quellix::Wide(quellix::kApplicationTitle).c_str(), MB_OK | MB_ICONERROR);
    return 1;
  }
}
