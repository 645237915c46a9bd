#pragma once

#include <functional>

#include "plugins/key_generator.h"
#include "ui/owned_window.h"

namespace quellix {

// Asks for the range of the name generator. It stays open until a range is taken.
class FrmKeygen : public OwnedWindow {
 public:
  // False keeps the window open.
  using Take = std::function<bool(const modPlugin::NumberRange& range)>;

  void Show(HWND owner, Take take);

 protected:
  void OnInit() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "generate-keys"; }

 private:
  modPlugin::NumberRange Range() const;

  Take take_;
};

}  // namespace quellix
