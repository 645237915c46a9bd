#include "ui/browser_control.h"

// After windows.h, whose types it uses.
#include <oleauto.h>

#include "platform/win32/lazy_library.h"
#include "ui/browser_site.h"

namespace quellix {
namespace {

LazyLibrary ole32(L"ole32.dll");
LazyLibrary oleaut32(L"oleaut32.dll");

// A text as automation passes it.
class BasicText {
 public:
  explicit BasicText(const std::wstring& text) {
    static const auto make = oleaut32.Find<decltype(&SysAllocString)>("SysAllocString");
    text_ = make(text.c_str());
  }
  ~BasicText() {
    static const auto free = oleaut32.Find<decltype(&SysFreeString)>("SysFreeString");
    free(text_);
  }
  BasicText(const BasicText&) = delete;
  BasicText& operator=(const BasicText&) = delete;
  BSTR Get() const { return text_; }

 private:
  BSTR text_;
};

template <typename Interface>
Unique<ComTraits<Interface>> As(IUnknown* object) {
  Unique<ComTraits<Interface>> other;
  if (object) {
    object->QueryInterface(__uuidof(Interface), reinterpret_cast<void**>(other.Put()));
  }
  return other;
}

// The control can be made where its pages cannot, and then shows nothing.
bool HasPages() {
  return LoadLibraryExW(L"mshtml.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32) != nullptr;
}

RECT ClientArea(HWND window) {
  RECT area;
  GetClientRect(window, &area);
  return area;
}

}  // namespace

BrowserControl::BrowserControl() : site_(std::make_unique<BrowserSite>()) {}
BrowserControl::~BrowserControl() { Close(); }

bool BrowserControl::Create(HWND frame) {
  if (!HasPages()) return false;
  const auto initialize = ole32.Find<decltype(&OleInitialize)>("OleInitialize");
  const auto create = ole32.Find<decltype(&CoCreateInstance)>("CoCreateInstance");
  if (FAILED(initialize(nullptr))) return false;
  frame_ = frame;
  site_->SetFrame(frame);
  create(__uuidof(::WebBrowser), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IWebBrowser2),
         reinterpret_cast<void**>(browser_.Put()));
  const RECT area = ClientArea(frame);
  const auto object = As<IOleObject>(browser_.Get());
  if (!object || FAILED(object.Get()->SetClientSite(site_.get())) ||
      FAILED(
          object.Get()->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, site_.get(), 0, frame, &area))) {
    Close();
    return false;
  }
  browser_.Get()->put_Silent(VARIANT_TRUE);
  browser_.Get()->put_Offline(VARIANT_TRUE);
  Resize();
  return true;
}

void BrowserControl::Close() {
  if (!frame_) return;
  if (const auto object = As<IOleObject>(browser_.Get())) {
    object.Get()->Close(OLECLOSE_NOSAVE);
    object.Get()->SetClientSite(nullptr);
  }
  browser_.Reset();
  frame_ = nullptr;
  ole32.Find<decltype(&OleUninitialize)>("OleUninitialize")();
}

void BrowserControl::Navigate(const std::wstring& address) {
  const BasicText text(address);
  VARIANT target{}, none{};
  target.vt = VT_BSTR;
  target.bstrVal = text.Get();
  browser_.Get()->Navigate2(&target, &none, &none, &none, &none);
}

void BrowserControl::Resize() {
  if (!browser_) return;
  const RECT area = ClientArea(frame_);
  if (const auto place = As<IOleInPlaceObject>(browser_.Get())) {
    place.Get()->SetObjectRects(&area, &area);
  }
}

void BrowserControl::TakeFocus() {
  const RECT area = ClientArea(frame_);
  if (const auto object = As<IOleObject>(browser_.Get())) {
    object.Get()->DoVerb(OLEIVERB_UIACTIVATE, nullptr, site_.get(), 0, frame_, &area);
  }
}

bool BrowserControl::TakeKey(MSG& message) {
  if (!browser_ || !IsChild(frame_, message.hwnd)) return false;
  if (message.wParam == VK_ESCAPE || message.wParam == VK_TAB) {
    return false;  // these two lead back out
  }
  const auto active = As<IOleInPlaceActiveObject>(browser_.Get());
  return active && active.Get()->TranslateAccelerator(&message) == S_OK;
}

}  // namespace quellix
