#include "app/run_steps.h"

#include "platform/error.h"

namespace quellix {

void BeginItem(CleaningContext& context, const Item& item) {
  context.state.Progress.visible = true;
  context.view.SetProgress(context.state.Progress);
  context.view.SetStatus("Working...");
  context.view.SetCommands({.clean = false, .stop = true, .menus = false});
  context.view.ShowCurrentItem(&item);
}

void EndRun(CleaningContext& context, std::string_view message) {
  if (message.empty()) {
    try {
      context.view.ShowLastCleaned(context.settings.StoreLastCleaned());
    } catch (const Error& error) {
      context.state.SettingsProblem = error.what();
    }
  }
  context.view.SetStatus(message);
  if (context.state.AbortRequested) context.state.Progress.value = 0;
  context.state.Progress.visible = false;
  context.view.SetProgress(context.state.Progress);
  context.view.SetCommands({.clean = true, .stop = false, .menus = false});
  context.view.ShowCurrentItem(nullptr);
}

void ReportCritical(CleaningContext& context, std::string_view text) {
  context.state.SomeErrors = true;
  if (context.state.Hidden) {
    context.state.RunLog.append(text).append("\r\n");
  } else {
    context.view.ShowCritical(text);
  }
}

}  // namespace quellix
