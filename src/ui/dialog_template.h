#pragma once

#include <vector>

#include "ui/windows_api.h"

namespace quellix {

// The template of a dialog of the program in the font that Windows shows messages in, at its size:
// that is what its user reads with ease. As it stands where it tells no font.
class DialogTemplate {
 public:
  explicit DialogTemplate(int id);
  const DLGTEMPLATE* Get() const {
    return reinterpret_cast<const DLGTEMPLATE*>(bytes_.empty() ? nullptr : bytes_.data());
  }
  // Of what stands within its borders, in units of its font.
  SIZE Size() const;

 private:
  std::vector<DWORD> bytes_;  // aligned as Windows wants it
};

}  // namespace quellix
