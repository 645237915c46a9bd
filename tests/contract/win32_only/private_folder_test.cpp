// Who may use a folder that is made for this program alone.

#include "platform/private_folder.h"

// After the port, which includes no system header.
#include <aclapi.h>
#include <sddl.h>

#include "contract/error_kind.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_text.h"
#include "support/test_machine.h"

namespace quellix {
namespace {

using UniqueDescriptor = Unique<NullHandleTraits<PSECURITY_DESCRIPTOR, LocalFree>>;
using UniqueText = Unique<NullHandleTraits<wchar_t*, LocalFree>>;

// The identifiers of those who are allowed anything.
Names AllowedIn(const std::string& path) {
  UniqueDescriptor security;
  PACL list = nullptr;
  Names allowed;
  EXPECT_EQ(GetNamedSecurityInfoW(Wide(path).c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                                  nullptr, nullptr, &list, nullptr, security.Put()),
            DWORD{ERROR_SUCCESS});
  for (DWORD i = 0; list != nullptr && i < list->AceCount; ++i) {
    void* entry = nullptr;
    if (!GetAce(list, i, &entry)) continue;
    auto& ace = *static_cast<ACCESS_ALLOWED_ACE*>(entry);
    if (ace.Header.AceType != ACCESS_ALLOWED_ACE_TYPE || ace.Mask == 0) continue;
    UniqueText text;
    ConvertSidToStringSidW(&ace.SidStart, text.Put());
    allowed.push_back(Narrow(text.Get()));
  }
  return allowed;
}

TEST(PrivateFolderTest, NobodyButItsUserAdministratorsAndTheSystemMayUseIt) {
  const auto machine = TestMachine::Create();
  const Machine ports = machine->machine();
  const std::string path = machine->Scratch() + "private";
  MakePrivateFolder(ports, path);
  const Names known = {"S-1-5-18", "S-1-5-32-544", ports.session.UserId()};
  const Names allowed = AllowedIn(path);
  EXPECT_FALSE(allowed.empty());
  for (const std::string& sid : allowed) EXPECT_EQ(std::ranges::count(known, sid), 1) << sid;
  machine->MakeFile(path + "\\file", "1");
  EXPECT_EQ(KindOf([&] { MakePrivateFolder(ports, path); }), Error::Kind::kExists);
  EXPECT_TRUE(machine->Exists(path + "\\file"));
  ports.files.RemoveFile(path + "\\file");
  ports.files.RemoveFolder(path);
  EXPECT_FALSE(machine->Exists(path));
}

}  // namespace
}  // namespace quellix
