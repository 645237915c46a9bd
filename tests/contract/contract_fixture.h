#pragma once

#include "contract/error_kind.h"
#include "support/test_machine.h"

namespace quellix {

inline constexpr auto kUser = RegistryRoot::kCurrentUser;
inline constexpr auto kRead = RegistryAccess::kRead;
inline constexpr auto kWrite = RegistryAccess::kWrite;

// Sorted.
inline Names NamesIn(Folder& folder) {
  Names names;
  folder.Enumerate(Detail::kKind, [&](const Entry& entry) {
    names.emplace_back(entry.name);
    return true;
  });
  std::ranges::sort(names);
  return names;
}

// A machine, and what is in its scratch folder, by names.
struct ContractFixture : testing::Test {
  std::string At(std::string_view name) const { return scratch_ + std::string(name); }
  void Make(std::string_view name, std::string_view bytes) { test_->MakeFile(At(name), bytes); }
  std::string Content(std::string_view name) {
    return files_.ReadWholeFile(At(name)).value_or("(missing)");
  }
  Names Tree() { return test_->Tree(scratch_); }

  std::unique_ptr<TestMachine> test_ = TestMachine::Create();
  Machine machine_ = test_->machine();
  FileSystem& files_ = machine_.files;
  const std::string scratch_ = test_->Scratch();
};

}  // namespace quellix
