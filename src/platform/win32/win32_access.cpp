#include "platform/win32/win32_access.h"

#include <aclapi.h>
#include <sddl.h>

#include <array>

namespace quellix {
namespace {

constexpr ACCESS_MASK kOfEach =
    FILE_WRITE_ATTRIBUTES | FILE_WRITE_EA | WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;
constexpr ACCESS_MASK kFileRights = kOfEach | DELETE | FILE_WRITE_DATA | FILE_APPEND_DATA;
constexpr ACCESS_MASK kFolderRights = kFileRights | FILE_DELETE_CHILD;
constexpr ACCESS_MASK kRootRights = kOfEach | FILE_DELETE_CHILD;

ACCESS_MASK RightsThatChange(PathPart part) {
  return part == PathPart::kFile     ? kFileRights
         : part == PathPart::kFolder ? kFolderRights
                                     : kRootRights;
}

// Administrators, the system, and TrustedInstaller, which owns what belongs to Windows.
constexpr const wchar_t* kTrusted[] = {
    L"S-1-5-32-544", L"S-1-5-18",
    L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464"};

using UniqueSid = Unique<NullHandleTraits<PSID, LocalFree>>;
using UniqueDescriptor = Unique<NullHandleTraits<PSECURITY_DESCRIPTOR, LocalFree>>;

bool IsTrusted(PSID sid) {
  for (const wchar_t* const text : kTrusted) {
    UniqueSid trusted;
    if (ConvertStringSidToSidW(text, trusted.Put()) && EqualSid(sid, trusted.Get())) return true;
  }
  return false;
}

// What kind of entry is not known here may grant anything.
bool MayChange(const ACE_HEADER& header, ACCESS_MASK rights) {
  if ((header.AceFlags & INHERIT_ONLY_ACE) != 0 || header.AceType == ACCESS_DENIED_ACE_TYPE)
    return false;
  if (header.AceType != ACCESS_ALLOWED_ACE_TYPE) return true;
  const auto& allowed = reinterpret_cast<const ACCESS_ALLOWED_ACE&>(header);
  if ((allowed.Mask & rights) == 0) return false;
  return !IsTrusted(const_cast<DWORD*>(&allowed.SidStart));
}

}  // namespace

bool OnlyAdministratorsChange(PSECURITY_DESCRIPTOR security, PathPart part) {
  PSID owner = nullptr;
  PACL list = nullptr;
  BOOL is_default = FALSE, is_there = FALSE;
  if (!GetSecurityDescriptorOwner(security, &owner, &is_default) || owner == nullptr ||
      !IsTrusted(owner) || !GetSecurityDescriptorDacl(security, &is_there, &list, &is_default) ||
      !is_there || list == nullptr) {
    return false;
  }
  for (DWORD i = 0; i < list->AceCount; ++i) {
    void* entry = nullptr;
    if (!GetAce(list, i, &entry) ||
        MayChange(*static_cast<ACE_HEADER*>(entry), RightsThatChange(part))) {
      return false;
    }
  }
  return true;
}

bool OnlyAdministratorsChange(const UniqueFile& open, PathPart part) {
  UniqueDescriptor security;
  return GetSecurityInfo(open.Get(), SE_FILE_OBJECT,
                         OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, nullptr, nullptr,
                         nullptr, nullptr, security.Put()) == ERROR_SUCCESS &&
         OnlyAdministratorsChange(security.Get(), part);
}

}  // namespace quellix
