#include "contract/contract_fixture.h"

namespace quellix {
namespace {

struct FileSystemContract : ContractFixture {
  std::map<std::string, FileInfo> Entries(std::string_view folder, Detail detail) {
    std::map<std::string, FileInfo> entries;
    EXPECT_TRUE(files_.Enumerate(folder, detail, [&](const Entry& entry) {
      entries[std::string(entry.name)] = entry.info;
      return true;
    }));
    return entries;
  }
};

TEST_F(FileSystemContract, EnumerateTellsKindsAndDetails) {
  constexpr int64_t kTime = 132'000'000'000'000'000;
  Make("file.txt", "12345");
  Make("folder\\inner.txt", "x");
  test_->MakeFolderLink(At("junction"), At("folder"));
  const bool has_file_link = test_->MakeFileLink(At("link.txt"), At("file.txt"));
  test_->SetLastWrite(At("file.txt"), kTime);
  for (const Detail detail : {Detail::kKind, Detail::kFull}) {
    SCOPED_TRACE(detail == Detail::kKind ? "kind" : "full");
    const auto entries = Entries(scratch_, detail);
    EXPECT_EQ(entries.size(), has_file_link ? 4u : 3u);
    EXPECT_FALSE(entries.at("file.txt").is_folder || entries.at("file.txt").is_link);
    EXPECT_TRUE(entries.at("folder").is_folder && !entries.at("folder").is_link);
    EXPECT_TRUE(entries.at("junction").is_folder && entries.at("junction").is_link);
    if (!has_file_link) continue;
    EXPECT_TRUE(!entries.at("link.txt").is_folder && entries.at("link.txt").is_link);
  }
  const auto entries = Entries(scratch_, Detail::kFull);
  EXPECT_EQ(entries.at("file.txt").size, 5u);
  EXPECT_EQ(entries.at("file.txt").last_write, kTime);
  EXPECT_TRUE(entries.at("folder").attributes & kFolderAttribute);
  EXPECT_TRUE(entries.at("junction").attributes & kReparsePoint);
  EXPECT_EQ(entries.at("junction").size, 0u);
  int visits = 0;
  EXPECT_TRUE(
      files_.Enumerate(scratch_, Detail::kKind, [&](const Entry&) { return ++visits < 2; }));
  EXPECT_EQ(visits, 2) << "it ends when the visitor says so";
}

TEST_F(FileSystemContract, EnumerateRefusesWhatIsNoFolder) {
  Make("file.txt", "");
  Make("target\\inner.txt", "");
  test_->MakeFolderLink(At("junction"), At("target"));
  for (const std::string& path : Names{At("missing"), At("missing\\deeper"), At("file.txt"),
                                       At("junction"), std::string("9:\\"), std::string("")}) {
    SCOPED_TRACE(path);
    EXPECT_FALSE(files_.Enumerate(path, Detail::kKind, [](const Entry&) -> bool {
      ADD_FAILURE();
      return true;
    }));
  }
}

TEST_F(FileSystemContract, ManyEntriesAreAllSeenOnce) {
  constexpr size_t kCount = 1000;
  const std::string stem(120, 'x');
  for (size_t i = 0; i < kCount; ++i) test_->MakeFile(At("many\\" + stem + std::to_string(i)), "");
  EXPECT_EQ(Entries(At("many"), Detail::kKind).size(), kCount);
}

TEST_F(FileSystemContract, NamesInEveryScriptAreFoundInAnyCaseAndRemoved) {
  // Many scripts, blanks, masks' look-alikes, full length.
  for (const std::string& name :
       Names{"plain.txt", "Großer Ärger.log", "Привет мир.tmp", "日本語.dat", "שלום.txt", "ไทย",
             "😀 smile.txt", " leading.txt", "dots...in.the.name", "[a]{b}!~'@#$%^&()",
             "noextension", std::string(251, 'n') + ".txt"}) {
    SCOPED_TRACE(name);
    test_->MakeFile(At("Folder Ä\\" + name), name);
    EXPECT_EQ(Entries(At("folder ä\\"), Detail::kKind).count(name), 1u);
    EXPECT_TRUE(files_.Look(At("FOLDER Ä\\" + name)));
    EXPECT_EQ(Content("Folder Ä\\" + name), name);
    files_.RemoveFile(At("folder ä\\" + name));
    EXPECT_TRUE(test_->Tree(At("Folder Ä")).empty());
  }
  Make("Großer ÄRGER Ключ.txt", "x");
  EXPECT_TRUE(files_.Look(At("gROßER ärger кЛЮЧ.TXT")));
  EXPECT_FALSE(files_.Look(At("grosser ärger ключ.txt")));
}

TEST_F(FileSystemContract, PathsOfFourThousandCharactersWork) {
  std::string folder = At("long");
  while (folder.size() < 3900) folder += "\\" + std::string(90, 'p');
  const std::string file = folder + "\\" + std::string(60, 'f') + ".txt";
  test_->MakeFile(file, "deep");
  EXPECT_EQ(files_.ReadWholeFile(file), "deep");
  EXPECT_EQ(Entries(folder, Detail::kFull).begin()->second.size, 4u);
  files_.SetAttributes(file, kReadOnly);
  files_.Rename(file, folder + "\\renamed");
  files_.RemoveFile(folder + "\\renamed");
  for (; folder.size() >= scratch_.size(); folder.resize(folder.rfind('\\')))
    files_.RemoveFolder(folder);
  EXPECT_TRUE(Tree().empty());
}

TEST_F(FileSystemContract, LookTellsTheEntryItself) {
  Make("target\\inner.txt", "123");
  test_->MakeFolderLink(At("junction"), At("target"));
  test_->MakeFolderLink(At("dangling"), At("nowhere"));
  EXPECT_EQ(files_.Look(At("target\\inner.txt"))->size, 3u);
  EXPECT_TRUE(files_.Look(At("target\\"))->is_folder && files_.Look(At("junction"))->is_link);
  EXPECT_TRUE(files_.Look(At("dangling"))->is_link);
  EXPECT_TRUE(files_.Look(scratch_.substr(0, 3))->is_folder);
  for (const std::string& path :
       Names{At("missing"), At("target\\inner.txt\\x"), At("target\\missing\\x"),
             At(std::string(300, 'x')), std::string("nonsense")})
    EXPECT_FALSE(files_.Look(path)) << path;
}

TEST_F(FileSystemContract, ChangesOfWhatIsNotThereSayMissing) {
  Make("to", "");
  const std::string kPaths[] = {At("missing"), At("missing\\x")};
  for (const std::string& path : kPaths) {
    SCOPED_TRACE(path);
    EXPECT_EQ(KindOf([&] { files_.RemoveFile(path); }), Error::Kind::kMissing);
    EXPECT_EQ(KindOf([&] { files_.RemoveFolder(path); }), Error::Kind::kMissing);
    EXPECT_EQ(KindOf([&] { files_.SetAttributes(path, kHidden); }), Error::Kind::kMissing);
    EXPECT_EQ(KindOf([&] { files_.Rename(path, path + "new"); }), Error::Kind::kMissing);
    EXPECT_EQ(KindOf([&] { files_.Open(path, OpenMode::kWrite); }), Error::Kind::kMissing);
    EXPECT_FALSE(files_.ReadWholeFile(path));
  }
  EXPECT_EQ(KindOf([&] { files_.WriteWholeFile(At("missing\\x"), ""); }), Error::Kind::kMissing);
}

TEST_F(FileSystemContract, FilesAndFoldersAreNotMistakenForEachOther) {
  Make("folder\\inner.txt", "x");
  Make("file", "x");
  EXPECT_EQ(KindOf([&] { files_.RemoveFolder(At("folder")); }), Error::Kind::kNotEmpty);
  EXPECT_TRUE(KindOf([&] { files_.RemoveFile(At("folder")); }));
  EXPECT_TRUE(KindOf([&] { files_.RemoveFolder(At("file")); }));
  EXPECT_TRUE(KindOf([&] { files_.Open(At("folder"), OpenMode::kWrite); }));
  EXPECT_TRUE(KindOf([&] { files_.ReadWholeFile(At("folder")); }));
  EXPECT_TRUE(KindOf([&] { files_.WriteWholeFile(At("folder"), ""); }));
  EXPECT_EQ(Tree(), (Names{"file", "folder\\", "folder\\inner.txt"}));
}

TEST_F(FileSystemContract, RemovingALinkLeavesItsTarget) {
  Make("target\\inner.txt", "kept");
  test_->MakeFolderLink(At("junction"), At("target"));
  EXPECT_TRUE(KindOf([&] { files_.RemoveFile(At("junction")); }));
  if (test_->Can(Ability::kRemoveLinks)) {
    files_.RemoveFolder(At("junction"));
    EXPECT_FALSE(files_.Look(At("junction")));
  } else {
    EXPECT_EQ(KindOf([&] { files_.RemoveFolder(At("junction")); }), Error::Kind::kDenied);
    EXPECT_EQ(KindOf([&] { files_.Rename(At("junction"), At("b")); }), Error::Kind::kDenied);
  }
  if (test_->MakeFileLink(At("link.txt"), At("target\\inner.txt"))) {
    EXPECT_TRUE(KindOf([&] { files_.Open(At("link.txt"), OpenMode::kWrite); }));
    files_.RemoveFile(At("link.txt"));
  }
  EXPECT_EQ(test_->Tree(At("target")), Names{"inner.txt"});
  EXPECT_EQ(Content("target\\inner.txt"), "kept");
}

TEST_F(FileSystemContract, WholeFilesAreReadAndReplaced) {
  const std::string binary("\0\r\n\x1A\xFF", 5);
  files_.WriteWholeFile(At("New.bin"), binary);
  EXPECT_EQ(Content("New.bin"), binary);
  files_.WriteWholeFile(At("NEW.BIN"), "");
  EXPECT_EQ(Content("new.bin"), "");
  EXPECT_EQ(Tree(), Names{"New.bin"});
  files_.WriteWholeFile(At("new.bin"), std::string(5000, 'x'));
  EXPECT_TRUE(KindOf([&] { files_.ReadWholeFile(At("new.bin"), 4999); }));
  EXPECT_EQ(files_.ReadWholeFile(At("new.bin"), 5000)->size(), 5000u);
  EXPECT_EQ(Tree().size(), 1u) << "nothing temporary is left";
}

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
