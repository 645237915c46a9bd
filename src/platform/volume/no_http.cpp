#include "platform/error.h"
#include "platform/http.h"

namespace quellix {

std::unique_ptr<Http> OpenHttp(const HttpOptions& /*options*/) {
  throw NotAvailable("This program was built without libcurl and can ask no web server.");
}

}  // namespace quellix
