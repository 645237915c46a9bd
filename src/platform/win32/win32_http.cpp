#include <windows.h>

// After windows.h, whose types it uses.
#include <winhttp.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>

#include "platform/http.h"
#include "platform/text.h"
#include "platform/url.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kPiece = 64u << 10;  // bytes read at a time
constexpr DWORD kProxyWantsPassword = 407;
// Newer than the headers that this is built with.
constexpr DWORD kTls12 = 0x800, kTls13 = 0x2000, kAutomaticProxy = 4;

LazyLibrary winhttp(L"winhttp.dll"), normaliz(L"normaliz.dll");

// Found on the interface thread, before the library's own threads use them.
struct Functions {
  decltype(&WinHttpOpen) open = winhttp.Find<decltype(&WinHttpOpen)>("WinHttpOpen");
  decltype(&WinHttpConnect) connect = winhttp.Find<decltype(&WinHttpConnect)>("WinHttpConnect");
  decltype(&WinHttpOpenRequest) open_request =
      winhttp.Find<decltype(&WinHttpOpenRequest)>("WinHttpOpenRequest");
  decltype(&WinHttpSetOption) set_option =
      winhttp.Find<decltype(&WinHttpSetOption)>("WinHttpSetOption");
  decltype(&WinHttpSetStatusCallback) set_callback =
      winhttp.Find<decltype(&WinHttpSetStatusCallback)>("WinHttpSetStatusCallback");
  decltype(&WinHttpSendRequest) send =
      winhttp.Find<decltype(&WinHttpSendRequest)>("WinHttpSendRequest");
  decltype(&WinHttpReceiveResponse) receive =
      winhttp.Find<decltype(&WinHttpReceiveResponse)>("WinHttpReceiveResponse");
  decltype(&WinHttpQueryHeaders) query =
      winhttp.Find<decltype(&WinHttpQueryHeaders)>("WinHttpQueryHeaders");
  decltype(&WinHttpReadData) read = winhttp.Find<decltype(&WinHttpReadData)>("WinHttpReadData");
  decltype(&WinHttpCloseHandle) close =
      winhttp.Find<decltype(&WinHttpCloseHandle)>("WinHttpCloseHandle");
};

const Functions& Library() {
  static const Functions functions;
  return functions;
}

using UniqueInternet =
    Unique<NullHandleTraits<HINTERNET, [](HINTERNET handle) { Library().close(handle); }>>;

// Between the library's threads and the one that waits.
struct Ends {
  std::mutex lock;
  std::condition_variable changed;
};

// A request in hand; it lives until the library has let go of its handle.
struct Job {
  HttpRequest request;
  std::wstring host;  // as the network knows it
  bool has_named_proxy = false;
  Clock::time_point until;
  std::shared_ptr<Ends> ends;
  std::atomic<uint64_t> received{0};
  // Only the library's threads use these, one after another, until is_over.
  std::string piece = std::string(kPiece, '\0'), body;
  std::optional<uint64_t> announced;
  DWORD secure_flags = 0;
  bool asks_other = false;  // a proxy that the system's settings name
  // Under the lock.
  bool is_over = false;
  HttpAnswer answer;
};

void Finish(Job& job, HttpAnswer answer) {
  const std::lock_guard guard(job.ends->lock);
  if (job.is_over) return;
  job.is_over = true;
  job.answer = std::move(answer);
  job.ends->changed.notify_one();
}

void Finish(Job& job, HttpEnd end) { Finish(job, HttpAnswer{.end = end}); }

constexpr struct {
  DWORD code;
  HttpEnd end;
} kEnds[] = {
    {ERROR_WINHTTP_TIMEOUT, HttpEnd::kTimeout},
    {ERROR_WINHTTP_NAME_NOT_RESOLVED, HttpEnd::kNoName},
    {ERROR_WINHTTP_CANNOT_CONNECT, HttpEnd::kNoConnection},
    {ERROR_WINHTTP_CONNECTION_ERROR, HttpEnd::kCutOff},
    {ERROR_WINHTTP_SECURE_CHANNEL_ERROR, HttpEnd::kNoTls},
    {ERROR_WINHTTP_CLIENT_AUTH_CERT_NEEDED, HttpEnd::kNoTls},
    {ERROR_WINHTTP_SECURE_FAILURE, HttpEnd::kCertificate},
    {ERROR_WINHTTP_AUTODETECTION_FAILED, HttpEnd::kProxy},
    {ERROR_WINHTTP_BAD_AUTO_PROXY_SCRIPT, HttpEnd::kProxy},
    {ERROR_WINHTTP_UNABLE_TO_DOWNLOAD_SCRIPT, HttpEnd::kProxy},
    {WSAECONNRESET, HttpEnd::kCutOff},
    {WSAECONNABORTED, HttpEnd::kCutOff},
    {WSAECONNREFUSED, HttpEnd::kNoConnection},
    {WSAETIMEDOUT, HttpEnd::kTimeout},
    {ERROR_WINHTTP_INVALID_URL, HttpEnd::kBadAddress},
    {ERROR_WINHTTP_UNRECOGNIZED_SCHEME, HttpEnd::kBadAddress},
};

