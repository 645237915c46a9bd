#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "contract/error_kind.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

struct VolumeFiles : testing::Test {
  void Put(const std::string& name, const std::string& bytes = "x") {
    fs::create_directories(fs::path(Native(name)).parent_path());
    WriteNative(Native(name), bytes);
  }
  std::string Native(const std::string& name) const { return folder_.path() + "/" + name; }
  Names NamesIn(std::string_view folder) {
    Names names;
    files_.Enumerate(folder, Detail::kKind, [&names](const Entry& entry) {
      names.emplace_back(entry.name);
      return true;
    });
    std::sort(names.begin(), names.end());
    return names;
  }
  uint32_t Attributes(std::string_view path) { return files_.Look(path).value().attributes; }

  TemporaryFolder folder_;
  VolumeFileSystem files_{{{'C', folder_.path()}}};
};

TEST_F(VolumeFiles, NamesThatDifferInCaseAloneStayDistinct) {
  Put("Temp/a.txt", "lower");
  Put("Temp/A.TXT", "upper");
  Put("temp/b.txt", "other folder");
  EXPECT_EQ(files_.ReadWholeFile("C:\\Temp\\a.txt"), "lower");
  EXPECT_EQ(files_.ReadWholeFile("C:\\Temp\\A.TXT"), "upper");
  EXPECT_EQ(files_.ReadWholeFile("C:\\temp\\b.txt"), "other folder");
  EXPECT_FALSE(files_.Look("C:\\Temp\\b.txt"));
  files_.RemoveFile("C:\\Temp\\A.TXT");
  EXPECT_EQ(files_.ReadWholeFile("C:\\Temp\\a.txt"), "lower");
}

TEST_F(VolumeFiles, AFolderFoundInAnotherCaseIsNotTakenForItsSuccessor) {
  Put("Temp/Sub/a.txt", "old");
  EXPECT_EQ(files_.ReadWholeFile("C:\\TEMP\\SUB\\a.txt"), "old");
  fs::rename(Native("Temp"), Native("elsewhere"));
  EXPECT_FALSE(files_.Look("C:\\TEMP\\SUB\\a.txt"));
  Put("temP/suB/a.txt", "new");
  EXPECT_EQ(files_.ReadWholeFile("C:\\TEMP\\SUB\\a.txt"), "new");
  EXPECT_EQ(files_.ReadWholeFile("C:\\Elsewhere\\SUB\\A.TXT"), "old");
}

TEST_F(VolumeFiles, NamesWindowsCannotHaveAreNeverTakenForOthers) {
  Put("Temp/a\\b", "odd");
  Put("Temp/a/b", "even");
  Put("Temp/what?", "");
  Put("Temp/a:b", "");
  EXPECT_EQ(NamesIn("C:\\Temp"), Names{"a"});
  EXPECT_EQ(files_.ReadWholeFile("C:\\Temp\\a\\b"), "even");
  EXPECT_TRUE(KindOf([this] { files_.WriteWholeFile("C:\\Temp\\new?", ""); }));
}

TEST_F(VolumeFiles, PathsCannotClimbOut) {
  Put("inside/a.txt");
  const std::string own = fs::path(folder_.path()).filename().string();
  const std::string kPaths[] = {"C:\\inside\\..\\inside\\a.txt",
                                "C:\\inside\\.\\a.txt",
                                "C:\\..\\" + own + "\\inside",
                                "C:\\..",
                                "C:\\inside/a.txt",
                                "C:inside\\a.txt",
                                std::string("C:\\inside\\a.txt\0x", 17)};
  for (const std::string& path : kPaths) {
    SCOPED_TRACE(path);
    EXPECT_FALSE(files_.Look(path));
    EXPECT_TRUE(KindOf([&] { files_.RemoveFile(path); }));
    EXPECT_TRUE(KindOf([&] { files_.WriteWholeFile(path, ""); }));
  }
  EXPECT_EQ(NamesIn("C:\\inside"), Names{"a.txt"});
  EXPECT_TRUE(files_.Look("c:\\inside\\\\a.txt")) << "a doubled separator is one, as on Windows";
}

TEST_F(VolumeFiles, ALinkOnTheWayIsNotFollowed) {
  TemporaryFolder outside;
  WriteNative(outside.path() + "/a.txt", "kept");
  fs::create_directory_symlink(outside.path(), Native("link"));
  fs::create_symlink(outside.path() + "/a.txt", Native("file"));
  fs::create_symlink("nowhere", Native("dangling"));
  Put("inside/b.txt");
  fs::create_directory_symlink("inside", Native("near"));
  EXPECT_FALSE(files_.Look("C:\\near\\b.txt"));
  EXPECT_EQ(KindOf([this] { files_.OpenFolder("C:\\near"); }), Error::Kind::kDenied);
  EXPECT_FALSE(files_.Look("C:\\link\\a.txt"));
  EXPECT_FALSE(files_.Look("C:\\LINK\\a.txt")) << "nor when it is searched for";
  EXPECT_EQ(KindOf([this] { files_.RemoveFile("C:\\link\\a.txt"); }), Error::Kind::kDenied);
  EXPECT_EQ(KindOf([this] { files_.ReadWholeFile("C:\\file"); }), Error::Kind::kDenied);
  EXPECT_EQ(KindOf([this] { files_.WriteWholeFile("C:\\link\\b", ""); }), Error::Kind::kDenied);
  files_.RemoveFile("C:\\dangling");
  files_.SetAttributes("C:\\file", kReadOnly);
  files_.WriteWholeFile("C:\\file", "takes the link's place");
  EXPECT_EQ(ReadNative(outside.path() + "/a.txt"), "kept");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(Native("file"))));
}

