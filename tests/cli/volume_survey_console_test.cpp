// What is told of places that may hold a Windows.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "cli/console_fixture.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

constexpr const char* kVersionKey = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

struct VolumeSurvey : ConsoleTest {
  std::string Root() { return dynamic_cast<VolumeTestMachine&>(*machine).options().volume; }
  void Set(const std::string& key, const std::string& name, const RegistryValue& value) {
    machine->SetRegistryValue(RegistryRoot::kLocalMachine, key, name, value);
  }
  void SetText(const std::string& name, const std::string& text) {
    machine->SetText(RegistryRoot::kLocalMachine, kVersionKey, name, text);
  }
  // Whatever writes is refused before it has touched anything; whatever only looks goes on, and
  // tells what does not pass by itself.
  void ExpectRefused(const Names& writing, const Names& drive, const std::string& told) {
    const auto before = PictureOf(Root());
    for (const std::string& command : writing) Expect(With(WordsOf(command), drive), 1, {told});
    const Names restore = {"backup", "restore", "C_1.zip", "--to"};
    Expect(With(With(restore, {Root() + "/Scratch/new/one"}), drive), 1, {told});
    Expect(With(With(restore, {"/proc/none"}), drive), 1, {"/proc/none"});
    const bool is_locked = told.find("Another run") != told.npos;
    for (const char* command : {"clean --item CleanTempFiles --preview", "search empty"}) {
      const ProgramResult looked = Run(With(WordsOf(command), drive));
      const std::string all = looked.output;
      EXPECT_EQ(looked.exit_code, 0) << all;
      EXPECT_EQ(all.find("A run would be refused: ") != all.npos && all.find(told) != all.npos,
                !is_locked)
          << all;
    }
    Expect(With({"plugins", "list"}, drive), 0);
    EXPECT_TRUE(PictureOf(Root()) == before);
  }
  ProgramResult Survey(const std::vector<std::string>& more) {
    StoreMachine(*machine);
    return RunQuellixctl(With({"volumes"}, more));
  }
};

TEST_F(VolumeSurvey, AWindowsIsToldWithUsersAndDrives) {
  SetText("ProductName", "Windows 10 Pro");
  SetText("EditionID", "Professional");
  SetText("CurrentBuildNumber", "22631");
  SetText("DisplayVersion", "23H2");
  Set(kVersionKey, "UBR", {kRegDword, std::string("\x10\x0B\0\0", 4)});
  Set(kVersionKey, "InstallDate", {kRegDword, std::string("\x00\x7C\x6E\x69", 4)});
  const std::string devices = "SYSTEM\\MountedDevices";
  Set(devices,
      "\\DosDevices\\C:", {kRegBinary, std::string("\xEF\xBE\xAD\xDE\0\0\x10\0\0\0\0\0", 12)});
  Set(devices, "\\DosDevices\\D:", {kRegBinary, "DMIO:ID:" + std::string(16, '\x1F')});
  Set(devices, "\\??\\Volume{1}", {kRegBinary, "none"});
  const ProgramResult result = Survey({Root()});
  EXPECT_EQ(result.exit_code, 0);
  for (const char* told :
       {"windows     C:\\Windows\n", "Windows 11 Pro (Professional)\n", "10.0.22631.2832 (23H2)\n",
        "2026-01-19T18:46:24Z\n", "Quellix Tester  C:\\Users\\Quellix Tester\n",
        "C:  disk DEADBEEF, byte 1048576\n", "D:  partition 1F1F1F1F1F1F1F1F1F1F1F1F1F1F1F1F\n"}) {
    EXPECT_TRUE(Holds(result.output, told));
  }
  EXPECT_FALSE(Holds(result.output, "hindrance"));
  const ProgramResult json = Survey({Root(), "--json"});
  EXPECT_TRUE(Holds(json.output, "\"command\"") && Holds(json.output, "DEADBEEF") &&
              Holds(json.output, "\"windows\""))
      << json.output;
}

