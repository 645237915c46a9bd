// Values that name a file or folder which is gone.
#include "platform/damaged.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "registry_tools/file_reference.h"
#include "registry_tools/tool_parts.h"

namespace quellix {
namespace {

constexpr ScanColumn kColumns[] = {
    {Mark("Registry Key")}, {Mark("String Value")}, {Mark("File/path reference")}};
constexpr size_t kByValueName = 1;
// Deeper than Windows allows.
constexpr int kMostLevels = 520;

class FileReferences : public RegistryScan {
 public:
  FileReferences(const Machine& machine, ScanView& view);

 protected:
  void ScanRegistry() override;
  // Relative to the root, whatever key the data was read from.
  RegistryTarget TargetOf(const ScanRow& row) const override {
    return {RegistryTarget::Kind::kValue, row.root, row.key, row.name};
  }
  std::string Recounted() const override {
    const size_t count = rows().size();
    return TrN("%1 invalid references", "%1 invalid references", count, std::to_string(count));
  }

 private:
  void ScanRoot(RegistryRoot root);
  void AnalyzeKey(RegistryKey& key, const std::string& name, int level);
  void AnalyzeSubKeys(RegistryKey& key, int level);
  void AnalyzeValues(RegistryKey& key);
  void ExamineValues(RegistryKey& key);
  void ExamineAllValues(RegistryKey& key);
  void StepBack();
  void AddReference(const std::string& name, std::string data);

  std::string drive_list_;  // "C:\" and so on, each with a NUL behind it
  std::optional<ReferenceJudge> judge_;
  RegistryRoot root_ = RegistryRoot::kCurrentUser;
  std::string root_name_, current_path_;
  std::string name_;     // of the value at hand
  RegistryValue value_;  // its data
};

FileReferences::FileReferences(const Machine& machine, ScanView& view)
    : RegistryScan(machine, view, kFileReferenceTraits) {
  for (const Drive& drive : machine.system.Drives()) {
    drive_list_.append(1, drive.letter).append(":\\").push_back('\0');
  }
}

void FileReferences::ScanRegistry() {
  judge_.reset();
  if (thorough()) judge_.emplace(machine());
  current_path_.clear();
  ScanRoot(RegistryRoot::kCurrentUser);
  ScanRoot(RegistryRoot::kLocalMachine);
  SortRows(kByValueName, false);
  SetStatus(Recounted());
}

void FileReferences::ScanRoot(RegistryRoot root) {
  root_ = root;
  root_name_ = std::string(RootName(root)) + ":";
  try {
    const auto key = machine().registry.Open(root, "", RegistryAccess::kRead);
    if (key) AnalyzeKey(*key, "", 0);
  } catch (const Damaged& error) {
    TellDamage(Shown(error));
  } catch (const Error&) {  // passed over, as every key
  }
}

void FileReferences::AnalyzeKey(RegistryKey& key, const std::string& name, int level) {
  if (is_stopped()) return;
  const size_t before = current_path_.size();
  current_path_ += name;
  SetStatus(Tr("Analyzing: %1", root_name_ + current_path_));
  Stops();
  AnalyzeValues(key);
  if (level < kMostLevels) AnalyzeSubKeys(key, level);
  if (thorough()) {
    current_path_.resize(before);
  } else {
    StepBack();
  }
}

// A key with a name of one character at the top stays in the path for good: rows have always shown
// it so, and it is where their deletion looks.
void FileReferences::StepBack() {
  if (ToUtf16(current_path_).size() > 2) current_path_.pop_back();
  current_path_.resize(current_path_.rfind('\\') + 1);
}

void FileReferences::AnalyzeSubKeys(RegistryKey& key, int level) {
  try {
    for (uint32_t i = 0; !is_stopped(); ++i) {
      const auto found = key.SubKeyAt(i);
      if (!found) return;
      const std::string name(TrimNull(*found));
      if (name.empty()) continue;  // would be the key itself
      Stops();
      try {
        const auto sub_key = key.Open(name, RegistryAccess::kRead);
        if (sub_key) AnalyzeKey(*sub_key, name + "\\", level + 1);
      } catch (const Damaged& error) {
        TellDamage(Shown(error));
      } catch (const Error&) {  // passed over
      }
    }
  } catch (const Damaged& error) {
    TellDamage(Shown(error));
  } catch (const Error&) {  // deleted meanwhile
  }
}

void FileReferences::AnalyzeValues(RegistryKey& key) {
  try {
    if (thorough()) return ExamineAllValues(key);
    // Relative to the key being walked, so that below the root hardly a value is seen: what this
    // tool offers for deletion without "Thorough" has always been as little as that.
    const auto read = key.Open(WithoutBackslash(current_path_), RegistryAccess::kRead);
    if (read) ExamineValues(*read);
  } catch (const Damaged& error) {
    TellDamage(Shown(error));
  } catch (const Error&) {  // reads as empty
  }
}

void FileReferences::ExamineValues(RegistryKey& key) {
  const std::string names =
      modRegistry::ListRegValues(key, modRegistry::Reach::kUntilLong, PauseForList());
  if (names.empty()) return;
  for (const std::string& name : Split(names, '\0')) {
    if (Stops()) return;
    std::string data = modRegistry::ReadRegString(access(), key, name);
    // A short one ends the key: a long-standing rule that keeps lists of settings out.
    if (ToUtf16(data).size() < 3) return;
    // In this case only: "c:\" has never been taken for a drive.
    if (drive_list_.find(data.substr(0, 3)) == drive_list_.npos) continue;
    if (machine().files.IsGone(data)) AddReference(name, std::move(data));
  }
}

void FileReferences::ExamineAllValues(RegistryKey& key) {
  for (uint32_t i = 0; !Stops() && key.ReadValueAt(i, name_, value_); ++i) {
    if (auto gone = judge_->FindGone(value_)) AddReference(name_, *std::move(gone));
  }
}

void FileReferences::AddReference(const std::string& name, std::string data) {
  ScanRow row;
  row.texts = {root_name_ + current_path_, name, std::move(data)};
  row.root = root_;
  row.key = current_path_;
  row.name = name;
  AddPlain(std::move(row));
}

}  // namespace

const ScanTraits kFileReferenceTraits = {.name = "file-references",
                                         .title = Mark("Orphaned File/Path Reference"),
                                         .columns = kColumns,
                                         .has_progress = false,
                                         .sorts = true,
                                         .has_thorough = true,
                                         .freezes = false};

std::unique_ptr<RegistryScan> MakeFileReferences(const Machine& machine, ScanView& view) {
  return std::make_unique<FileReferences>(machine, view);
}

}  // namespace quellix
