#pragma once

#include <string>

#include "ui/handles.h"

namespace quellix {

// A picture file (BMP, GIF, JPEG, PNG, ICO), read once and held in memory: the file stays free.
class Picture {
 public:
  // False when it is no picture that this Windows can read; then there is none.
  bool Load(const std::wstring& path);
  void Clear() { bitmap_.Reset(); }
  // In the middle of `place`, made smaller to fit but never larger.
  void Draw(HDC target, const RECT& place) const;

 private:
  Unique<NullHandleTraits<HBITMAP, DeleteObject>> bitmap_;
};

}  // namespace quellix
