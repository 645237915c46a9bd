#include "app/name_ticks.h"

#include "platform/text.h"
#include "settings/list_files.h"

namespace quellix {
void NameTicks::SetTicked(std::string_view name, bool ticked) {
  if (ticked) {
    ticked_.emplace(name);
  } else if (const auto found = ticked_.find(name); found != ticked_.end()) {
    ticked_.erase(found);
  }
}

void NameTicks::Load(const Machine& machine) {
  for (const std::string& line : ReadListFile(machine, file_)) {
    const std::string_view name = TrimBlanks(line);
    if (!name.empty()) ticked_.emplace(name);
  }
  stored_ = ticked_;
}

void NameTicks::Save(const Machine& machine) {
  if (ticked_ == stored_) return;
  WriteListFile(machine, file_, {ticked_.begin(), ticked_.end()});
  stored_ = ticked_;
}

}  // namespace quellix
