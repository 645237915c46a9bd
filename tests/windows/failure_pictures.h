#pragma once

namespace quellix::test {

// From now on the first failure of each test leaves a picture of the screen in
// C:\\quellix-tests\\failed, from where the sandbox takes it to build/failed.
void TakePicturesOfFailures();

}  // namespace quellix::test
