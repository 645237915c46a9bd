#include "platform/win32/cleaner_work.h"

// After windows.h, whose types they use.
#include <emptyvc.h>
#include <objbase.h>

#include "platform/win32/lazy_library.h"

namespace quellix {
namespace {

LazyLibrary ole32(L"ole32.dll");

constexpr IID kCache = {
    0x8FCE5227, 0x04DA, 0x11D1, {0xA0, 0x04, 0x00, 0x80, 0x5F, 0x8A, 0xBE, 0x06}};
constexpr IID kCache2 = {
    0x02B7E3BA, 0x4DB3, 0x11D2, {0xB2, 0xD9, 0x00, 0xC0, 0x4F, 0x8E, 0xEC, 0x8C}};
constexpr IID kCallback = {
    0x6E793361, 0x73C6, 0x11D0, {0x84, 0x69, 0x00, 0xAA, 0x00, 0x44, 0x29, 0x01}};

// Of ole32, found before a thread needs them.
struct Com {
  decltype(&CoInitializeEx) start = ole32.Find<decltype(start)>("CoInitializeEx");
  decltype(&CoUninitialize) end = ole32.Find<decltype(end)>("CoUninitialize");
  decltype(&CoCreateInstance) create = ole32.Find<decltype(create)>("CoCreateInstance");
  decltype(&CoTaskMemFree) release = ole32.Find<decltype(release)>("CoTaskMemFree");
};

const Com& ComFunctions() {
  static const Com functions;
  return functions;
}

// A text that a handler allocates; as long as it gives none, what is known already stays.
class GivenText {
 public:
  GivenText() = default;
  GivenText(const GivenText&) = delete;
  GivenText& operator=(const GivenText&) = delete;
  ~GivenText() { ComFunctions().release(text_); }
  LPWSTR* Put() { return &text_; }
  void MoveTo(std::wstring& known) const {
    if (text_ != nullptr && *text_ != L'\0') known = text_;
  }

 private:
  LPWSTR text_ = nullptr;
};

// What a handler tells while it works. It may keep a reference beyond the end of the work.
class Callback : public IEmptyVolumeCacheCallBack {
 public:
  explicit Callback(std::shared_ptr<CleanerWork> work) : work_(std::move(work)) {}
  virtual ~Callback() = default;

  HRESULT WINAPI QueryInterface(REFIID id, void** object) override {
    const bool is_known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, kCallback);
    *object = is_known ? this : nullptr;
    if (is_known) AddRef();
    return is_known ? S_OK : E_NOINTERFACE;
  }
  ULONG WINAPI AddRef() override { return ++references_; }
  ULONG WINAPI Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT WINAPI ScanProgress(DWORDLONG bytes, DWORD, LPCWSTR status) override {
    work_->found = found_before + bytes;
    return Tell(status);
  }
  HRESULT WINAPI PurgeProgress(DWORDLONG freed, DWORDLONG, DWORD, LPCWSTR status) override {
    work_->freed = freed_before + freed;
    work_->tells_freed = true;
    return Tell(status);
  }

  uint64_t found_before = 0, freed_before = 0;  // bytes, on other volumes

 private:
  HRESULT Tell(LPCWSTR status) const {
    if (status != nullptr) {
      const std::scoped_lock lock(work_->status_in_use);
      work_->status = status;
    }
    return work_->stops ? E_ABORT : S_OK;
  }

  std::shared_ptr<CleanerWork> work_;
  std::atomic<ULONG> references_ = 1;
};

using UniqueHandler = Unique<ComTraits<IEmptyVolumeCache>>;
using UniqueHandler2 = Unique<ComTraits<IEmptyVolumeCache2>>;
using UniqueCallback = Unique<ComTraits<Callback>>;

// The later interface is the only one that names itself in the user's language.
HRESULT Initialize(CleanerWork& work, IEmptyVolumeCache* handler, const std::wstring& volume) {
  GivenText name, description, button;
  DWORD flags = 0;
  UniqueHandler2 later;
  handler->QueryInterface(kCache2, reinterpret_cast<void**>(later.Put()));
  const HRESULT result =
      later ? later.Get()->InitializeEx(work.key.Get(), volume.c_str(), work.key_name.c_str(),
                                        name.Put(), description.Put(), button.Put(), &flags)
            : handler->Initialize(work.key.Get(), volume.c_str(), name.Put(), description.Put(),
                                  &flags);
  if (FAILED(result)) return result;
  name.MoveTo(work.name);
  description.MoveTo(work.description);
  work.is_usual = work.is_usual || (flags & EVCF_ENABLEBYDEFAULT) != 0;
  return result;
}

HRESULT LookAndClean(CleanerWork& work, IEmptyVolumeCache* handler, Callback* callback,
                     bool& has_cleaned) {
  DWORDLONG bytes = 0;
  HRESULT result = handler->GetSpaceUsed(&bytes, callback);
  if (FAILED(result)) return result;
  work.found = callback->found_before + bytes;
  if (!work.cleans || bytes == 0 || work.stops) return result;
  result = handler->Purge(bytes, callback);
  has_cleaned = SUCCEEDED(result);
  return result;
}

HRESULT WorkOn(CleanerWork& work, const std::wstring& volume, Callback* callback) {
  callback->found_before = work.found;
  callback->freed_before = work.freed;
  UniqueHandler handler;
  HRESULT result = ComFunctions().create(work.class_id, nullptr, CLSCTX_INPROC_SERVER, kCache,
                                         reinterpret_cast<void**>(handler.Put()));
  if (SUCCEEDED(result)) result = Initialize(work, handler.Get(), volume);
  if (result != S_OK) return result;  // S_FALSE: it has nothing to remove there
  bool has_cleaned = false;
  result = LookAndClean(work, handler.Get(), callback, has_cleaned);
  DWORD flags = 0;
  handler.Get()->Deactivate(&flags);
  work.was_the_last_time =
      work.was_the_last_time || (has_cleaned && (flags & EVCF_REMOVEFROMLIST) != 0);
  return result;
}

void WorkOnAll(const std::shared_ptr<CleanerWork>& work) {
  const UniqueCallback callback(new Callback(work));
  for (const std::wstring& volume : work->volumes) {
    const HRESULT result = WorkOn(*work, volume, callback.Get());
    work->is_stopped = work->stops || result == E_ABORT;
    if (work->is_stopped) return;
    if (FAILED(result) && SUCCEEDED(work->failure)) work->failure = result;
  }
}

// A cleaner may expect to show windows: such code lives in apartments.
DWORD WINAPI RunCleaner(void* parameter) {
  const std::unique_ptr<std::shared_ptr<CleanerWork>> work(
      static_cast<std::shared_ptr<CleanerWork>*>(parameter));
  const HRESULT started =
      ComFunctions().start(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
  if (SUCCEEDED(started)) {
    WorkOnAll(*work);
    ComFunctions().end();
  } else {
    (*work)->failure = started;
  }
  return 0;
}

}  // namespace

UniqueHandle StartCleaner(const std::shared_ptr<CleanerWork>& work, DWORD& thread_id) {
  ComFunctions();
  auto parameter = std::make_unique<std::shared_ptr<CleanerWork>>(work);
  UniqueHandle thread(CreateThread(nullptr, 0, RunCleaner, parameter.get(), 0, &thread_id));
  if (thread) parameter.release();
  return thread;
}

}  // namespace quellix