HttpEnd EndOf(const Job& job, DWORD code) {
  const bool is_channel = (job.secure_flags & WINHTTP_CALLBACK_STATUS_FLAG_SECURITY_CHANNEL_ERROR);
  if (code == ERROR_WINHTTP_SECURE_FAILURE && is_channel) return HttpEnd::kNoTls;
  const auto found = std::ranges::find(kEnds, code, [](const auto& row) { return row.code; });
  const HttpEnd end = found == std::end(kEnds) ? HttpEnd::kNoHttp : found->end;
  const bool is_nearest = end == HttpEnd::kNoName || end == HttpEnd::kNoConnection;
  return is_nearest && (job.has_named_proxy || job.asks_other) ? HttpEnd::kProxy : end;
}

void Fail(Job& job, DWORD code) {
  Finish(job, {.end = EndOf(job, code), .reason = "error " + std::to_string(code)});
}

std::string HeaderText(HINTERNET request, DWORD header) {
  DWORD bytes = 0;
  Library().query(request, header, WINHTTP_HEADER_NAME_BY_INDEX, nullptr, &bytes,
                  WINHTTP_NO_HEADER_INDEX);
  std::wstring text(bytes / sizeof(wchar_t), L'\0');
  if (text.empty() || !Library().query(request, header, WINHTTP_HEADER_NAME_BY_INDEX, text.data(),
                                       &bytes, WINHTTP_NO_HEADER_INDEX))
    return {};
  text.resize(bytes / sizeof(wchar_t));
  return Narrow(text);
}

void ReadOn(HINTERNET request, Job& job) {
  if (!Library().read(request, job.piece.data(), kPiece, nullptr)) Fail(job, GetLastError());
}

void TakeHeaders(HINTERNET request, Job& job) {
  DWORD status = 0, bytes = sizeof status;
  if (!Library().query(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                       WINHTTP_HEADER_NAME_BY_INDEX, &status, &bytes, WINHTTP_NO_HEADER_INDEX) ||
      status < 100)
    return Finish(job, HttpEnd::kNoHttp);
  if (status == kProxyWantsPassword) return Finish(job, HttpEnd::kProxy);
  const std::string length = HeaderText(request, WINHTTP_QUERY_CONTENT_LENGTH);
  if (!length.empty()) job.announced = std::strtoull(length.c_str(), nullptr, 10);
  HttpAnswer answer{.end = HttpEnd::kAnswered,
                    .status = static_cast<int>(status),
                    .location = HeaderText(request, WINHTTP_QUERY_LOCATION)};
  if (job.request.head || job.request.headers_only) return Finish(job, std::move(answer));
  {
    const std::lock_guard guard(job.ends->lock);
    if (job.is_over) return;
    job.answer = std::move(answer);
  }
  ReadOn(request, job);
}

// What is shorter than was announced is no whole answer, whatever the library says of it.
void FinishBody(Job& job) {
  if (job.announced.value_or(0) > job.body.size()) return Finish(job, HttpEnd::kCutOff);
  HttpAnswer answer;
  {
    const std::lock_guard guard(job.ends->lock);
    if (job.is_over) return;
    answer = std::move(job.answer);
  }
  answer.body = std::move(job.body);
  Finish(job, std::move(answer));
}

// What comes beyond what was announced does not count.
void TakePiece(HINTERNET request, Job& job, size_t bytes) {
  if (bytes == 0) return FinishBody(job);
  if (job.announced) bytes = std::min<uint64_t>(bytes, *job.announced - job.body.size());
  if (bytes > job.request.limit - job.body.size()) return Finish(job, HttpEnd::kTooLarge);
  job.body.append(job.piece, 0, bytes);
  job.received = job.body.size();
  if (job.announced == job.body.size()) return FinishBody(job);
  ReadOn(request, job);
}

// Whose name is looked up, where it is not the server's, is a proxy.
bool IsOther(const Job& job, const wchar_t* name) {
  return name != nullptr && !EqualsNoCase(Narrow(name), Narrow(job.host));
}

bool IsOver(Job& job) {
  const std::lock_guard guard(job.ends->lock);
  return job.is_over;
}

