#include <algorithm>

#include "app/options.h"
#include "app/tips.h"
#include "platform/error.h"
#include "support/forwarding_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

[[noreturn]] void Deny(std::string_view name) {
  throw Error(Error::Kind::kDenied, "Access is denied: " + std::string(name));
}

// Nothing in it can be changed, as in Program Files without an administrator's rights.
class ReadOnlyFolder : public ForwardingFolder {
 public:
  using ForwardingFolder::ForwardingFolder;
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
    if (mode != OpenMode::kRead) Deny(name);
    return ForwardingFolder::Open(name, mode);
  }
  void CreateFolder(std::string_view name) override { Deny(name); }
  void Rename(std::string_view from, std::string_view, IfThere) override { Deny(from); }
  void RemoveFile(std::string_view name) override { Deny(name); }
  void RemoveFolder(std::string_view name) override { Deny(name); }
  void Recycle(std::string_view name) override { Deny(name); }
  void SetAttributes(std::string_view name, uint32_t) override { Deny(name); }
};

// One folder and all below it are so.
class ReadOnlyFiles : public ForwardingFiles {
 public:
  ReadOnlyFiles(FileSystem& files, std::string_view folder)
      : ForwardingFiles(files,
                        [this](const std::string& path, std::unique_ptr<Folder> inner) {
                          if (!IsBelow(path)) return inner;
                          return std::unique_ptr<Folder>(new ReadOnlyFolder(std::move(inner)));
                        }),
        folder_(UpCase(folder) + "\\") {}

  void WriteWholeFile(std::string_view path, std::string_view bytes) override {
    if (IsBelow(path)) Deny(path);
    ForwardingFiles::WriteWholeFile(path, bytes);
  }

 private:
  bool IsBelow(std::string_view path) const { return UpCase(path).starts_with(folder_); }

  std::string folder_;
};

class ReadOnlyFolderTest : public RunFixture {
 protected:
  ReadOnlyFolderTest() {
    WriteSettings("[General]\r\nTipBox=1\r\nRename=1\r\n");
    machine->MakeFile(ports.program_folder + "\\UDFI.txt", "C:\\a.txt\r\n");
    machine->MakeFile(ports.program_folder + "\\tips.txt", "one\r\n");
    machine->MakeFile(ports.program_folder + "\\chkItems.txt", "1\r\n");
  }
  std::vector<std::string> FolderWithBytes() {
    std::vector<std::string> all;
    for (const std::string& name : machine->Tree(ports.program_folder)) {
      all.push_back(name + ": " + ReadProgramFile(name));
    }
    return all;
  }

  ReadOnlyFiles files_{ports.files, ports.program_folder};
  IniFiles profile_{files_, ports.system};
  Machine denied_{files_,   ports.registry, ports.shell,   ports.url_cache,
                  profile_, ports.system,   ports.session, ports.program_folder};
  Engine own_{denied_, view};
};

TEST_F(ReadOnlyFolderTest, ARunCleansAndTellsThatItsTimeIsNotStored) {
  const std::vector<std::string> before = FolderWithBytes();
  Tips tips(denied_);
  EXPECT_EQ(own_.Load(&tips), "");
  machine->MakeFile(temp + "junk.tmp", "12345");
  own_.selection().SetChecked(*FindItem("CleanTempFiles"), true);
  own_.selection().SetChecked(*FindItem("CleanRecycleBin"), false);
  own_.RunCleaning();
  EXPECT_FALSE(machine->Exists(temp + "junk.tmp"));
  ASSERT_TRUE(view.report);
  EXPECT_NE(view.report->log.find("The time of this run could not be saved. Access is denied"),
            std::string::npos)
      << view.report->log;
  EXPECT_TRUE(view.criticals.empty());
  EXPECT_THROW(own_.Save(), Error);
  EXPECT_EQ(FolderWithBytes(), before);
}

TEST_F(ReadOnlyFolderTest, TheOptionsTellEachFileTheyCannotWrite) {
  const std::vector<std::string> before = FolderWithBytes();
  Options options(denied_);
  EXPECT_EQ(options.Problems(), "");
  options.general.tip_box = false;
  EXPECT_EQ(options.lists[4].Add("C:\\b.txt", ""), "");
  for (int attempt = 0; attempt < 2; ++attempt) {
    const std::string problems = options.Save();
    for (const char* part : {"The settings could not be saved. Access is denied",
                             "The search options could not be saved. Access is denied",
                             "User-defined files could not be saved. Access is denied"}) {
      EXPECT_NE(problems.find(part), std::string::npos) << problems;
    }
    EXPECT_EQ(std::ranges::count(problems, '\n'), 3) << problems;
    EXPECT_EQ(FolderWithBytes(), before);
  }
  EXPECT_TRUE(options.lists[4].changed());
}

}  // namespace
}  // namespace quellix
