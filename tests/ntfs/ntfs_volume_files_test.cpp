#include <sys/stat.h>
#include <unistd.h>

#include "contract/error_kind.h"
#include "ntfs/ntfs_volume.h"
#include "support/jump_list_bytes.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

// 2016 and later, each with steps of 100 ns.
constexpr FileTimes kTimes{131000000001234567, 132000000007654321, 132539328001234567};

struct NtfsFiles : testing::Test {
  static void SetUpTestSuite() {
    if (NtfsVolume::Hindrance().empty()) volume_ = std::make_unique<NtfsVolume>();
  }
  static void TearDownTestSuite() { volume_.reset(); }
  void SetUp() override {
    if (!volume_) GTEST_SKIP() << NtfsVolume::Hindrance();
    folder_.emplace();
    Open();
  }
  void Open() {
    files_.emplace(std::map<char, std::string>{{'C', folder_->path()}});
    root_ = files_->OpenFolder("C:\\");
  }
  // The system forgets what it knew of the disk.
  void Remount() {
    root_.reset();
    files_.reset();
    volume_->Remount("rw");
    Open();
  }
  std::string Native(const std::string& name) const { return folder_->path() + "/" + name; }
  void Put(const std::string& name, const std::string& bytes = "x") {
    fs::create_directories(fs::path(Native(name)).parent_path());
    WriteNative(Native(name), bytes);
  }
  std::unique_ptr<RandomFile> Open(std::string_view name,
                                   OpenMode mode = OpenMode::kReadAndCreate) {
    return root_->Open(name, mode);
  }

  static std::unique_ptr<NtfsVolume> volume_;
  std::optional<TemporaryFolder> folder_;
  std::optional<VolumeFileSystem> files_;
  std::unique_ptr<Folder> root_;
};
std::unique_ptr<NtfsVolume> NtfsFiles::volume_;

TEST_F(NtfsFiles, AReplacedFileKeepsWhatNtfsKeepsOfIt) {
  const std::pair<const char*, std::function<void()>> kRows[] = {
      {"a file", [this] { files_->WriteWholeFile("C:\\NTUSER.dat", "new"); }},
      {"a hive", [this] {
         HivePaths paths;
         paths.user = "C:\\NTUSER.DAT";
         VolumeRegistry registry(*files_, paths);
         registry.Create(RegistryRoot::kCurrentUser, "Key")->Flush();
         registry.Create(RegistryRoot::kCurrentUser, "Another key")->Flush();
         registry.CloseHives();
       }}};
  for (const auto& [what, replace] : kRows) {
    SCOPED_TRACE(what);
    Put("NTUSER.DAT", EmptyHive());
    const std::string bits = Little(kHidden | kSystem | kReadOnly, 4),
                      created = Little(kTimes.created, 8);
    const std::string file = Native("NTUSER.DAT");
    std::string acl = NtfsAttribute(file, "system.ntfs_acl");
    ASSERT_EQ(acl.size(), 80u);
    acl.replace(64, 4, Little(0x1200A9, 4));  // everyone may read, no more
    SetNtfsAttribute(file, "system.ntfs_acl", acl);
    SetNtfsAttribute(file, "system.ntfs_crtime", created);
    SetNtfsAttribute(file, "system.ntfs_dos_name", "NTUSE~7.DAT");
    SetNtfsAttribute(file, "user.Zone.Identifier", "[ZoneTransfer]");
    SetNtfsAttribute(file, "system.ntfs_attrib", bits);
    replace();
    EXPECT_NE(ReadNative(file), EmptyHive());
    EXPECT_EQ(NtfsAttribute(file, "system.ntfs_acl"), acl);
    EXPECT_EQ(NtfsAttribute(file, "system.ntfs_attrib"), bits);
    EXPECT_EQ(NtfsAttribute(file, "system.ntfs_crtime"), created);
    EXPECT_EQ(NtfsAttribute(file, "system.ntfs_dos_name"), "NTUSE~7.DAT");
    EXPECT_EQ(NtfsAttribute(file, "user.Zone.Identifier"), "[ZoneTransfer]");
    fs::remove(file);
    EXPECT_TRUE(fs::is_empty(folder_->path())) << "nothing temporary is left";
  }
}

TEST_F(NtfsFiles, AttributesAreThoseOfTheDiskAndKeepNobodyFromRemoving) {
  for (const uint32_t bits : {kReadOnly | kHidden, kSystem | kReadOnly | kArchive, kHidden + 0u}) {
    SCOPED_TRACE(bits);
    Put("file", "a system file of one byte is a socket to ntfs-3g");
    const std::string acl = NtfsAttribute(Native("file"), "system.ntfs_acl");
    root_->SetAttributes("FILE", bits);
    EXPECT_EQ(NtfsAttribute(Native("file"), "system.ntfs_attrib"), Little(bits, 4));
    EXPECT_EQ(root_->Look("file")->attributes, bits);
    EXPECT_EQ(Open("file", OpenMode::kRead)->Attributes(), bits);
    Open("file", OpenMode::kRead)->SetAttributes(kArchive);
    EXPECT_EQ(root_->Look("file")->attributes, uint32_t{kArchive});
    EXPECT_EQ(NtfsAttribute(Native("file"), "system.ntfs_acl"), acl);
    root_->SetAttributes("file", bits);
    root_->RemoveFile("file");
    EXPECT_FALSE(fs::exists(Native("file")));
  }
}