void CALLBACK OnStatus(HINTERNET request, DWORD_PTR context, DWORD status, void* information,
                       DWORD length) {
  auto* const owner = reinterpret_cast<std::shared_ptr<Job>*>(context);
  if (owner == nullptr) return;
  if (status == WINHTTP_CALLBACK_STATUS_HANDLE_CLOSING) {
    delete owner;
    return;
  }
  const std::shared_ptr<Job> job = *owner;
  if (IsOver(*job)) return;
  switch (status) {
    case WINHTTP_CALLBACK_STATUS_RESOLVING_NAME:
      job->asks_other = IsOther(*job, static_cast<const wchar_t*>(information));
      break;
    case WINHTTP_CALLBACK_STATUS_SECURE_FAILURE:
      job->secure_flags = *static_cast<const DWORD*>(information);
      break;
    case WINHTTP_CALLBACK_STATUS_SENDREQUEST_COMPLETE:
      if (!Library().receive(request, nullptr)) Fail(*job, GetLastError());
      break;
    case WINHTTP_CALLBACK_STATUS_HEADERS_AVAILABLE:
      TakeHeaders(request, *job);
      break;
    case WINHTTP_CALLBACK_STATUS_READ_COMPLETE:
      TakePiece(request, *job, length);
      break;
    case WINHTTP_CALLBACK_STATUS_REQUEST_ERROR:
      Fail(*job, static_cast<const WINHTTP_ASYNC_RESULT*>(information)->dwError);
      break;
  }
}

// A name in another script as the network knows it; "" for one that is none.
std::wstring NetworkName(const std::string& host) {
  const std::wstring name = Wide(host);
  if (std::ranges::all_of(name, [](wchar_t each) { return each < 0x80; })) return name;
  static const auto convert = normaliz.Find<decltype(&IdnToAscii)>("IdnToAscii");
  wchar_t ascii[256];
  const int length =
      convert(0, name.c_str(), static_cast<int>(name.size()), ascii, std::size(ascii));
  return std::wstring(ascii, static_cast<size_t>(std::max(length, 0)));
}

UniqueInternet OpenSession(const std::string& proxy) {
  const auto open = [](DWORD access, const wchar_t* server) {
    return UniqueInternet(
        Library().open(L"Quellix", access, server, WINHTTP_NO_PROXY_BYPASS, WINHTTP_FLAG_ASYNC));
  };
  // Windows takes it with its scheme as well, Wine for the proxy's name.
  const size_t scheme = proxy.find("://");
  const std::wstring server = Wide(scheme == proxy.npos ? proxy : proxy.substr(scheme + 3));
  UniqueInternet session = proxy.empty() ? open(kAutomaticProxy, WINHTTP_NO_PROXY_NAME)
                                         : open(WINHTTP_ACCESS_TYPE_NAMED_PROXY, server.c_str());
  // Before Windows 8.1.
  if (!session && proxy.empty())
    session = open(WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME);
  if (!session) ThrowLastError(Mark("Cannot use the network: %2"), "");
  return session;
}

void SetNumber(HINTERNET handle, DWORD option, DWORD number) {
  Library().set_option(handle, option, &number, sizeof number);
}

class Win32Http : public Http {
 public:
  explicit Win32Http(const HttpOptions& options)
      : has_named_proxy_(!options.proxy.empty()), session_(OpenSession(options.proxy)) {
    // Before Windows 10 nothing newer than 1.2 is known.
    DWORD protocols = kTls12 | kTls13;
    if (!Library().set_option(session_.Get(), WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols,
                              sizeof protocols))
      SetNumber(session_.Get(), WINHTTP_OPTION_SECURE_PROTOCOLS, kTls12);
    Library().set_callback(session_.Get(), &OnStatus, WINHTTP_CALLBACK_FLAG_ALL_NOTIFICATIONS, 0);
  }
  ~Win32Http() override { Win32Http::GiveUp(); }

  void Begin(size_t id, const HttpRequest& request) override {
    const std::optional<Url> url = ParseUrl(request.url);
    auto job = std::make_shared<Job>();
    job->request = request;
    job->has_named_proxy = has_named_proxy_;
    job->ends = ends_;
    job->until = Clock::now() + std::chrono::seconds(request.seconds);
    InHand& in_hand = jobs_[id];
    in_hand.job = job;
    if (url && url->IsWeb()) job->host = NetworkName(url->host);
    if (job->host.empty()) return Finish(*job, HttpEnd::kBadAddress);
    if (!Send(*url, in_hand)) Fail(*job, GetLastError());
  }

