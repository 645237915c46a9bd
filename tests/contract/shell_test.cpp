#include <gtest/gtest.h>

#include "contract/error_kind.h"
#include "support/test_machine.h"

namespace quellix {
namespace {

TEST(ShellContract, RecycledFilesAreCountedAndEmptied) {
  const auto test = TestMachine::Create();
  const Machine machine = test->machine();
  const std::string scratch = test->Scratch();
  machine.shell.EmptyRecycleBin();
  EXPECT_EQ(machine.shell.QueryRecycleBin().items, 0u);

  const std::string names[] = {"plain.txt", "no extension", "Größe Ключ.dat", "read-only.txt"};
  for (const std::string& name : names) test->MakeFile(scratch + name, "12345");
  if (test->Can(Ability::kEmptyReadOnlyFiles)) {
    machine.files.SetAttributes(scratch + "read-only.txt", kReadOnly);
  }
  for (const std::string& name : names) {
    machine.files.Recycle(scratch + name);
    EXPECT_FALSE(test->Exists(scratch + name)) << name;
  }
  EXPECT_EQ(machine.shell.QueryRecycleBin().items, std::size(names));
  EXPECT_EQ(machine.shell.QueryRecycleBin().bytes, 5 * std::size(names));

  machine.shell.EmptyRecycleBin();
  EXPECT_EQ(machine.shell.QueryRecycleBin().items, 0u);
  EXPECT_EQ(machine.shell.QueryRecycleBin().bytes, 0u);
  EXPECT_NO_THROW(machine.shell.EmptyRecycleBin()) << "an empty bin is no error";
}

TEST(ShellContract, AFileThatCannotBeRecycledStays) {
  const auto test = TestMachine::Create();
  const Machine machine = test->machine();
  const std::string file = test->Scratch() + "locked\\file.txt";
  test->MakeFile(file, "kept");
  machine.shell.EmptyRecycleBin();
  EXPECT_TRUE(KindOf([&] { machine.files.Recycle(test->Scratch() + "missing"); }));
  {
    const auto lock = test->LockFile(file);
    EXPECT_TRUE(KindOf([&] { machine.files.Recycle(file); }));
  }
  EXPECT_EQ(machine.files.ReadWholeFile(file), "kept");
  EXPECT_EQ(machine.shell.QueryRecycleBin().items, 0u);
}

}  // namespace
}  // namespace quellix
