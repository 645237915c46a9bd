#include "app/run_report.h"

#include "app/item_catalogue.h"
#include "app/removal.h"

namespace quellix {
namespace {

constexpr size_t kDashes = 67;

std::string SpaceGained(const CleaningContext& context) {
  return FormatSize(context.state.RunSpaceGained, 2, true, context.machine.system.UserLocale());
}

bool Belongs(const Item& item, Category category) {
  switch (category) {
    case Category::kPlugins:
      return item.key == std::string_view("CleanPlugins");
    case Category::kRegistry:
      return item.in_registry;
    default:
      return static_cast<int>(item.group) == static_cast<int>(category);
  }
}

}  // namespace

std::string_view CategoryTitle(Category category) {
  switch (category) {
    case Category::kPlugins:
      return "Plugins";
    case Category::kRegistry:
      return "System Registry";
    default:
      return GroupTitle(static_cast<Group>(category));
  }
}

void AppendSummary(CleaningContext& context) {
  const RunState& state = context.state;
  std::string& log = context.state.RunLog;
  log += "\r\n" + std::string(kDashes, '-') + "\r\n";
  log += "Files Deleted:  " + std::to_string(state.RunFilesDeleted);
  log += "   Space Gained:  " + SpaceGained(context);
  if (state.FilesBackedUp > 0) {
    log += "\r\nBacked Up " + std::to_string(state.FilesBackedUp) + " file(s)";
  }
  if (state.SomeFilesLocked) {
    log += "\r\n\r\nSome files were not deleted because they were locked or in use.";
  }
  if (!state.SettingsProblem.empty()) {
    log += "\r\n\r\nThe time of this run could not be saved. " + state.SettingsProblem;
  }
}

RunReport MakeReport(const CleaningContext& context) {
  RunReport report{.log = context.state.RunLog,
                   .files = std::to_string(context.state.RunFilesDeleted),
                   .space_gained = SpaceGained(context)};
  for (const Item& item : AllItems()) {
    if (!context.state.ItemsCleaned[item.run_order - 1]) continue;
    for (size_t i = 0; i < kCategories; ++i) {
      if (Belongs(item, static_cast<Category>(i))) report.cleaned[i] = true;
    }
  }
  return report;
}

}  // namespace quellix