  std::vector<std::pair<size_t, HttpAnswer>> Wait(int milliseconds) override {
    std::vector<std::pair<size_t, HttpAnswer>> ended;
    if (jobs_.empty()) return ended;
    {
      std::unique_lock guard(ends_->lock);
      const auto until =
          std::min(Clock::now() + std::chrono::milliseconds(milliseconds), NextTimeout());
      ends_->changed.wait_until(guard, until, [this] { return HasEnded(); });
      TakeTimeouts();
      for (auto& [id, in_hand] : jobs_) {
        if (in_hand.job->is_over) ended.emplace_back(id, std::move(in_hand.job->answer));
      }
    }
    // Closing may call back at once.
    for (const auto& [id, answer] : ended) jobs_.erase(id);
    return ended;
  }

  uint64_t Received(size_t id) override {
    const auto found = jobs_.find(id);
    return found == jobs_.end() ? 0 : found->second.job->received.load();
  }

  void GiveUp() override {
    for (const auto& [id, in_hand] : jobs_) Finish(*in_hand.job, HttpEnd::kStopped);
    jobs_.clear();
  }

 private:
  // The request is closed before its connection.
  struct InHand {
    std::shared_ptr<Job> job;
    UniqueInternet connection, request;
  };

  bool Send(const Url& url, InHand& in_hand) {
    const bool is_secure = url.scheme == "https";
    const auto usual = static_cast<INTERNET_PORT>(is_secure ? INTERNET_DEFAULT_HTTPS_PORT
                                                            : INTERNET_DEFAULT_HTTP_PORT);
    in_hand.connection.Reset(Library().connect(session_.Get(), in_hand.job->host.c_str(),
                                               url.port == 0 ? usual : url.port, 0));
    if (!in_hand.connection) return false;
    in_hand.request.Reset(Library().open_request(
        in_hand.connection.Get(), in_hand.job->request.head ? L"HEAD" : L"GET",
        Wide(RequestTarget(url)).c_str(), nullptr, WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
        WINHTTP_FLAG_ESCAPE_DISABLE | (is_secure ? WINHTTP_FLAG_SECURE : 0)));
    if (!in_hand.request) return false;
    const HINTERNET request = in_hand.request.Get();
    SetNumber(request, WINHTTP_OPTION_DISABLE_FEATURE,
              WINHTTP_DISABLE_COOKIES | WINHTTP_DISABLE_REDIRECTS | WINHTTP_DISABLE_AUTHENTICATION |
                  WINHTTP_DISABLE_KEEP_ALIVE);
    SetNumber(request, WINHTTP_OPTION_AUTOLOGON_POLICY, WINHTTP_AUTOLOGON_SECURITY_LEVEL_HIGH);
    if (is_secure) {
      Library().set_option(request, WINHTTP_OPTION_CLIENT_CERT_CONTEXT,
                           WINHTTP_NO_CLIENT_CERT_CONTEXT, 0);
    }
    if (!has_named_proxy_ && IsThisMachine(url)) {
      WINHTTP_PROXY_INFO direct{WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr};
      Library().set_option(request, WINHTTP_OPTION_PROXY, &direct, sizeof direct);
    }
    // The request's own until its handle is closed, which is told last of all.
    auto owner = std::make_unique<std::shared_ptr<Job>>(in_hand.job);
    DWORD_PTR context = reinterpret_cast<DWORD_PTR>(owner.get());
    if (!Library().set_option(request, WINHTTP_OPTION_CONTEXT_VALUE, &context, sizeof context))
      return false;
    owner.release();  // NOLINT(bugprone-unused-return-value)
    return Library().send(request, WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, 0,
                          context) != FALSE;
  }

  bool HasEnded() const {
    return std::ranges::any_of(jobs_, [](const auto& each) { return each.second.job->is_over; });
  }
  Clock::time_point NextTimeout() const {
    Clock::time_point next = Clock::time_point::max();
    for (const auto& [id, in_hand] : jobs_) next = std::min(next, in_hand.job->until);
    return next;
  }
  void TakeTimeouts() {
    const auto now = Clock::now();
    for (const auto& [id, in_hand] : jobs_) {
      Job& job = *in_hand.job;
      if (job.is_over || job.until > now) continue;
      job.is_over = true;
      job.answer = {.end = HttpEnd::kTimeout};
    }
  }

  const bool has_named_proxy_;
  const std::shared_ptr<Ends> ends_ = std::make_shared<Ends>();
  UniqueInternet session_;
  std::map<size_t, InHand> jobs_;
};

}  // namespace

std::unique_ptr<Http> OpenHttp(const HttpOptions& options) {
  try {
    return std::make_unique<Win32Http>(options);
  } catch (const Error& error) {
    throw NotAvailable(SentenceOf(error));
  }
}

}  // namespace quellix
