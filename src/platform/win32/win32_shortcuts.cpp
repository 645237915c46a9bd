#include "platform/win32/win32_shortcuts.h"

#include <windows.h>
// After windows.h, whose types they use.
#include <oleauto.h>
#include <shlobj.h>

#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

LazyLibrary ole32(L"ole32.dll");
LazyLibrary oleaut32(L"oleaut32.dll");

constexpr GUID kShellLinkClass = {
    0x00021401, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

using UniqueDispatch = Unique<ComTraits<IDispatch>>;

// A VARIANT that frees what it holds.
class Value {
 public:
  Value() { value_.vt = VT_EMPTY; }
  explicit Value(const std::wstring& text) {
    static const auto make = oleaut32.Find<decltype(&SysAllocStringLen)>("SysAllocStringLen");
    value_.vt = VT_BSTR;
    value_.bstrVal = make(text.data(), static_cast<UINT>(text.size()));
  }
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;
  ~Value() {
    static const auto clear = oleaut32.Find<decltype(&VariantClear)>("VariantClear");
    clear(&value_);
  }

  VARIANT* Get() { return &value_; }
  bool IsText() const { return value_.vt == VT_BSTR; }
  std::string Text() const { return value_.bstrVal ? Narrow(value_.bstrVal) : std::string(); }

 private:
  VARIANT value_{};
};

template <typename Interface>
Unique<ComTraits<Interface>> CreateObject(const GUID& type) {
  static const auto create = ole32.Find<decltype(&CoCreateInstance)>("CoCreateInstance");
  Unique<ComTraits<Interface>> object;
  create(type, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface),
         reinterpret_cast<void**>(object.Put()));
  return object;
}

// Calls a method with one argument, or reads a property without one.
bool Invoke(IDispatch* object, std::wstring name, WORD kind, Value* argument, Value& result) {
  DISPID id;
  wchar_t* names = name.data();
  if (FAILED(object->GetIDsOfNames(GUID{}, &names, 1, LOCALE_USER_DEFAULT, &id))) return false;
  DISPPARAMS parameters{};
  parameters.cArgs = argument ? 1 : 0;
  parameters.rgvarg = argument ? argument->Get() : nullptr;
  return SUCCEEDED(object->Invoke(id, GUID{}, LOCALE_USER_DEFAULT, kind, &parameters, result.Get(),
                                  nullptr, nullptr));
}

std::optional<std::string> Property(IDispatch* object, const wchar_t* name) {
  Value value;
  if (!Invoke(object, name, DISPATCH_PROPERTYGET, nullptr, value) || !value.IsText()) {
    return std::nullopt;
  }
  return value.Text();
}

// "" for both when the file is no shortcut.
Shortcut ReadThroughShellLink(const std::wstring& path) {
  const auto link = CreateObject<IShellLinkW>(kShellLinkClass);
  Unique<ComTraits<IPersistFile>> file;
  if (!link || FAILED(link.Get()->QueryInterface(__uuidof(IPersistFile),
                                                 reinterpret_cast<void**>(file.Put())))) {
    return {};
  }
  if (FAILED(file.Get()->Load(path.c_str(), STGM_READ))) return {};
  wchar_t text[MAX_PATH * 4] = L"";
  Shortcut shortcut;
  if (SUCCEEDED(link.Get()->GetPath(text, ARRAYSIZE(text), nullptr, 0))) {
    shortcut.target = Narrow(text);
  }
  text[0] = 0;
  if (SUCCEEDED(link.Get()->GetWorkingDirectory(text, ARRAYSIZE(text)))) {
    shortcut.working_folder = Narrow(text);
  }
  return shortcut;
}

UniqueDispatch CreateScriptShell() {
  static const auto find = ole32.Find<decltype(&CLSIDFromProgID)>("CLSIDFromProgID");
  CLSID type;
  if (FAILED(find(L"WScript.Shell", &type))) return {};
  return CreateObject<IDispatch>(type);
}

class ScriptShellReader : public ShortcutReader {
 public:
  std::optional<Shortcut> Read(std::string_view path) override {
    const std::wstring wide = Wide(path);
    std::optional<std::string> target, folder;
    Value argument(wide), link;
    if (shell_ && Invoke(shell_.Get(), L"CreateShortcut", DISPATCH_METHOD, &argument, link) &&
        link.Get()->vt == VT_DISPATCH && link.Get()->pdispVal) {
      target = Property(link.Get()->pdispVal, L"TargetPath");
      folder = Property(link.Get()->pdispVal, L"WorkingDirectory");
    }
    if (target && folder) return Shortcut{*target, *folder};
    // An object that lacks one property, as Wine's does, has not read the file for the other
    // either.
    return ReadThroughShellLink(wide);
  }

 private:
  UniqueDispatch shell_ = CreateScriptShell();
};

}  // namespace

std::unique_ptr<ShortcutReader> OpenWin32Shortcuts() {
  return std::make_unique<ScriptShellReader>();
}

}  // namespace quellix
