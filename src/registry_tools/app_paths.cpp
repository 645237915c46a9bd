// The paths of applications that are started by their names.
#include <algorithm>

#include "platform/path.h"
#include "platform/words.h"
#include "registry_tools/tool_parts.h"

namespace quellix {
namespace {

constexpr RegistryRoot kRoot = RegistryRoot::kLocalMachine;
constexpr const char* kKey = "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths";
constexpr ScanColumn kColumns[] = {{Mark("File")}, {Mark("Folder")}};

std::string KeyOf(const std::string& application) { return std::string(kKey) + "\\" + application; }

// From the first dot on: "setup.tar.exe" offers "*.tar.exe", as its users know it.
std::string MaskOf(std::string_view application) {
  const size_t dot = application.find('.');
  return dot == application.npos ? "" : "*" + std::string(application.substr(dot));
}

class AppPaths : public RegistryScan {
 public:
  AppPaths(const Machine& machine, ScanView& view) : RegistryScan(machine, view, kAppPathTraits) {}

  std::optional<std::string> Browse(size_t index, Prompts& prompts) override {
    const std::string mask = MaskOf(row(index).texts[0]);
    const FileFilter filters[] = {{mask, mask}};
    auto path =
        prompts.AskFile(std::span(filters, mask.empty() ? 0 : 1), FolderPart(row(index).texts[1]));
    if (path) std::erase(*path, '"');
    return path;
  }
  void SaveEdit(size_t index, std::string_view path) override {
    const ScanRow& edited = row(index);
    if (path == edited.texts[1]) return;
    modRegistry::RegSetString({machine().registry, machine().system}, kRoot, KeyOf(edited.texts[0]),
                              "", path);
  }

 protected:
  void ScanRegistry() override;
  // A key that has sub-keys stays, and the scan that follows lists it again.
  RegistryTarget TargetOf(const ScanRow& row) const override {
    return {RegistryTarget::Kind::kKey, kRoot, KeyOf(row.texts[0]), ""};
  }
};

void AppPaths::ScanRegistry() {
  SetStatus(Tr("Scanning registry..."));
  TellDamage(kRoot, kKey);
  const std::vector<std::string> names =
      modRegistry::ListSubKeys(access(), kRoot, kKey, PauseForList());
  BeginEntries(names.size());
  for (const std::string& name : names) {
    if (!NextEntry()) return;
    std::string path = modRegistry::ReadRegString(access(), kRoot, KeyOf(name), "");
    // A path with variables is never judged, whatever they stand for: a long-standing promise.
    if (path.empty() || path.find('%') != path.npos) continue;
    std::erase(path, '"');
    ScanRow row;
    row.texts = {name, path};
    row.root = kRoot;
    row.key = kKey;
    row.file = path;
    AddJudgedByFile(std::move(row));
  }
  SetCountsAsStatus();
}

}  // namespace

const ScanTraits kAppPathTraits = {.name = "app-paths",
                                   .title = Mark("Orphaned application path references"),
                                   .columns = kColumns,
                                   .deletes_files = true,
                                   .edits = true,
                                   .rescans = true};

std::unique_ptr<RegistryScan> MakeAppPaths(const Machine& machine, ScanView& view) {
  return std::make_unique<AppPaths>(machine, view);
}

}  // namespace quellix
