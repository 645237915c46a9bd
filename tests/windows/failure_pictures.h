#pragma once

namespace quellix::test {

// The folder of C:\quellix-tests in which they are kept.
inline constexpr wchar_t kPicturesOfFailures[] = L"failed";

// From now on the first failure of each test leaves a picture of the screen in
// C:\\quellix-tests\\failed, from where the sandbox takes it to build/failed.
void TakePicturesOfFailures();

}  // namespace quellix::test
