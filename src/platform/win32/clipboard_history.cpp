#include "platform/win32/clipboard_history.h"

#include <windows.h>
// After windows.h, whose types they use.
#include <inspectable.h>
#include <roapi.h>
#include <winstring.h>

#include <string_view>

#include "platform/error.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"

namespace quellix {
namespace {

LazyLibrary combase(L"combase.dll");

constexpr std::wstring_view kClipboardClass = L"Windows.ApplicationModel.DataTransfer.Clipboard";
constexpr GUID kStatics2 = {
    0xD2AC1B6A, 0xD29F, 0x554B, {0xB3, 0x03, 0xF0, 0x45, 0x23, 0x45, 0xFE, 0x02}};

// The start of IClipboardStatics2, which the compiler's headers do not have.
struct ClipboardStatics2 : public IInspectable {
  virtual HRESULT STDMETHODCALLTYPE GetHistoryItemsAsync(void** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE ClearHistory(boolean* cleared) = 0;
};

using UniqueStatics = Unique<
    NullHandleTraits<ClipboardStatics2*, [](ClipboardStatics2* statics) { statics->Release(); }>>;

}  // namespace

void ClearClipboardHistory() {
  try {
    static const auto name =
        combase.Find<decltype(&WindowsCreateStringReference)>("WindowsCreateStringReference");
    static const auto find =
        combase.Find<decltype(&RoGetActivationFactory)>("RoGetActivationFactory");
    HSTRING_HEADER header;
    HSTRING class_name = nullptr;
    void* factory = nullptr;
    const auto length = static_cast<UINT32>(kClipboardClass.size());
    if (FAILED(name(kClipboardClass.data(), length, &header, &class_name)) ||
        FAILED(find(class_name, kStatics2, &factory)) || factory == nullptr) {
      return;
    }
    const UniqueStatics statics(static_cast<ClipboardStatics2*>(factory));
    boolean cleared = 0;
    statics.Get()->ClearHistory(&cleared);
  } catch (const Error&) {  // a Windows without these functions
    return;
  }
}

}  // namespace quellix
