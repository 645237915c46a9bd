#include "contract/contract_fixture.h"

namespace quellix {
namespace {

struct ShellContract : ContractFixture {
  Shell& shell_ = machine_.shell;
};

TEST_F(ShellContract, RecycledFilesAreCountedAndEmptied) {
  shell_.EmptyRecycleBin();
  EXPECT_EQ(shell_.QueryRecycleBin().items, 0u);

  const std::string names[] = {"plain.txt", "no extension", "Größe Ключ.dat", "read-only.txt"};
  for (const std::string& name : names) test_->MakeFile(scratch_ + name, "12345");
  if (test_->Can(Ability::kEmptyReadOnlyFiles)) {
    files_.SetAttributes(scratch_ + "read-only.txt", kReadOnly);
  }
  for (const std::string& name : names) {
    files_.Recycle(scratch_ + name);
    EXPECT_FALSE(test_->Exists(scratch_ + name)) << name;
  }
  EXPECT_EQ(shell_.QueryRecycleBin().items, std::size(names));
  EXPECT_EQ(shell_.QueryRecycleBin().bytes, 5 * std::size(names));

  shell_.EmptyRecycleBin();
  EXPECT_EQ(shell_.QueryRecycleBin().items, 0u);
  EXPECT_EQ(shell_.QueryRecycleBin().bytes, 0u);
  EXPECT_NO_THROW(shell_.EmptyRecycleBin()) << "an empty bin is no error";
}

TEST_F(ShellContract, AFileThatCannotBeRecycledStays) {
  const std::string file = scratch_ + "locked\\file.txt";
  test_->MakeFile(file, "kept");
  shell_.EmptyRecycleBin();
  EXPECT_TRUE(KindOf([&] { files_.Recycle(scratch_ + "missing"); }));
  {
    const auto lock = test_->LockFile(file);
    EXPECT_TRUE(KindOf([&] { files_.Recycle(file); }));
  }
  EXPECT_EQ(files_.ReadWholeFile(file), "kept");
  EXPECT_EQ(shell_.QueryRecycleBin().items, 0u);
}

}  // namespace
}  // namespace quellix