// `volumes` for the places as they are prepared; told is nothing where all is well.
struct VolumesCommand : VolumeSurvey {
  struct Row {
    const char* row;
    std::function<void()> prepare;
    std::string told;
  };
  void ExpectTold(const std::vector<Row>& rows, const Names& places, int exit_code) {
    for (const auto& [row, prepare, told] : rows) {
      SCOPED_TRACE(row);
      if (prepare) prepare();
      const std::string before = ReadNative(user_hive_);
      const ProgramResult result = RunQuellixctl(With({"volumes"}, places));
      EXPECT_EQ(result.exit_code, exit_code) << result.output;
      EXPECT_TRUE(Holds(result.output, told));
      EXPECT_TRUE(!told.empty() || !Holds(result.output, "hindrance")) << result.output;
      EXPECT_TRUE(ReadNative(user_hive_) == before);
    }
  }
  std::string user_hive_ = Root() + "/Users/" + kTesterName + "/NTUSER.DAT";
  std::string sector_ = std::string(512, '\0');
};

TEST_F(VolumesCommand, WhatStandsInTheWayIsToldAndNothingIsChanged) {
  StoreMachine(*machine);
  const std::string sleep = Root() + "/hiberfil.sys";
  ExpectTold({{"hibernated", [&] { WriteNative(sleep, "HIBR" + sector_); },
               "hibernated, or was shut down with fast start-up"},
              {"resumed", [&] { WriteNative(sleep, "wake" + sector_); }, ""},
              {"a folder", [&] { fs::remove(sleep), fs::create_directory(sleep); }, ""},
              {"a link", [&] { fs::remove(sleep), fs::create_symlink("none", sleep); }, ""},
              {"a dirty hive", [&] { SetHiveDirty(user_hive_, true); },
               "NTUSER.DAT  Windows was not shut down cleanly"}},
             {Root()}, 0);
  SetHiveDirty(user_hive_, false);
}

TEST_F(VolumesCommand, PlacesWithoutWindowsAndDisksAreNamedForWhatTheyAre) {
  StoreMachine(*machine);
  ExpectTold({{"no Windows", {}, "System32\\config\\SOFTWARE"}}, {Root() + "/Scratch"}, 1);
  ExpectTold({{"no such place", {}, "no such file or folder"}}, {Root() + "/none"}, 1);
  ExpectTold({{"the next one is shown", {}, "C:\\Windows"}}, {Root() + "/none", Root()}, 1);
  const std::string image = Root() + "/Scratch/image";
  const auto holds = [&](const std::string& bytes) {
    return [image, bytes] { WriteNative(image, bytes); };
  };
  ExpectTold({{"BitLocker", holds("\xEB\x58\x90-FVE-FS-" + sector_), "encrypted with BitLocker"},
              {"an NTFS", holds("\xEB\x52\x90NTFS    " + sector_), "mount -t ntfs-3g -o loop,ro"},
              {"a disk", holds(std::string(510, '\0') + "\x55\xAA"), "losetup"},
              {"a qcow2", holds("QFI\xFB" + sector_), "qemu-nbd --format=qcow2 " + image},
              {"a VHDX", holds("vhdxfile" + sector_), "qemu-nbd --format=vhdx "},
              {"a VDI", holds(std::string(64, 'x') + "\x7F\x10\xDA\xBE" + sector_), "=vdi "},
              {"something else", holds("text"), "no disk that is known"}},
             {image}, 1);
}

// By a descriptor of its own: the system asks about programs, not about descriptors of one.
struct HeldByAnother {
  HeldByAnother(const std::string& file, short kind) {
    int ready[2];
    if (pipe(ready) != 0) throw std::runtime_error("pipe");
    child_ = fork();
    if (child_ == 0) {
      const int fd = open(file.c_str(), kind == F_WRLCK ? O_RDWR : O_RDONLY);
      struct flock bytes = {};
      bytes.l_type = kind;
      bytes.l_start = 100;
      bytes.l_len = 1;
      const int code = kind == F_UNLCK ? flock(fd, LOCK_EX) : fcntl(fd, F_OFD_SETLK, &bytes);
      _exit(write(ready[1], &code, sizeof code) < 0 || pause());
    }
    int code = -1;
    if (read(ready[0], &code, sizeof code) < 0 || code != 0) throw std::runtime_error("lock");
    for (const int fd : ready) close(fd);
  }
  ~HeldByAnother() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  HeldByAnother(const HeldByAnother&) = delete;
  HeldByAnother& operator=(const HeldByAnother&) = delete;

