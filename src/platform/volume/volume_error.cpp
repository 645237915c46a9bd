#include "platform/volume/volume_error.h"

#include <cerrno>
#include <string>
#include <system_error>

namespace quellix {
namespace {

struct Row {
  int code;
  Error::Kind kind;
  const char* sentence;
};

constexpr const char* kMissingSentence = "There is no such file or folder";
constexpr const char* kDeniedSentence = "Access is denied";
constexpr const char* kFullSentence = "There is not enough space on the disk";

constexpr Row kRows[] = {
    {ENOENT, Error::Kind::kMissing, kMissingSentence},
    {ENOTDIR, Error::Kind::kMissing, kMissingSentence},
    {ENAMETOOLONG, Error::Kind::kMissing, "The name is too long for this disk"},
    {EACCES, Error::Kind::kDenied, kDeniedSentence},
    {EPERM, Error::Kind::kDenied, kDeniedSentence},
    {EROFS, Error::Kind::kDenied, "The disk is write-protected"},
    {ELOOP, Error::Kind::kDenied, "The path leads through a link, which is not followed"},
    {EXDEV, Error::Kind::kDenied, "Another disk is mounted there, which is not entered"},
    {EBUSY, Error::Kind::kInUse, "The file or folder is in use"},
    {ETXTBSY, Error::Kind::kInUse, "The file or folder is in use"},
    {ENOSPC, Error::Kind::kFull, kFullSentence},
    {EDQUOT, Error::Kind::kFull, kFullSentence},
    {ENOTEMPTY, Error::Kind::kNotEmpty, "The folder is not empty"},
    {EEXIST, Error::Kind::kExists, "There is already a file or folder of this name"},
    {EISDIR, Error::Kind::kDenied, "This is a folder, not a file"},
    {EFBIG, Error::Kind::kOther, "The file is too large"},
};

}  // namespace

void ThrowErrno(int code, std::string_view path) {
  const std::string behind = ": " + std::string(path);
  for (const Row& row : kRows) {
    if (row.code == code) throw Error(row.kind, row.sentence + behind);
  }
  throw Error(Error::Kind::kOther, std::generic_category().message(code) + behind);
}

}  // namespace quellix
