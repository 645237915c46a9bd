// The counts that Windows keeps of the users of shared libraries.
#include <cstdlib>

#include "platform/error.h"
#include "platform/text.h"
#include "registry_tools/tool_parts.h"

namespace quellix {
namespace {

constexpr RegistryRoot kRoot = RegistryRoot::kLocalMachine;
constexpr const char* kKey = "Software\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs\\";
constexpr ScanColumn kColumns[] = {{Mark("Use Count"), true}, {Mark("Shared DLL")}};
// The digit, not the number 0: the status has always counted these, and a count of 0 is not listed.
constexpr int kZeroCode = '0';

class SharedDlls : public RegistryScan {
 public:
  SharedDlls(const Machine& machine, ScanView& view)
      : RegistryScan(machine, view, kSharedDllTraits) {}

 protected:
  void ScanRegistry() override;
  RegistryTarget TargetOf(const ScanRow& row) const override {
    return {RegistryTarget::Kind::kValue, kRoot, kKey, row.name};
  }
  std::string Recounted() const override;

 private:
  std::string StatusOf(size_t entries, int missing, int zero) const;
  int AnsiCode(const std::string& character);
  int CountOf(const std::string& name, const std::string& data);
};

std::string SharedDlls::StatusOf(size_t entries, int missing, int zero) const {
  const auto number = [](int count) { return static_cast<uint64_t>(count); };
  return JoinParts({EntriesPart(entries),
                    TrN("%1 with missing files", "%1 with missing files", number(missing),
                        std::to_string(missing)),
                    TrN("%1 with zero usage count", "%1 with zero usage count", number(zero),
                        std::to_string(zero)),
                    NotJudged()});
}

// A character's code in the system's code page; 0 for one it does not have.
int SharedDlls::AnsiCode(const std::string& character) {
  for (int code = 1; code < 256; ++code) {
    if (machine().system.FromAnsi(std::string(1, static_cast<char>(code))) == character)
      return code;
  }
  return 0;
}

// The code of data's only character: of a number the low byte itself, as some have no character.
int SharedDlls::CountOf(const std::string& name, const std::string& data) {
  try {
    const auto key = machine().registry.Open(kRoot, kKey, RegistryAccess::kRead);
    const auto value = key ? key->QueryValue(name) : std::nullopt;
    if (value && value->type == kRegDword && !value->bytes.empty()) {
      return static_cast<unsigned char>(value->bytes[0]);
    }
  } catch (const Error&) {  // gone meanwhile
  }
  return AnsiCode(data);
}

void SharedDlls::ScanRegistry() {
  SetStatus(Tr("Scanning registry..."));
  TellDamage(kRoot, kKey);
  const std::string list = modRegistry::ListRegValues(
      access(), kRoot, kKey, modRegistry::Reach::kUntilLong, PauseForList());
  SmallCount zero;
  std::vector<std::string> names;
  // A key with one value is taken for an empty one; its users have never seen it listed.
  if (list.find('\0') != list.npos) names = Split(list, '\0');
  BeginEntries(names.size());
  for (const std::string& name : names) {
    if (!NextEntry()) return;
    const std::string data = modRegistry::ReadRegString(access(), kRoot, kKey, name);
    // Counts of 0 and above 255 are no single character and so never listed.
    if (ToUtf16(data).size() != 1) continue;
    ScanRow row;
    const int count = CountOf(name, data);
    if (count == kZeroCode) zero.Add();
    row.texts = {std::to_string(count), name};
    row.root = kRoot;
    row.key = kKey;
    row.name = row.file = name;
    AddJudgedByFile(std::move(row));
  }
  // The last index, so one less than there are; users' notes compare it so.
  const size_t last = names.empty() ? 0 : names.size() - 1;
  SetStatus(StatusOf(last, orphaned(), zero.value()));
}

std::string SharedDlls::Recounted() const {
  SmallCount missing, zero;
  for (const ScanRow& row : rows()) {
    if (row.mark == RowMark::kOrphaned) missing.Add();
    if (std::atoi(row.texts[0].c_str()) == 0) zero.Add();
  }
  return StatusOf(rows().size(), missing.value(), zero.value());
}

}  // namespace

const ScanTraits kSharedDllTraits = {.name = "shared-dlls",
                                     .title = Mark("Orphaned Shared DLLs"),
                                     .columns = kColumns,
                                     .deletes_files = true};

std::unique_ptr<RegistryScan> MakeSharedDlls(const Machine& machine, ScanView& view) {
  return std::make_unique<SharedDlls>(machine, view);
}

}  // namespace quellix
