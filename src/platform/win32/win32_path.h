#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/win32/unique.h"

namespace quellix {

// `path` as the wide calls take it at any length: with "\\?\" (or "\\?\UNC\") before it and, but
// for a drive's root, no "\" at its end. Nothing when it is no full path, or holds what no name can
// hold: wildcards, "/", a second ":", or a component "", "." or "..", which some calls would
// interpret.
std::optional<std::wstring> ToWidePath(std::string_view path);

// The same; throws Error (kMissing) instead.
std::wstring WidePath(const char* cannot, std::string_view path);

// Whether `name` can be one component of a path: not empty, "." or "..", and without separators,
// wildcards, ":" and control characters.
bool IsName(std::string_view name);

// A path of the wide calls, with "\\?\", as the object manager takes it.
std::wstring NtPath(std::wstring_view wide);

// A handle to the file or folder itself, a link not followed.
UniqueFile OpenItself(const std::wstring& wide, DWORD access, DWORD share);

// Where an open file or folder really is, as the wide calls take it and without "\" at its end; ""
// when Windows cannot tell.
std::wstring FinalPath(const UniqueFile& file);

// Without regard to case, in the file system's sense.
bool SamePath(std::wstring_view a, std::wstring_view b);

}  // namespace quellix
