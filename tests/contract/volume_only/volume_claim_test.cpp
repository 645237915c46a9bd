// What a run on a volume asks the system beforehand, and the processes of several runs.
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <csignal>

#include "platform/volume/mounted_disk.h"
#include "platform/volume/ntfs_state.h"
#include "platform/volume/processes.h"
#include "platform/volume/volume_claim.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

TEST(DevicesBelowTest, PartitionsMappersAndLoopsAreFollowedToTheirDisks) {
  const TemporaryFolder sys;
  const fs::path root = sys.path(), devices = root / "devices", block = root / "dev/block";
  fs::create_directories(block);
  for (const char* disk : {"sda/sda3", "loop0/loop0p1", "cciss!c0d0/cciss!c0d0p1"}) {
    fs::create_directories(devices / disk);
    WriteNative((devices / disk / "partition").string(), "1");
  }
  for (const char* mapped : {"dm-0/slaves", "dm-1/slaves"})
    fs::create_directories(devices / mapped);
  fs::create_directory_symlink(devices / "dm-1", devices / "dm-0/slaves/dm-1");
  fs::create_directory_symlink(devices / "sda/sda3", devices / "dm-1/slaves/sda3");
  fs::create_directory_symlink(devices / "dm-0", devices / "dm-1/slaves/dm-0");
  const std::tuple<const char*, dev_t, std::string, std::vector<std::string>> kRows[] = {
      {"a disk", makedev(8, 0), "sda", {}},
      {"a partition", makedev(8, 3), "sda/sda3", {"/dev/sda!"}},
      {"a partition of a loop", makedev(259, 0), "loop0/loop0p1", {"/dev/loop0!"}},
      {"a name with /", makedev(72, 1), "cciss!c0d0/cciss!c0d0p1", {"/dev/cciss/c0d0!"}},
      {"none", makedev(1, 1), "none", {}}};
  for (const auto& [row, device, place, expected] : kRows) {
    SCOPED_TRACE(row);
    const std::string number = std::to_string(major(device)) + ":" + std::to_string(minor(device));
    fs::create_directory_symlink(devices / place, block / number);
    std::vector<std::string> found;
    for (const DeviceBelow& below : DevicesBelow(device, sys.path()))
      found.push_back(below.file + (below.is_whole_disk ? "!" : ""));
    EXPECT_EQ(found, expected);
  }
  fs::create_directory_symlink(devices / "dm-0", block / "253:0");  // a ring, too
  const std::vector<DeviceBelow> mapped = DevicesBelow(makedev(253, 0), sys.path());
  EXPECT_TRUE(std::ranges::any_of(mapped, [](const DeviceBelow& below) {
    return below.file == "/dev/sda" && below.is_whole_disk;
  }));
}

// Root works as somebody else while this lives.
struct WithoutRights {
  WithoutRights() {
    if (getuid() == 0 && seteuid(65534) != 0) throw std::runtime_error("seteuid");
  }
  ~WithoutRights() {
    if (getuid() == 0 && seteuid(0) != 0) std::abort();
  }
  WithoutRights(const WithoutRights&) = delete;
  WithoutRights& operator=(const WithoutRights&) = delete;
};

TEST(VolumeClaimTest, WhoMayWriteToAProfileMayCleanItAndWhatIsHiddenIsSaid) {
  const TemporaryFolder volume;
  SeedWindows(volume.path());
  SeedUser(volume.path(), "Other One", "S-1-5-21-1-2-3-1002");
  const std::string image = volume.path() + "/image";
  WriteNative(image, std::string(512, '\0'));
  chmod(image.c_str(), 0);
  chmod(volume.path().c_str(), 0555);
  const std::string users = volume.path() + "/Users/";
  chmod((users + "Other One").c_str(), 0777);
  chmod((users + kTesterName).c_str(), 0555);
  {
    const WithoutRights somebody;
    for (const auto& [user, hindrances] :
         {std::pair(kTesterName, 1u), std::pair("other one", 0u), std::pair("", 0u)}) {
      EXPECT_EQ(HindrancesOf(volume.path(), {}, user).size(), hindrances) << user;
    }
    EXPECT_TRUE(LookAtDisk(image).is_hidden);
    EXPECT_FALSE(LookAtDisk(volume.path() + "/none").is_hidden);
  }
  for (const std::string& folder : {volume.path(), users + kTesterName})
    chmod(folder.c_str(), 0755);
}

struct ProcessesTest : testing::Test {
  std::map<size_t, int> Run(const std::vector<std::function<int()>>& work, size_t at_once) {
    std::vector<ProcessJob> jobs;
    for (const auto& run : work) jobs.push_back({std::to_string(jobs.size()), run});
    std::map<size_t, int> codes;
    RunProcesses(jobs, at_once, [&](size_t job, const ProcessResult& result) {
      codes[job] = result.code;
      errors += result.errors;
    });
    return codes;
  }
  std::string errors;
};

TEST_F(ProcessesTest, AJobThatCannotBeBegunFailsAloneAndTheOthersAreAwaited) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizers need files of their own";
#endif
  const int next = dup(STDIN_FILENO);
  close(next);
  rlimit before;
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit few = {static_cast<rlim_t>(next) + 3, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);
  const auto work = [] { return usleep(100000) + 5; };
  const std::map<size_t, int> codes = Run({work, work, work}, 3);
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(codes, (std::map<size_t, int>{{0, 5}, {1, -1}, {2, -1}}));
  EXPECT_TRUE(Holds(errors, "a process for a run"));
}

TEST_F(ProcessesTest, AnInterruptOfTheParentAloneReachesItsJobsOnce) {
  static volatile std::sig_atomic_t count;
  const pid_t parent = getpid();
  const auto wait = [] {
    std::signal(SIGINT, [](int) { count = count + 1; });
    for (int i = 0; i < 200 && count == 0; ++i) usleep(50000);
    usleep(200000);
    return count;
  };
  const auto interrupt = [parent] {
    usleep(200000);
    for (int i = 0; i < 3; ++i) kill(parent, SIGINT);
    return 0;
  };
  const std::map<size_t, int> codes = Run({wait, interrupt, [] { return 0; }}, 2);
  ASSERT_EQ(codes.size(), 3u);
  EXPECT_EQ(codes.at(0), 1);
  EXPECT_EQ(codes.at(2), -1);
}

}  // namespace
}  // namespace quellix
