// The folders of help files, in two keys by the kind of help.
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "registry_tools/tool_parts.h"

namespace quellix {
namespace {

constexpr RegistryRoot kRoot = RegistryRoot::kLocalMachine;
constexpr const char* kKeys[] = {"Software\\Microsoft\\Windows\\Help\\",
                                 "Software\\Microsoft\\Windows\\HTML Help\\"};
constexpr ScanColumn kColumns[] = {{Mark("File")}, {Mark("Folder")}};

class HelpFiles : public RegistryScan {
 public:
  HelpFiles(const Machine& machine, ScanView& view)
      : RegistryScan(machine, view, kHelpFileTraits) {}

  // A file is shown to choose, and its folder is meant.
  std::optional<std::string> Browse(size_t index, Prompts& prompts) override {
    const std::string help = Tr("Help File (*.hlp)"), content = Tr("Content File (*.cnt)");
    const FileFilter filters[] = {{help, "*.hlp"}, {content, "*.cnt"}};
    const auto path = prompts.AskFile(filters, row(index).texts[1]);
    return path ? std::optional(std::string(FolderPart(*path))) : std::nullopt;
  }
  // Into the key the entry came from: the folder alone.
  void SaveEdit(size_t index, std::string_view folder) override {
    const ScanRow& edited = row(index);
    if (folder == edited.texts[1]) return;
    modRegistry::RegSetString({machine().registry, machine().system}, kRoot, edited.key,
                              edited.name, folder);
  }

 protected:
  void ScanRegistry() override;
  RegistryTarget TargetOf(const ScanRow& row) const override {
    return {RegistryTarget::Kind::kValue, kRoot, row.key, row.name};
  }

 private:
  struct Entry {
    const char* key;
    std::string name;
  };
  std::vector<Entry> Entries();
};

std::vector<HelpFiles::Entry> HelpFiles::Entries() {
  std::vector<Entry> entries;
  for (const char* key : kKeys) {
    TellDamage(kRoot, key);
    const std::string names = modRegistry::ListRegValues(
        access(), kRoot, key, modRegistry::Reach::kUntilLong, PauseForList());
    if (names.empty()) continue;
    for (std::string& name : Split(names, '\0')) entries.push_back({key, std::move(name)});
  }
  return entries;
}

void HelpFiles::ScanRegistry() {
  SetStatus(Tr("Scanning registry..."));
  const std::vector<Entry> entries = Entries();
  BeginEntries(entries.size());
  for (const auto& [key, name] : entries) {
    if (!NextEntry()) return;
    std::string folder = modRegistry::ReadRegString(access(), kRoot, key, name);
    if (!folder.ends_with('\\')) folder += '\\';
    ScanRow row;
    row.texts = {name, folder};
    row.root = kRoot;
    row.key = key;
    row.name = name;
    row.file = folder + name;
    AddJudgedByFile(std::move(row));
  }
  SetCountsAsStatus();
}

}  // namespace

const ScanTraits kHelpFileTraits = {.name = "help-files",
                                    .title = Mark("Orphaned help file references"),
                                    .columns = kColumns,
                                    .deletes_files = true,
                                    .edits = true,
                                    .rescans = true};

std::unique_ptr<RegistryScan> MakeHelpFiles(const Machine& machine, ScanView& view) {
  return std::make_unique<HelpFiles>(machine, view);
}

}  // namespace quellix
