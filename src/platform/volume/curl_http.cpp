#include <curl/curl.h>
#include <locale.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <map>
#include <mutex>

#include "platform/error.h"
#include "platform/http.h"
#include "platform/text.h"
#include "platform/url.h"

namespace quellix {
namespace {

constexpr size_t kLargestHeaders = 64u << 10;  // bytes
constexpr int kProxyWantsPassword = 407;

struct EasyCloser {
  void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct MultiCloser {
  void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

// A request in hand. Its address is known to the library.
struct Job {
  HttpRequest request;
  std::string proxy;
  std::string host_and_port;  // as the library words it
  HttpAnswer answer;
  size_t header_bytes = 0;
  int header_status = 0;  // of the answer whose headers come
  bool is_too_large = false, has_endless_headers = false;
  char error[CURL_ERROR_SIZE] = {};
  std::unique_ptr<CURL, EasyCloser> easy;
};

size_t TakeBody(char* bytes, size_t, size_t count, void* job_pointer) {
  Job& job = *static_cast<Job*>(job_pointer);
  if (job.request.headers_only) return 0;  // ends it
  job.is_too_large = count > job.request.limit - job.answer.body.size();
  if (job.is_too_large) return 0;
  job.answer.body.append(bytes, count);
  return count;
}

// "HTTP/1.1 200 OK"
int StatusIn(std::string_view line) {
  const size_t blank = line.find(' ');
  int status = 0;
  if (blank != line.npos)
    std::from_chars(line.data() + blank + 1, line.data() + line.size(), status);
  return status;
}

size_t TakeHeader(char* bytes, size_t, size_t count, void* job_pointer) {
  Job& job = *static_cast<Job*>(job_pointer);
  job.header_bytes += count;
  job.has_endless_headers = job.header_bytes > kLargestHeaders;
  if (job.has_endless_headers) return 0;
  const std::string_view line(bytes, count);
  constexpr std::string_view kLocation = "location:";
  if (line.starts_with("HTTP/")) {
    job.answer.location.clear();  // of an answer before the last
    job.header_status = StatusIn(line);
  }
  // The body may be long in coming.
  const bool is_end = line == "\r\n" || line == "\n";
  if (is_end && job.request.headers_only && job.header_status >= 200) return 0;
  if (line.size() > kLocation.size() && EqualsNoCase(line.substr(0, kLocation.size()), kLocation)) {
    std::string_view value = line.substr(kLocation.size());
    while (!value.empty() && static_cast<unsigned char>(value.back()) <= ' ')
      value.remove_suffix(1);
    job.answer.location = TrimBlanks(value);
  }
  return count;
}

constexpr struct {
  CURLcode code;
  HttpEnd end;
} kEnds[] = {
    {CURLE_OK, HttpEnd::kAnswered},
    {CURLE_URL_MALFORMAT, HttpEnd::kBadAddress},
    {CURLE_COULDNT_RESOLVE_HOST, HttpEnd::kNoName},
    {CURLE_COULDNT_RESOLVE_PROXY, HttpEnd::kProxy},
    {CURLE_PROXY, HttpEnd::kProxy},
    {CURLE_COULDNT_CONNECT, HttpEnd::kNoConnection},
    {CURLE_PEER_FAILED_VERIFICATION, HttpEnd::kCertificate},
    {CURLE_SSL_ISSUER_ERROR, HttpEnd::kCertificate},
    {CURLE_SSL_CERTPROBLEM, HttpEnd::kCertificate},
    {CURLE_SSL_CONNECT_ERROR, HttpEnd::kNoTls},
    {CURLE_SSL_CIPHER, HttpEnd::kNoTls},
    {CURLE_OPERATION_TIMEDOUT, HttpEnd::kTimeout},
    {CURLE_PARTIAL_FILE, HttpEnd::kCutOff},
    {CURLE_GOT_NOTHING, HttpEnd::kCutOff},
    {CURLE_SEND_ERROR, HttpEnd::kCutOff},
    {CURLE_RECV_ERROR, HttpEnd::kCutOff},
};

HttpEnd EndOf(const Job& job, CURLcode code) {
  if (job.is_too_large) return HttpEnd::kTooLarge;
  if (job.has_endless_headers) return HttpEnd::kNoHttp;
  if (code == CURLE_WRITE_ERROR && job.request.headers_only) return HttpEnd::kAnswered;
  const auto found = std::ranges::find(kEnds, code, [](const auto& row) { return row.code; });
  return found == std::end(kEnds) ? HttpEnd::kNoHttp : found->end;
}

// The library tells with whom no connection came about, but only in words.
bool FailedAtProxy(const Job& job) {
  long connect_status = 0;
  curl_easy_getinfo(job.easy.get(), CURLINFO_HTTP_CONNECTCODE, &connect_status);
  if (connect_status != 0 && connect_status / 100 != 2) return true;
  if (job.answer.end != HttpEnd::kNoConnection) return false;
  return !job.proxy.empty() || (ContainsNoCase(job.error, " port ") &&
                                !ContainsNoCase(job.error, "to " + job.host_and_port + " "));
}

void Finish(Job& job, CURLcode code) {
  HttpAnswer& answer = job.answer;
  answer.end = EndOf(job, code);
  long status = 0;
  curl_easy_getinfo(job.easy.get(), CURLINFO_RESPONSE_CODE, &status);
  if (status == kProxyWantsPassword || FailedAtProxy(job)) answer.end = HttpEnd::kProxy;
  if (answer.end == HttpEnd::kAnswered) {
    answer.status = static_cast<int>(status);
    return;
  }
  answer.body.clear();
  answer.location.clear();
  answer.reason = job.error[0] != '\0' ? job.error : curl_easy_strerror(code);
}

void SetUp(Job& job) {
  CURL* const easy = job.easy.get();
  const auto set = [easy](CURLoption option, auto value) { curl_easy_setopt(easy, option, value); };
  set(CURLOPT_URL, job.request.url.c_str());
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_FOLLOWLOCATION, 0L);
  set(CURLOPT_NOBODY, job.request.head ? 1L : 0L);
  set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
  set(CURLOPT_USERAGENT, "Quellix");
  set(CURLOPT_TIMEOUT_MS, job.request.seconds * 1000L);
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_QUICK_EXIT, 1L);  // a name that is looked up keeps nobody waiting
  set(CURLOPT_FORBID_REUSE, 1L);
  set(CURLOPT_ERRORBUFFER, job.error);
  set(CURLOPT_WRITEFUNCTION, &TakeBody);
  set(CURLOPT_WRITEDATA, &job);
  set(CURLOPT_HEADERFUNCTION, &TakeHeader);
  set(CURLOPT_HEADERDATA, &job);
  set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  if (!job.proxy.empty()) {
    set(CURLOPT_PROXY, job.proxy.c_str());
    set(CURLOPT_NOPROXY, "");
  }
}

// While it lives, the library takes names of servers in other scripts for UTF-8, on this thread.
class Utf8Names {
 public:
  Utf8Names() {
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (utf8 != nullptr) before_ = uselocale(utf8);
  }
  ~Utf8Names() {
    if (before_ != nullptr) uselocale(before_);
  }
  Utf8Names(const Utf8Names&) = delete;
  Utf8Names& operator=(const Utf8Names&) = delete;

