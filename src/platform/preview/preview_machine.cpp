#include "platform/preview/preview_machine.h"

namespace quellix {

// A file that was written for an erasure is told as the erasure.
void PreviewProfile::Name(size_t before, ChangeKind kind, const std::string& part) {
  if (log_.size() == before) return;
  log_.back().kind = kind;
  log_.back().part = part;
  log_.back().bytes = 0;
}

bool PreviewProfile::DeleteKey(std::string_view file, std::string_view section,
                               std::string_view key) {
  const size_t before = log_.size();
  const bool found = IniFiles::DeleteKey(file, section, key);
  const std::string header = "[" + std::string(section) + "]";
  Name(before, ChangeKind::kEraseIniKey, header + " " + std::string(key));
  return found;
}

bool PreviewProfile::DeleteSection(std::string_view file, std::string_view section) {
  const size_t before = log_.size();
  const bool found = IniFiles::DeleteSection(file, section);
  Name(before, ChangeKind::kEraseIniSection, "[" + std::string(section) + "]");
  return found;
}

PreviewMachine::PreviewMachine(const Machine& inner)
    : files_(inner.files, inner.shell, log_),
      registry_(inner.registry, log_),
      shell_(inner.shell, files_, log_),
      url_cache_(inner.url_cache, files_, log_),
      profile_(files_, inner.system, log_),
      session_(inner.session, log_),
      machine_{files_,   registry_,    shell_,   url_cache_,
               profile_, inner.system, session_, inner.program_folder} {}

}  // namespace quellix
