
#include "platform/win32/lazy_library.h"
#include "platform/win32/win32_session.h"
#include "platform/win32/win32_text.h"
#include "support/embedded_win32.h"
#include "support/test_machine.h"

namespace quellix {
namespace {

// The attributes of one of this process's privileges; none when it does not hold it.
std::optional<DWORD> PrivilegeAttributes(const wchar_t* name) {
  LUID wanted{};
  LookupPrivilegeValueW(nullptr, name, &wanted);
  UniqueHandle token;
  OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put());
  std::vector<BYTE> bytes(4096);
  DWORD size = 0;
  GetTokenInformation(token.Get(), TokenPrivileges, bytes.data(), static_cast<DWORD>(bytes.size()),
                      &size);
  const auto* held = reinterpret_cast<const TOKEN_PRIVILEGES*>(bytes.data());
  for (DWORD i = 0; i < held->PrivilegeCount; ++i) {
    const LUID_AND_ATTRIBUTES& privilege = held->Privileges[i];
    if (privilege.Luid.LowPart == wanted.LowPart && privilege.Luid.HighPart == wanted.HighPart) {
      return privilege.Attributes;
    }
  }
  return std::nullopt;
}

TEST(Win32SessionTest, AProgramThatRunsIsKnownByTheNameOfItsFile) {
  const auto machine = TestMachine::Create();
  EXPECT_TRUE(machine->machine().system.IsProgramRunning("Contract_Tests.EXE"));
}

TEST(Win32SessionTest, AProgramIsAskedToCloseAndMayRefuse) {
  const auto machine = TestMachine::Create();
  Win32Session session;
  const std::string path = machine->Scratch() + "qxprogram.exe";
  Unpack(L"window_program", Wide(path));
  EXPECT_FALSE(session.AskToClose({.file_name = "qxprogram.exe"})) << "it does not run yet";
  EXPECT_FALSE(session.AskToClose({.file_name = "contract_tests.exe"})) << "nor ourselves";
  EXPECT_FALSE(session.AskToClose({.held = path}));
  {
    const UnpackedProgram refusing(Wide(path), L"refuses");
    const auto closing = session.AskToClose({.file_name = "QxProgram.exe"});
    ASSERT_TRUE(closing);
    EXPECT_FALSE(closing->Await() || closing->Await() || refusing.HasEnded());
  }
  const UnpackedProgram polite(Wide(path));
  const auto closing = session.AskToClose({.file_name = "QxProgram.exe"});
  ASSERT_TRUE(closing);
  while (!closing->Await()) {
  }
  EXPECT_TRUE(polite.HasEnded());
}

TEST(Win32SessionTest, OneOfSeveralIsTheRunningInstanceUntilItEnds) {
  const auto machine = TestMachine::Create();
  Win32Session second;
  {
    Win32Session first;
    EXPECT_TRUE(first.ClaimInstance("Quellix test"));
    EXPECT_FALSE(second.ClaimInstance("Quellix test") || second.ClaimInstance("Quellix test"));
    EXPECT_TRUE(first.HasAdministratorRights());  // as every user of a sandbox has
    EXPECT_TRUE(first.UserId().starts_with("S-1-5-"));
    EXPECT_EQ(first.UserId(), second.UserId());
    EXPECT_NO_THROW(first.ProgramsUsing("C:\\windows\\system32\\kernel32.dll"));
    EXPECT_TRUE(second.ClaimInstance("Quellix other test"));
  }
  EXPECT_TRUE(second.ClaimInstance("Quellix test"));
}

TEST(Win32SessionTest, TheShutDownPrivilegeIsEnabledWhereItIsHeld) {
  const auto machine = TestMachine::Create();
  Win32Session session;
  session.EnablePrivilege("SeShutdownPrivilege");
  const auto attributes = PrivilegeAttributes(L"SeShutdownPrivilege");
  EXPECT_TRUE(!attributes || (*attributes & SE_PRIVILEGE_ENABLED));
  EXPECT_THROW(session.EnablePrivilege("SeNoSuchPrivilege"), Error);
}

// A library of the name stands in the folder that is looked into before the system's.
TEST(LibrarySearch, OnlyTheSystemFolderIsLookedInto) {
  const auto test = TestMachine::Create();
  const auto loads = [](const wchar_t* name) {
    const HMODULE library = LoadLibraryW(name);
    if (library != nullptr) FreeLibrary(library);
    return library != nullptr;
  };
  const std::wstring planted = Wide(test->Scratch()) + L"qxplanted.dll";
  ASSERT_TRUE(CopyFileW(L"C:\\windows\\system32\\version.dll", planted.c_str(), FALSE));
  SetDllDirectoryW(Wide(test->Scratch()).c_str());
  EXPECT_TRUE(loads(L"qxplanted.dll"));
  SearchSystemFolderOnly();
  EXPECT_TRUE(!loads(L"qxplanted.dll") && loads(L"version.dll"));
  LazyLibrary lazy(L"version.dll");
  EXPECT_NO_THROW(lazy.Find<FARPROC>("GetFileVersionInfoSizeW"));
  SetDllDirectoryW(nullptr);
}

}  // namespace
}  // namespace quellix