 private:
  locale_t before_ = nullptr;
};

class CurlHttp : public Http {
 public:
  explicit CurlHttp(const HttpOptions& options) : proxy_(options.proxy) {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    multi_.reset(curl_multi_init());
    if (!multi_) throw Error(Error::Kind::kOther, "Web servers cannot be asked: libcurl fails.");
  }
  ~CurlHttp() override { CurlHttp::GiveUp(); }

  void Begin(size_t id, const HttpRequest& request) override {
    const std::optional<Url> url = ParseUrl(request.url);
    if (!url || !url->IsWeb()) {
      ended_.emplace_back(id, HttpAnswer{.end = HttpEnd::kBadAddress});
      return;
    }
    auto job = std::make_unique<Job>();
    job->request = request;
    job->request.url = RequestText(*url);
    job->proxy = proxy_;
    const int usual_port = url->scheme == "https" ? 443 : 80;
    job->host_and_port =
        url->host + " port " + std::to_string(url->port == 0 ? usual_port : url->port);
    job->easy.reset(curl_easy_init());
    SetUp(*job);
    if (proxy_.empty() && IsThisMachine(*url)) {
      curl_easy_setopt(job->easy.get(), CURLOPT_PROXY, "");
    }
    curl_multi_add_handle(multi_.get(), job->easy.get());
    jobs_[id] = std::move(job);
  }

  std::vector<std::pair<size_t, HttpAnswer>> Wait(int milliseconds) override {
    using Clock = std::chrono::steady_clock;
    const auto until = Clock::now() + std::chrono::milliseconds(milliseconds);
    Advance();
    while (ended_.empty() && !jobs_.empty() && Clock::now() < until) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
      curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(left.count()), nullptr);
      Advance();
    }
    return std::exchange(ended_, {});
  }

  uint64_t Received(size_t id) override {
    const auto found = jobs_.find(id);
    return found == jobs_.end() ? 0 : found->second->answer.body.size();
  }

  void GiveUp() override {
    for (const auto& [id, job] : jobs_) curl_multi_remove_handle(multi_.get(), job->easy.get());
    jobs_.clear();
    ended_.clear();
  }

 private:
  void Advance() {
    int running = 0, left = 0;
    const Utf8Names names;
    curl_multi_perform(multi_.get(), &running);
    while (const CURLMsg* const message = curl_multi_info_read(multi_.get(), &left)) {
      if (message->msg == CURLMSG_DONE) TakeEnded(message->easy_handle, message->data.result);
    }
  }

  void TakeEnded(const CURL* easy, CURLcode code) {
    const auto found = std::ranges::find_if(
        jobs_, [easy](const auto& job) { return job.second->easy.get() == easy; });
    Job& job = *found->second;
    curl_multi_remove_handle(multi_.get(), job.easy.get());
    Finish(job, code);
    ended_.emplace_back(found->first, std::move(job.answer));
    jobs_.erase(found);
  }

  const std::string proxy_;
  std::unique_ptr<CURLM, MultiCloser> multi_;
  std::map<size_t, std::unique_ptr<Job>> jobs_;
  std::vector<std::pair<size_t, HttpAnswer>> ended_;
};

}  // namespace

std::unique_ptr<Http> OpenHttp(const HttpOptions& options) {
  return std::make_unique<CurlHttp>(options);
}

}  // namespace quellix
