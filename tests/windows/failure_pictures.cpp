#include "failure_pictures.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "ui/windows_api.h"

namespace quellix::test {
namespace {

namespace fs = std::filesystem;

const fs::path kFolder = fs::path(L"C:\\quellix-tests") / kPicturesOfFailures;

// The whole screen as a bitmap file of 24 bits a point.
std::string Screen() {
  const int width = GetSystemMetrics(SM_CXSCREEN), height = GetSystemMetrics(SM_CYSCREEN);
  BITMAPINFOHEADER info{};
  info.biSize = sizeof info;
  info.biWidth = width;
  info.biHeight = height;
  info.biPlanes = 1;
  info.biBitCount = 24;
  std::vector<char> points(static_cast<size_t>((width * 3 + 3) / 4 * 4) *
                           static_cast<size_t>(height));
  const HDC screen = GetDC(nullptr), copy = CreateCompatibleDC(screen);
  const HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
  const HGDIOBJ before = SelectObject(copy, bitmap);
  BitBlt(copy, 0, 0, width, height, screen, 0, 0, SRCCOPY);
  SelectObject(copy, before);
  GetDIBits(screen, bitmap, 0, static_cast<UINT>(height), points.data(),
            reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS);
  DeleteObject(bitmap);
  DeleteDC(copy);
  ReleaseDC(nullptr, screen);
  BITMAPFILEHEADER file{};
  file.bfType = 0x4D42;
  file.bfOffBits = sizeof file + sizeof info;
  file.bfSize = file.bfOffBits + static_cast<DWORD>(points.size());
  return std::string(reinterpret_cast<char*>(&file), sizeof file) +
         std::string(reinterpret_cast<char*>(&info), sizeof info) +
         std::string(points.data(), points.size());
}

class Pictures : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override { taken_ = false; }
  void OnTestPartResult(const testing::TestPartResult& result) override {
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    if (!result.failed() || taken_ || !test) return;
    taken_ = true;
    fs::create_directories(kFolder);
    const std::string name = std::string(test->test_suite_name()) + "." + test->name() + ".bmp";
    std::ofstream(kFolder / name, std::ios::binary) << Screen();
  }
  bool taken_ = false;
};

}  // namespace

void TakePicturesOfFailures() {
  testing::UnitTest::GetInstance()->listeners().Append(new Pictures);
}

}  // namespace quellix::test