// What is mounted in a folder, or put into its place, is not what was meant.
TEST_F(VolumeFiles, NeitherADiskNorAnotherFolderIsTakenForTheOneThatWasOpened) {
  Put("Temp/Sub/1");
  Put("Temp/disk/kept");
  const auto sub = files_.OpenFolder("C:\\Temp\\SUB");
  const FileId id = sub->Id();
  fs::rename(Native("Temp/Sub"), Native("moved"));
  Put("Temp/Sub/2", "kept");
  sub->RemoveFile("1");
  EXPECT_EQ(KindOf([&] { sub->RemoveFile("2"); }), Error::Kind::kMissing);
  EXPECT_NE(files_.OpenFolder("C:\\Temp\\Sub")->Id(), id);
  EXPECT_EQ(files_.OpenFolder("C:\\moved")->Id(), id);
  EXPECT_EQ(sub->Above(), files_.OpenFolder("C:\\moved")->Above()) << "as it is now";
  fs::remove_all(Native("moved"));
  EXPECT_EQ(KindOf([&] { sub->Above(); }), Error::Kind::kMissing) << "it lies nowhere";
  const std::string disk = Native("Temp/disk");
  if (mount(disk.c_str(), disk.c_str(), "tmpfs", 0, "") != 0) GTEST_SKIP() << "only root can mount";
  EXPECT_TRUE(files_.OpenFolder("C:\\Temp\\disk")) << "by its path alone";
  EXPECT_EQ(KindOf([&] { files_.OpenFolder("C:\\Temp")->OpenFolder("disk"); }),
            Error::Kind::kDenied);
  EXPECT_TRUE(KindOf([&] { files_.RemoveFolder("C:\\Temp\\disk"); }));
  umount(disk.c_str());
}

// The folder is searched once for all names that are missing, and known again after own changes.
TEST_F(VolumeFiles, NamesAreFoundInAnyCaseWhateverHappensMeanwhile) {
  Put("Temp/First", "1");
  const auto folder = files_.OpenFolder("C:\\temp");
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(folder->Look("new" + std::to_string(i)));
  EXPECT_EQ(KindOf([&] { folder->Open("FIRST", OpenMode::kCreateNew); }), Error::Kind::kExists);
  folder->Open("Second", OpenMode::kCreateNew);
  EXPECT_EQ(KindOf([&] { folder->Open("SECOND", OpenMode::kCreateNew); }), Error::Kind::kExists);
  folder->Rename("second", "Third", IfThere::kFail);
  EXPECT_TRUE(folder->Look("THIRD") && !folder->Look("SECOND"));
  folder->Rename("THIRD", "first", IfThere::kReplace);
  EXPECT_EQ(NamesIn("C:\\Temp"), Names{"First"});
  EXPECT_EQ(ReadNative(Native("Temp/First")), "");
  const auto time = fs::last_write_time(Native("Temp"));
  fs::rename(Native("Temp/First"), Native("Temp/Fourth"));
  fs::last_write_time(Native("Temp"), time);  // as some programs do
  EXPECT_TRUE(folder->Look("FOURTH") && !folder->Look("FIRST"));
  folder->CreateFolder("Fifth");
  EXPECT_TRUE(folder->OpenFolder("FIFTH"));
  EXPECT_EQ(KindOf([&] { folder->Rename("fourth", "fifth", IfThere::kReplace); }),
            Error::Kind::kExists);
}

TEST_F(VolumeFiles, PipesAreRemovedButNeverOpened) {
  ASSERT_EQ(mkfifo(Native("pipe").c_str(), 0600), 0);
  EXPECT_TRUE(KindOf([this] { files_.ReadWholeFile("C:\\pipe"); }));
  EXPECT_TRUE(KindOf([this] { files_.Open("C:\\pipe", OpenMode::kWrite); }));
  files_.RemoveFile("C:\\pipe");
  EXPECT_TRUE(NamesIn("C:\\").empty());
}

bool SetAttribute(const std::string& file, const std::string& bytes) {
  return setxattr(file.c_str(), "user.DOSATTRIB", bytes.data(), bytes.size(), 0) == 0;
}

std::string GetAttribute(const std::string& file) {
  char buffer[64];
  const ssize_t size = getxattr(file.c_str(), "user.DOSATTRIB", buffer, sizeof buffer);
  return size < 0 ? "(none)" : std::string(buffer, static_cast<size_t>(size));
}

