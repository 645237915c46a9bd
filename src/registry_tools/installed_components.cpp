// The components that Windows sets up for each user at his first logon.
#include "platform/words.h"
#include "registry_tools/tool_parts.h"

namespace quellix {
namespace {

constexpr RegistryRoot kRoot = RegistryRoot::kLocalMachine;
constexpr const char* kKey = "Software\\Microsoft\\Active Setup\\Installed Components\\";
constexpr ScanColumn kColumns[] = {
    {Mark("ActiveX control")}, {"IsInstalled"}, {"StubPath"}, {Mark("SubKey")}};

class Components : public RegistryScan {
 public:
  Components(const Machine& machine, ScanView& view)
      : RegistryScan(machine, view, kComponentTraits) {}

 protected:
  void ScanRegistry() override;
  RegistryTarget TargetOf(const ScanRow& row) const override {
    return {RegistryTarget::Kind::kTree, kRoot, kKey + row.texts[3], ""};
  }
};

void Components::ScanRegistry() {
  SetStatus(Tr("Scanning registry..."));
  TellDamage(kRoot, kKey);
  const std::vector<std::string> names =
      modRegistry::ListSubKeys(access(), kRoot, kKey, PauseForList());
  BeginEntries(names.size());
  for (const std::string& name : names) {
    if (!NextEntry()) return;
    const auto read = [&](const char* value) {
      return modRegistry::ReadRegString(access(), kRoot, kKey + name, value);
    };
    const std::string title = read("");
    if (title.empty()) continue;
    // The number 1 read as a character; a text "1" has never counted as installed.
    const bool installed = read("IsInstalled").starts_with('\x01');
    ScanRow row;
    row.texts = {title, installed ? Tr("True") : Tr("False"), read("StubPath"), name};
    row.root = kRoot;
    row.key = kKey;
    AddJudged(std::move(row), installed ? RowMark::kValid : RowMark::kOrphaned);
  }
  SetCountsAsStatus();
}

}  // namespace

const ScanTraits kComponentTraits = {.name = "components",
                                     .title = Mark("Orphaned ActiveX control references"),
                                     .columns = kColumns,
                                     .rescans = true};

std::unique_ptr<RegistryScan> MakeComponents(const Machine& machine, ScanView& view) {
  return std::make_unique<Components>(machine, view);
}

}  // namespace quellix
