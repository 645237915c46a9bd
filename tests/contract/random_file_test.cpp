#include "contract/contract_fixture.h"

namespace quellix {
namespace {

// Files that are read and written in place, and the folders made for them.
struct RandomFileContract : ContractFixture {
  static std::string Read(RandomFile& file, uint64_t offset, size_t size) {
    std::string bytes(size, '?');
    bytes.resize(file.Read(offset, bytes));
    return bytes;
  }
  const std::string path_ = scratch_ + "file";
};

TEST_F(RandomFileContract, IsMadeWrittenReadAndResized) {
  {
    const auto file = files_.Open(path_, OpenMode::kReadAndCreate);
    EXPECT_EQ(file->Size(), 0u);
    EXPECT_EQ(Read(*file, 0, 10), "");
    file->Write(0, "0123456789");
    file->Write(12, "behind");  // the gap is zeros
    file->Write(3, "three");
    EXPECT_EQ(Read(*file, 2, 7), "2three8");
    EXPECT_EQ(Read(*file, 10, 100), std::string("\0\0behind", 8));
    file->Resize(5);
    file->Flush();
    EXPECT_EQ(Read(*file, 0, 100), "012th");
    EXPECT_EQ(Read(*file, 6, 1), "");
    file->Resize(6);
  }
  files_.Open(scratch_ + "FILE", OpenMode::kWrite)->Write(1, "I");
  EXPECT_EQ(files_.ReadWholeFile(path_), std::string("0I2th\0", 6));
  const auto again = files_.Open(path_, OpenMode::kReadAndCreate);
  EXPECT_EQ(again->Size(), 6u);
  EXPECT_EQ(Read(*again, 0, 3), "0I2");
  EXPECT_EQ(KindOf([&] { files_.Open(path_, OpenMode::kReadAndCreate); }), Error::Kind::kInUse);
}

TEST_F(RandomFileContract, ReadingNeedsAFileAndKeepsOthersFromNothing) {
  EXPECT_EQ(KindOf([&] { files_.Open(path_, OpenMode::kRead); }), Error::Kind::kMissing);
  EXPECT_FALSE(test_->Exists(path_));
  test_->MakeFile(path_, "bytes");
  files_.SetAttributes(path_, kReadOnly);
  auto file = files_.Open(path_, OpenMode::kRead);
  EXPECT_EQ(Read(*file, 1, 3), "yte");
  EXPECT_TRUE(KindOf([&] { file->Write(0, "x"); }));
  // An older Windows keeps the name with its user; then it is told.
  const auto kept = KindOf([&] { files_.RemoveFile(path_); });
  EXPECT_EQ(test_->Exists(path_), kept == Error::Kind::kInUse);
  file.reset();
  EXPECT_EQ(test_->Exists(path_), kept == Error::Kind::kInUse);
}

TEST_F(RandomFileContract, TimesAreKeptToTheStep) {
  const FileTimes times{131000000000000000, 132000000000000000, 132539328001234500};
  {
    const auto file = files_.Open(path_, OpenMode::kReadAndCreate);
    file->Write(0, "x");
    file->SetTimes(times);
  }
  const auto file = files_.Open(path_, OpenMode::kRead);
  EXPECT_EQ(file->Times().last_write, times.last_write);
  EXPECT_EQ(file->Times().last_access, times.last_access);
  EXPECT_EQ(files_.Look(path_)->last_write, times.last_write);
}

TEST_F(RandomFileContract, FoldersAreMadeWithThoseAboveThem) {
  files_.CreateFolder(scratch_ + "one");
  EXPECT_EQ(KindOf([&] { files_.CreateFolder(scratch_ + "ONE\\"); }), std::nullopt);
  EXPECT_EQ(KindOf([&] { files_.CreateFolder(scratch_ + "a\\b"); }), Error::Kind::kMissing);
  MakeFolders(files_, scratch_ + "a\\b\\c\\");
  MakeFolders(files_, scratch_ + "a\\b\\c");
  EXPECT_TRUE(files_.Look(scratch_ + "a\\b\\c")->is_folder);
  test_->MakeFile(scratch_ + "plain", "x");
  EXPECT_TRUE(KindOf([&] { files_.CreateFolder(scratch_ + "plain"); }));
  EXPECT_TRUE(KindOf([&] { MakeFolders(files_, scratch_ + "plain\\below"); }));
  test_->MakeFolderLink(scratch_ + "link", scratch_ + "one");
  EXPECT_TRUE(KindOf([&] { files_.CreateFolder(scratch_ + "link"); }));
}

}  // namespace
}  // namespace quellix
