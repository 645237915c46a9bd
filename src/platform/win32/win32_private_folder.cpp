#include <windows.h>
// After windows.h, whose types it uses.
#include <sddl.h>

#include "platform/private_folder.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

using UniqueDescriptor = Unique<NullHandleTraits<PSECURITY_DESCRIPTOR, LocalFree>>;

// Whoever owns a folder may change who uses it: among administrators that is not the user.
std::string AccessFor(Session& session) {
  const bool is_administrator = session.HasAdministratorRights();
  const std::string user = session.UserId(), who = user.empty() ? "OW" : user;  // its owner
  const std::string rights = is_administrator ? "0x1300e9" : "FA";  // read, start and remove; all
  return std::string(is_administrator ? "O:BA" : "") +
         "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;" + rights + ";;;" + who + ")";
}

}  // namespace

void MakePrivateFolder(const Machine& machine, const std::string& path) {
  const std::wstring wide = WidePath(Cannot::kMake, path);
  UniqueDescriptor descriptor;
  if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(
          Wide(AccessFor(machine.session)).c_str(), SDDL_REVISION_1, descriptor.Put(), nullptr))
    ThrowLastError(Cannot::kMake, path);
  SECURITY_ATTRIBUTES security{sizeof security, descriptor.Get(), FALSE};
  if (!CreateDirectoryW(wide.c_str(), &security)) ThrowLastError(Cannot::kMake, path);
}

}  // namespace quellix