// Asked of the disk: what the system remembers of few files is what it was told.
TEST_F(NtfsFiles, TimesAreKeptToTheStep) {
  {
    const auto file = Open("new", OpenMode::kCreateNew);
    file->Write(0, "x");
    file->SetTimes(kTimes);
    file->Flush();
    root_->Rename("new", "file", IfThere::kFail);
  }
  EXPECT_EQ(
      NtfsAttribute(Native("file"), "system.ntfs_times").substr(0, 24),
      Little(kTimes.created, 8) + Little(kTimes.last_write, 8) + Little(kTimes.last_access, 8));
  Remount();
  const FileTimes times = Open("file", OpenMode::kRead)->Times();
  EXPECT_EQ(times.created, kTimes.created);
  EXPECT_EQ(times.last_write, kTimes.last_write);
}

TEST_F(NtfsFiles, StreamsAreListedReadAndWritten) {
  Put("file");
  EXPECT_TRUE(Open("file")->Streams().empty());
  const std::string large(60'000, 's'), binary("\0\1\xFF", 3);
  Open("file")->WriteStream("Zone.Identifier", "old");
  Open("file")->WriteStream("Zone.Identifier", large);
  Open("file")->WriteStream("b", binary);
  EXPECT_EQ(NtfsAttribute(Native("file"), "user.b"), binary);
  const auto file = Open("file", OpenMode::kRead);
  std::map<std::string, uint64_t> sizes;
  for (const StreamInfo& stream : file->Streams()) sizes[stream.name] = stream.size;
  EXPECT_EQ(sizes, (std::map<std::string, uint64_t>{{"Zone.Identifier", large.size()}, {"b", 3}}));
  EXPECT_EQ(file->ReadStream("Zone.Identifier"), large);
  EXPECT_EQ(file->ReadStream("b"), binary);
  EXPECT_EQ(KindOf([&] { file->ReadStream("none"); }), Error::Kind::kMissing);
  EXPECT_EQ(KindOf([&] { Open("file")->WriteStream("c", std::string(70'000, 's')); }),
            Error::Kind::kNotAvailable);
}

TEST_F(NtfsFiles, AShortNameIsNoFurtherLink) {
  const std::tuple<const char*, const char*, const char*, bool, uint32_t> kRows[] = {
      {"plain", "plain", "", false, 1},
      {"short name", "a long name.text", "ALONGN~1.TEX", false, 1},
      {"own name as short name", "SHORT.TXT", "SHORT.TXT", false, 1},
      {"link", "linked", "", true, 2}};
  for (const auto& [what, name, short_name, link, links] : kRows) {
    SCOPED_TRACE(what);
    Put(name);
    if (*short_name) SetNtfsAttribute(Native(name), "system.ntfs_dos_name", short_name);
    if (link) fs::create_hard_link(Native(name), Native("other"));
    EXPECT_EQ(Open(name, OpenMode::kRead)->LinkCount(), links);
    if (*short_name == '\0') continue;
    EXPECT_EQ(root_->IdOf(short_name), root_->IdOf(name)) << "the same file by both";
  }
  Put("A long folder/file");
  SetNtfsAttribute(Native("A long folder"), "system.ntfs_dos_name", "ALONGF~1");
  EXPECT_EQ(files_->OpenFolder("C:\\ALONGF~1")->Id(),
            files_->OpenFolder("C:\\a long folder")->Id());
}

TEST_F(NtfsFiles, OnlyWhatIsAllocatedOfASparseFileIsTold) {
  constexpr uint64_t kFirst = 10 << 20, kSecond = 100 << 20;
  {
    const auto file = Open("sparse", OpenMode::kCreateNew);
    file->Resize(200 << 20);
    EXPECT_TRUE(Open("sparse", OpenMode::kRead)->Allocated().empty());
    file->Write(kFirst, "secret");
    file->Write(kSecond, std::string(10'000, 's'));
  }
  const auto file = Open("sparse", OpenMode::kRead);
  EXPECT_NE(file->Attributes() & kSparse, 0u);
  uint64_t told = 0, held = 0;
  for (const Extent& extent : file->Allocated()) {
    told += extent.size;
    for (const uint64_t at : {kFirst, kSecond, kSecond + 9'999})
      held += at >= extent.offset && at < extent.offset + extent.size;
  }
  EXPECT_EQ(held, 3u) << "nothing that was written is missing";
  EXPECT_LE(told, 64u << 10);
  Put("plain", std::string(10'000, '\0'));
  const auto plain = Open("plain", OpenMode::kRead)->Allocated();
  ASSERT_EQ(plain.size(), 1u);
  EXPECT_EQ(plain[0].size, 10'000u) << "zeros that take room";
}

TEST_F(NtfsFiles, JunctionsAreRemovedThemselvesAndLeadNowhere) {
  Put("outside/kept");
  const std::string name = fs::path(folder_->path()).filename().string();
  MakeJunction(Native("junction"), "C:\\" + name + "\\outside");
  MakeJunction(Native("dangling"), "C:\\nowhere");
  Remount();
  ASSERT_TRUE(fs::exists(Native("junction/kept"))) << "a junction that leads somewhere";
  for (const char* link : {"junction", "dangling"}) {
    SCOPED_TRACE(link);
    EXPECT_TRUE(root_->Look(link)->is_link && root_->Look(link)->is_folder);
    EXPECT_EQ(KindOf([&] { root_->OpenFolder(link); }), Error::Kind::kDenied);
    EXPECT_TRUE(KindOf([&] { root_->RemoveFile(link); }));
    EXPECT_TRUE(KindOf([&] { root_->CreateFolder(link); }));
    EXPECT_TRUE(KindOf([&] { Open(link, OpenMode::kRead); }));
    root_->RemoveFolder(link);
    EXPECT_FALSE(root_->Look(link));
  }
  EXPECT_TRUE(fs::exists(Native("outside/kept")));
}

}  // namespace
}  // namespace quellix
