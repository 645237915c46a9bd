// A cleaner as Windows' own disk cleanup knows them, for the tests: a library that they register in
// the sandbox. What it does stands in its key: "Behaviour", and the "Folder" whose files it takes.
#include <windows.h>

// After windows.h, whose types they use.
#include <emptyvc.h>
#include <olectl.h>

#include <atomic>
#include <string>

namespace {

constexpr CLSID kNewClass = {
    0x51E11A01, 0x7E57, 0x4C1E, {0xA0, 0x01, 0x51, 0xE1, 0x1A, 0x01, 0x00, 0x01}};
constexpr CLSID kOldClass = {
    0x51E11A01, 0x7E57, 0x4C1E, {0xA0, 0x01, 0x51, 0xE1, 0x1A, 0x01, 0x00, 0x02}};
constexpr IID kCache = {
    0x8FCE5227, 0x04DA, 0x11D1, {0xA0, 0x04, 0x00, 0x80, 0x5F, 0x8A, 0xBE, 0x06}};
constexpr IID kCache2 = {
    0x02B7E3BA, 0x4DB3, 0x11D2, {0xB2, 0xD9, 0x00, 0xC0, 0x4F, 0x8E, 0xEC, 0x8C}};

template <typename Base>
class Counted : public Base {
 public:
  virtual ~Counted() = default;
  ULONG WINAPI AddRef() override { return ++references_; }
  ULONG WINAPI Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 private:
  std::atomic<ULONG> references_ = 1;
};

std::wstring Value(HKEY key, const wchar_t* name) {
  wchar_t text[260] = {};
  DWORD bytes = sizeof text;
  RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ, nullptr, text, &bytes);
  return text;
}

LPWSTR Given(const std::wstring& text) {
  const auto given = static_cast<LPWSTR>(CoTaskMemAlloc((text.size() + 1) * sizeof(wchar_t)));
  return lstrcpyW(given, text.c_str());
}

class Handler : public Counted<IEmptyVolumeCache2> {
 public:
  explicit Handler(bool is_new) : is_new_(is_new) {}

  HRESULT WINAPI QueryInterface(REFIID id, void** object) override {
    const bool is_known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, kCache) ||
                          (is_new_ && IsEqualIID(id, kCache2));
    *object = is_known ? this : nullptr;
    if (is_known) AddRef();
    return is_known ? S_OK : E_NOINTERFACE;
  }

  // Of the old class alone, which leaves its texts to the registry.
  HRESULT WINAPI Initialize(HKEY key, LPCWSTR volume, LPWSTR*, LPWSTR*, DWORD*) override {
    return is_new_ ? E_UNEXPECTED : Begin(key, volume);
  }
  HRESULT WINAPI InitializeEx(HKEY key, LPCWSTR volume, LPCWSTR key_name, LPWSTR* name,
                              LPWSTR* description, LPWSTR*, DWORD* flags) override {
    *name = Given(std::wstring(key_name) + L" by itself");
    *description = Given(L"It is new.");
    *flags = EVCF_ENABLEBYDEFAULT;
    return Begin(key, volume);
  }

  HRESULT WINAPI GetSpaceUsed(DWORDLONG* bytes, IEmptyVolumeCacheCallBack* callback) override {
    *bytes = 0;
    if (behaviour_ == L"fails") return E_ACCESSDENIED;
    while (behaviour_ == L"endless") {
      Sleep(5);
      if (callback->ScanProgress(1, 0, L"looking") == E_ABORT) return E_ABORT;
    }
    return ForEach([&](const std::wstring&, DWORDLONG size) {
      *bytes += size;
      return callback->ScanProgress(*bytes, 0, nullptr);
    });
  }

  HRESULT WINAPI Purge(DWORDLONG all, IEmptyVolumeCacheCallBack* callback) override {
    if (behaviour_ == L"hangs") {
      callback->PurgeProgress(0, all, 0, L"hanging");
      Sleep(INFINITE);
    }
    if (behaviour_ == L"asks") {
      MessageBoxW(nullptr, L"Really?", L"Qx cleaner", MB_OKCANCEL);
      return E_ABORT;
    }
    DWORDLONG freed = 0;
    return ForEach([&](const std::wstring& path, DWORDLONG size) {
      if (DeleteFileW(path.c_str())) freed += size;
      if (behaviour_ == L"silent") return S_OK;
      return callback->PurgeProgress(freed, all, 0, path.c_str());
    });
  }

  HRESULT WINAPI ShowProperties(HWND) override { return E_NOTIMPL; }
  HRESULT WINAPI Deactivate(DWORD* flags) override {
    *flags = behaviour_ == L"once" ? EVCF_REMOVEFROMLIST : 0;
    return S_OK;
  }

 private:
  HRESULT Begin(HKEY key, const std::wstring& volume) {
    behaviour_ = Value(key, L"Behaviour");
    folder_ = Value(key, L"Folder");
    return folder_.starts_with(volume) ? S_OK : S_FALSE;
  }

  // Until one is told to stop.
  template <typename Do>
  HRESULT ForEach(const Do& act) const {
    WIN32_FIND_DATAW file;
    const HANDLE find = FindFirstFileW((folder_ + L"*").c_str(), &file);
    if (find == INVALID_HANDLE_VALUE) return S_OK;
    HRESULT result = S_OK;
    do {
      const bool is_folder = (file.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
      if (!is_folder) result = act(folder_ + file.cFileName, file.nFileSizeLow);
    } while (result != E_ABORT && FindNextFileW(find, &file));
    FindClose(find);
    return result;
  }

  bool is_new_;
  std::wstring behaviour_, folder_;
};

class Factory : public Counted<IClassFactory> {
 public:
  explicit Factory(bool is_new) : is_new_(is_new) {}
  HRESULT WINAPI QueryInterface(REFIID id, void** object) override {
    const bool is_known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory);
    *object = is_known ? this : nullptr;
    if (is_known) AddRef();
    return is_known ? S_OK : E_NOINTERFACE;
  }
  HRESULT WINAPI CreateInstance(IUnknown*, REFIID id, void** object) override {
    auto* const handler = new Handler(is_new_);
    const HRESULT result = handler->QueryInterface(id, object);
    handler->Release();
    return result;
  }
  HRESULT WINAPI LockServer(BOOL) override { return S_OK; }

 private:
  bool is_new_;
};

}  // namespace

STDAPI DllGetClassObject(REFCLSID id, REFIID interface_id, void** object) {
  *object = nullptr;
  if (!IsEqualCLSID(id, kNewClass) && !IsEqualCLSID(id, kOldClass))
    return CLASS_E_CLASSNOTAVAILABLE;
  auto* const factory = new Factory(IsEqualCLSID(id, kNewClass));
  const HRESULT result = factory->QueryInterface(interface_id, object);
  factory->Release();
  return result;
}

STDAPI DllCanUnloadNow() { return S_FALSE; }