 private:
  pid_t child_;
};

TEST_F(VolumeSurvey, WhatStandsInTheWayOfARunRefusesIt) {
  const std::string temp_file = temp + "a.tmp";
  for (const std::string& path : {temp_file, own + "UDFO.txt"}) machine->MakeFile(path, "1");
  machine->MakeFile(own + "Plugins\\qx.cdp", "D\x01Qx\r\nF\x01No\x01No\x01" + temp + "*.tmp\r\n");
  StoreMachine(*machine);
  const std::string root = Root(), sleep = root + "/hiberfil.sys", other = root + "/Scratch/d";
  fs::create_directory(other);
  const auto hold = [](const std::string& file, short kind) {
    return [=] { return std::make_shared<HeldByAnother>(file, kind); };
  };
  const auto hibernate = [](const std::string& file) {
    return [=] {
      WriteNative(file, "hibr" + std::string(512, '\0'));
      return std::shared_ptr<void>(nullptr, [=](void*) { fs::remove(file); });
    };
  };
  const std::tuple<const char*, std::function<std::shared_ptr<void>()>, std::string> kRows[] = {
      {"hibernated", hibernate(sleep), "shut it down whole"},
      {"a further drive", hibernate(other + "/hiberfil.sys"), "D: This Windows is hibernated"},
      {"a hive in use", hold(root + "/Windows/System32/config/SYSTEM", F_WRLCK), "virtual machine"},
      {"another run", hold(root, F_UNLCK), "Another run of Quellix works on " + root},
      {"another run on a further drive", hold(other, F_UNLCK), "Another run"}};
  const Names drive = {"--drive", "D:=" + other};
  Names writing = {"search empty --delete",      "registry app-paths --delete",
                   "plugins process qx",         "browsers clean Firefox",
                   "backup restore C_1.zip",     "backup repair C_1.zip",
                   "clean --item CleanTempFiles"};
  for (const auto& [row, hinder, told] : kRows) {
    SCOPED_TRACE(row);
    const auto held = hinder();
    ExpectRefused(writing, drive, told);
    writing = {writing.back()};  // all ask in the same place
  }
  const std::string image = root + "/Scratch/image";
  WriteNative(image, "\xEB\x58\x90-FVE-FS-" + std::string(512, '\0'));
  EXPECT_TRUE(Holds(RunQuellixctl({"clean", "--all", "--volume", image}).output, "BitLocker"));
  Expect(With({"clean", "--item", "CleanTempFiles"}, drive), 0);
  EXPECT_FALSE(machine->Exists(temp_file));
}

// Without Error in any case, and without a loop: anyone can make an image.
TEST_F(VolumeSurvey, ImagesOfNonsenseAreRead) {
  Names places = {"volumes"};
  for (size_t seed = 0; seed < 40; ++seed) {
    std::string bytes(8192, static_cast<char>(seed * 7));
    bytes.replace(3, 8, "NTFS    ");
    for (size_t at = 11; at < 80; ++at) bytes[at] = static_cast<char>(at * 31 * seed % 251);
    bytes.replace(seed * 64, 4, "FILE");
    WriteNative(places.emplace_back(Root() + "/Scratch/image" + std::to_string(seed)), bytes);
  }
  const ProgramResult result = RunQuellixctl(places);
  EXPECT_EQ(result.exit_code, 1);
  for (size_t i = 1; i < places.size(); ++i) EXPECT_TRUE(Holds(result.output, places[i] + "\n"));
}

}  // namespace
}  // namespace quellix