TEST_F(VolumeFiles, AttributesComeFromWhereTheyAreKept) {
  Put("file");
  const std::string file = Native("file");
  const auto set = [&file](const std::string& bytes) { return SetAttribute(file, bytes); };
  const auto get = [&file] { return GetAttribute(file); };
  if (!set("0x22")) GTEST_SKIP() << "the disk of the temporary folder has no extended attributes";
  std::string binary(20, '\0');
  binary[2] = binary[4] = 3;
  binary[12] = 0x27;
  const std::tuple<const char*, std::string, uint32_t> kRows[] = {
      {"text", "0x22", kArchive | kHidden},
      {"text with its NUL", std::string("0x6\0", 4), kHidden | kSystem},
      {"binary", binary, kArchive | kSystem | kHidden | kReadOnly},
      {"neither", "nonsense", 0},
      {"empty", "", 0},
      {"short binary", binary.substr(0, 13), 0}};
  for (const auto& [what, stored, attributes] : kRows) {
    SCOPED_TRACE(what);
    ASSERT_TRUE(set(stored));
    EXPECT_EQ(Attributes("C:\\file"), attributes);
  }
  ASSERT_TRUE(set(binary));
  files_.SetAttributes("C:\\file", kHidden);
  binary[8] = 1;
  binary[12] = kHidden;
  EXPECT_EQ(get(), binary) << "the form that is there is kept";
  ASSERT_TRUE(set("0x823"));
  files_.SetAttributes("C:\\file", kNormal);
  EXPECT_EQ(get(), "0x800") << "bits nobody can set are kept";
  EXPECT_EQ(removexattr(file.c_str(), "user.DOSATTRIB"), 0);
  files_.SetAttributes("C:\\file", kReadOnly);
  EXPECT_EQ(get(), "(none)") << "read-only needs none";
  EXPECT_EQ(fs::status(file).permissions() & fs::perms::owner_write, fs::perms::none);
  EXPECT_EQ(Attributes("C:\\file"), uint32_t{kReadOnly});
  files_.SetAttributes("C:\\file", kReadOnly | kHidden);
  EXPECT_EQ(get(), "0x3");
}

TEST_F(VolumeFiles, ReplacingAFileKeepsItsModeAndAttributes) {
  Put("file", "old");
  ASSERT_EQ(chmod(Native("file").c_str(), 0640), 0);
  files_.SetAttributes("C:\\file", kHidden);
  const uint32_t before = Attributes("C:\\file");
  files_.WriteWholeFile("C:\\FILE", "new");
  EXPECT_EQ(ReadNative(Native("file")), "new");
  EXPECT_EQ(Attributes("C:\\file"), before);
  EXPECT_EQ(static_cast<int>(fs::status(Native("file")).permissions()), 0640);
  fs::create_hard_link(Native("file"), Native("second"));
  files_.OpenFolder("C:\\")->Rename("second", "file", IfThere::kReplace);
  EXPECT_EQ(NamesIn("C:\\"), Names{"file"}) << "one file by two names";
}

// A disk of 64 KB, where the system lets us have one.
struct FullDisk : VolumeFiles {
  void SetUp() override {
    fs::create_directory(Native("disk"));
    mounted_ = mount("quellix", Native("disk").c_str(), "tmpfs", 0, "size=64k") == 0;
    if (!mounted_) GTEST_SKIP() << "only root can mount a small disk";
    files_ = VolumeFileSystem({{'D', Native("disk")}});
  }
  void TearDown() override {
    files_ = VolumeFileSystem({});
    if (mounted_) umount(Native("disk").c_str());
  }

  bool mounted_ = false;
};

TEST_F(FullDisk, TheOldFileStays) {
  files_.WriteWholeFile("D:\\Settings.ini", "old");
  const std::string large(100 << 10, 'x');
  EXPECT_EQ(KindOf([&] { files_.WriteWholeFile("D:\\Settings.ini", large); }), Error::Kind::kFull);
  EXPECT_EQ(files_.ReadWholeFile("D:\\Settings.ini"), "old");
  EXPECT_EQ(NamesIn("D:\\"), Names{"Settings.ini"});
}

TEST_F(FullDisk, TheOldHiveStays) {
  Put("disk/HIVE", EmptyHive());
  HivePaths paths;
  paths.user = "D:\\HIVE";
  {
    VolumeRegistry registry(files_, paths);
    registry.CreateKey(RegistryRoot::kCurrentUser, "Key");
    const auto key = registry.Open(RegistryRoot::kCurrentUser, "Key", RegistryAccess::kWrite);
    key->SetValue("large", {kRegBinary, std::string(90 << 10, 'x')});
    EXPECT_EQ(KindOf([&] { key->Flush(); }), Error::Kind::kFull);
  }
  EXPECT_EQ(ReadNative(Native("disk/HIVE")), EmptyHive());
  EXPECT_EQ(NamesIn("D:\\"), Names{"HIVE"});
}

}  // namespace
}  // namespace quellix
