#include <windows.h>
// After windows.h, whose types they use.
#include <aclapi.h>

#include "contract/contract_fixture.h"
#include "platform/win32/program_folders.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

using Kind = Error::Kind;

struct Win32FolderTest : ContractFixture {
  UniqueFile Hold(std::string_view name, DWORD access, DWORD share) {
    return UniqueFile(CreateFileW(Wide(At(name)).c_str(), access, share, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  }

  std::unique_ptr<Folder> folder_ = files_.OpenFolder(scratch_);
};

// Where the name goes at once whoever has the file open, nobody who shares its removal hinders.
TEST_F(Win32FolderTest, WhatSomeoneElseHoldsIsSaidToBeInUseOrIsGone) {
  const std::tuple<const char*, DWORD, DWORD, bool> kRows[] = {
      {"shares nothing", GENERIC_READ, 0, true},
      {"shares reading", GENERIC_READ, FILE_SHARE_READ, true},
      {"shares all but removal", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
      {"shares all", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, false}};
  for (const auto& [row, access, share, refused] : kRows) {
    const bool always_refused = refused;
    SCOPED_TRACE(row);
    test_->MakeFile(At("file"), "x");
    test_->MakeFolder(At("folder"));
    folder_->SetAttributes("file", kReadOnly);
    if (access == GENERIC_WRITE) folder_->SetAttributes("file", kNormal);
    const uint32_t before = files_.Look(At("file"))->attributes;
    const auto remove = [&](const char* name, auto step) {
      const auto kind = KindOf(step);
      EXPECT_TRUE(kind == Kind::kInUse || (!kind && !always_refused)) << name;
      EXPECT_EQ(test_->Exists(At(name)), kind.has_value()) << name;
    };
    {
      const UniqueFile file = Hold("file", access, share),
                       held = Hold("folder", FILE_LIST_DIRECTORY, share);
      ASSERT_TRUE(file && held);
      remove("file", [&] { folder_->RemoveFile("file"); });
      remove("folder", [&] { folder_->RemoveFolder("folder"); });
    }
    if (!always_refused && !test_->Exists(At("file"))) continue;
    EXPECT_EQ(files_.Look(At("file"))->attributes, before);
    folder_->RemoveFile("file");
    folder_->RemoveFolder("folder");
    EXPECT_TRUE(test_->Tree(scratch_).empty());
  }
}

TEST_F(Win32FolderTest, WhatTheRecycleBinWouldMistakeIsRefusedAndStays) {
  std::string deep = "deep";
  while (scratch_.size() + deep.size() < 240) deep += "\\" + std::string(40, 'd');
  test_->MakeFile(At("a"), "another");
  test_->MakeFile(At(deep + "\\file of a long path"), "x");
  const auto refuses = [&](Folder& folder, const std::string& name, Kind kind, const char* reason) {
    SCOPED_TRACE(name);
    folder.SetAttributes(name, kReadOnly | kHidden);
    const auto recycle = [&] { folder.Recycle(name); };
    EXPECT_EQ(KindOf(recycle), kind);
    EXPECT_TRUE(Holds(SaidBy(recycle), reason));
    EXPECT_EQ(folder.Look(name)->attributes & (kReadOnly | kHidden), kReadOnly | kHidden);
  };
  for (const char* name : {"a.", "a ", "NUL", "COM1.txt"}) {
    folder_->Open(name, OpenMode::kCreateNew);
    refuses(*folder_, name, Kind::kOther, "takes no file of this name");
  }
  refuses(*folder_->OpenFolder(deep), "file of a long path", Kind::kOther, "longer than");
  {
    const UniqueFile holder =
        Hold("", DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    refuses(*folder_, "a", Kind::kDenied, "cannot be kept in its place");
  }
  EXPECT_EQ(files_.ReadWholeFile(At("a")), "another");
  folder_->Recycle("a");
  EXPECT_FALSE(test_->Exists(At("a")));
}

// The list in the form of a text, without what is told of the file's owner.
std::wstring AccessList(const std::wstring& path) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ACL* list = nullptr;
  GetNamedSecurityInfoW(const_cast<wchar_t*>(path.c_str()), SE_FILE_OBJECT,
                        DACL_SECURITY_INFORMATION, nullptr, nullptr, &list, nullptr, &descriptor);
  std::wstring text;
  for (DWORD i = 0; list != nullptr && i < list->AceCount; ++i) {
    ACCESS_ALLOWED_ACE* entry = nullptr;
    GetAce(list, i, reinterpret_cast<void**>(&entry));
    text += std::to_wstring(entry->Header.AceType) + L":" + std::to_wstring(entry->Mask) + L":" +
            std::to_wstring(*GetSidSubAuthority(&entry->SidStart, 0)) + L" ";
  }
  LocalFree(descriptor);
  return text;
}

// Everybody has this access, and nothing more.
void Allow(const std::wstring& path, DWORD access) {
  alignas(8) BYTE world[SECURITY_MAX_SID_SIZE], buffer[256];
  DWORD size = sizeof world;
  CreateWellKnownSid(WinWorldSid, nullptr, world, &size);
  auto* list = reinterpret_cast<ACL*>(buffer);
  InitializeAcl(list, sizeof buffer, ACL_REVISION);
  AddAccessAllowedAce(list, ACL_REVISION, access, world);
  ASSERT_EQ(SetNamedSecurityInfoW(const_cast<wchar_t*>(path.c_str()), SE_FILE_OBJECT,
                                  DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                                  nullptr, nullptr, list, nullptr),
            static_cast<DWORD>(ERROR_SUCCESS));
}

// Neither an attribute nor who has them open keeps him from it for long.
TEST_F(Win32FolderTest, IsItsUsersWhereHeMayReplaceTheSettings) {
  EXPECT_TRUE(MayMakeFiles(scratch_));
  EXPECT_FALSE(MayMakeFiles(At("none")));
  test_->MakeFile(At("Settings.ini"), "");
  EXPECT_TRUE(MayMakeFiles(scratch_));
  {
    const UniqueFile held = Hold("Settings.ini", GENERIC_READ, 0);
    EXPECT_TRUE(held && MayMakeFiles(scratch_));
  }
  folder_->SetAttributes("Settings.ini", kReadOnly);
  EXPECT_TRUE(MayMakeFiles(scratch_));
  folder_->SetAttributes("Settings.ini", kNormal);
  Allow(Wide(At("Settings.ini")), FILE_GENERIC_READ);
  const bool may_write = static_cast<bool>(Hold("Settings.ini", FILE_WRITE_DATA, FILE_SHARE_READ));
  EXPECT_EQ(MayMakeFiles(scratch_), may_write) << "a system may let its administrators";
}

// Folders that package managers swap at an update, with all that lies in them.
TEST_F(Win32FolderTest, WhatIsItsUsersLiesWhereAnUpdateKeepsIt) {
  const std::string winget = "Microsoft\\WinGet\\Packages\\Quellix_source\\quellix-x64";
  for (const std::string name : {"copy", "copy\\Data"}) test_->MakeFolder(At(name));
  test_->MakeFile(At("file\\Data"), "no folder");
  for (const std::string& name : {winget, winget + "2\\Data"}) test_->MakeFolder(At(name));
  EXPECT_EQ(OwnFolder(At("copy")), At("copy\\Data"));
  EXPECT_EQ(OwnFolder(At("copy\\Data")), At("copy\\Data")) << "a plain folder";
  EXPECT_EQ(OwnFolder(At("file")), At("file"));
  EXPECT_TRUE(OwnFolder(At(winget)).ends_with("\\AppData\\Roaming\\Quellix"));
  EXPECT_EQ(OwnFolder(At(winget + "2")), At(winget + "2\\Data"));
}

TEST_F(Win32FolderTest, RewritingKeepsTheAccessList) {
  test_->MakeFile(At("file"), "old");
  const std::wstring path = Wide(At("file")), usual = AccessList(path);
  Allow(path, FILE_ALL_ACCESS & ~FILE_EXECUTE);
  const std::wstring own = AccessList(path);
  ASSERT_NE(own, usual);
  files_.WriteWholeFile(At("file"), "new");
  EXPECT_EQ(AccessList(path), own);
  EXPECT_EQ(files_.ReadWholeFile(At("file")), "new");
}

// A file without further streams, on a medium that keeps none, is whole all the same.
TEST_F(Win32FolderTest, StreamsAreKeptWhereTheMediumHasThem) {
  const auto file = folder_->Open("file", OpenMode::kCreateNew);
  file->Write(0, "12345");
  const auto kind = KindOf([&] { file->WriteStream("Zone.Identifier", "zone"); });
  if (kind) {
    EXPECT_EQ(kind, Kind::kNotAvailable);
    EXPECT_TRUE(file->Streams().empty());
  } else {
    ASSERT_EQ(file->Streams().size(), 1u);
    EXPECT_EQ(file->Streams()[0].name, "Zone.Identifier");
    EXPECT_EQ(file->ReadStream("Zone.Identifier"), "zone");
  }
  uint64_t allocated = 0;
  for (const Extent& part : file->Allocated()) allocated += part.size;
  EXPECT_GE(allocated, 5u);
  EXPECT_EQ(folder_->Look("file")->size, 5u);
}

}  // namespace
}  // namespace quellix
