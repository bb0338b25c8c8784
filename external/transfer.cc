#include "external/transfer.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <new>

#include "external/own_network.h"
#include "external/proxy.h"
#include "platform/version.h"
#include "util/ascii.h"

namespace zvrsit {
namespace {

template <class T>
T InfoOf(CURL* easy, CURLINFO what, T value) {
  Curl().easy_getinfo(easy, what, &value);
  return value;
}

std::string TextInfoOf(CURL* easy, CURLINFO what) {
  const char* const text = InfoOf<const char*>(easy, what, nullptr);
  return text != nullptr ? text : "";
}

long Count(ExternalSettings::Milliseconds time) {
  return std::max(1L, static_cast<long>(time.count()));  // 0 would mean for ever
}

}  // namespace

Transfer::Transfer(const ExternalSettings& settings, CURLSH* share)
    : settings_(settings),
      share_(share),
      easy_(Curl().easy_init()),
      error_(new char[CURL_ERROR_SIZE]()) {
  if (easy_ == nullptr) throw std::bad_alloc();
}

bool Transfer::Begin(const Request& request) {
  EasyFreer::ForgetCookieFiles(easy_.get());
  Curl().easy_reset(easy_.get());
  response_ = Response();
  keepsBody_ = request.keepsBody;
  mostBody_ = request.mostBody;
  headerBytes_ = bodyBytes_ = 0;
  error_[0] = '\0';
  const std::string proxy = ProxyFor(request.url);
  usesProxy_ = !proxy.empty();
  if (usesProxy_ && !settings_.privateNetwork && NamesOwnNetwork(request.url.host)) return false;
  Curl().easy_setopt(easy_.get(), CURLOPT_PROXY, proxy.c_str());
  Curl().easy_setopt(easy_.get(), CURLOPT_NOPROXY, "");
  SetCommon();
  SetRequest(request);
  return true;
}

void Transfer::SetCommon() {
  CURL* const easy = easy_.get();
  Curl().easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  Curl().easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);  // waits for no slow name server
  Curl().easy_setopt(easy, CURLOPT_SHARE, share_);
  Curl().easy_setopt(easy, CURLOPT_COOKIEFILE, "");  // no file, but cookies
  Curl().easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  Curl().easy_setopt(easy, CURLOPT_ERRORBUFFER, error_.get());
  Curl().easy_setopt(easy, CURLOPT_HEADERFUNCTION, &Transfer::OnHeader);
  Curl().easy_setopt(easy, CURLOPT_HEADERDATA, this);
  Curl().easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Transfer::OnBody);
  Curl().easy_setopt(easy, CURLOPT_WRITEDATA, this);
  if (!settings_.privateNetwork) {
    Curl().easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, &Transfer::OnSocket);
    Curl().easy_setopt(easy, CURLOPT_OPENSOCKETDATA, this);
  }
  Curl().easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, Count(settings_.connectTimeout));
  Curl().easy_setopt(easy, CURLOPT_TIMEOUT_MS, Count(settings_.timeout));
  Curl().easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
  Curl().easy_setopt(easy, CURLOPT_LOW_SPEED_TIME,
                     std::max(1L, (Count(settings_.stallTimeout) + 999) / 1000));
  const std::string agent =
      settings_.userAgent.empty() ? std::string("zvrsit/") + Version() : settings_.userAgent;
  Curl().easy_setopt(easy, CURLOPT_USERAGENT, agent.c_str());
  if (!settings_.caFile.empty()) Curl().easy_setopt(easy, CURLOPT_CAINFO, settings_.caFile.c_str());
  if (!settings_.netrc.empty()) {
    Curl().easy_setopt(easy, CURLOPT_NETRC, static_cast<long>(CURL_NETRC_OPTIONAL));
    Curl().easy_setopt(easy, CURLOPT_NETRC_FILE, settings_.netrc.c_str());
  }
}

void Transfer::SetRequest(const Request& request) {
  CURL* const easy = easy_.get();
  Curl().easy_setopt(easy, CURLOPT_URL, request.url.url.c_str());
  Curl().easy_setopt(easy, CURLOPT_NOBODY, request.isHead ? 1L : 0L);
  // Whether a server takes several requests over one connection is known when the first is made.
  Curl().easy_setopt(easy, CURLOPT_PIPEWAIT, request.url.isSecure() ? 1L : 0L);
  if (request.keepsBody) Curl().easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
  if (!request.url.user.empty()) {
    Curl().easy_setopt(easy, CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
    Curl().easy_setopt(easy, CURLOPT_USERNAME, request.url.user.c_str());
    Curl().easy_setopt(easy, CURLOPT_PASSWORD, request.url.password.c_str());
  }
}

// Of several responses (to a login, to "continue") the last one counts.
void Transfer::NoteHeader(std::string_view line) {
  constexpr std::string_view kLocation = "location:";
  if (line.starts_with("HTTP/")) response_.location.clear();
  if (line.size() < kLocation.size() || !EqualsLower(line.substr(0, kLocation.size()), kLocation)) {
    return;
  }
  response_.location = line.substr(kLocation.size());
}

std::size_t Transfer::OnHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<Transfer*>(self);
  transfer.headerBytes_ += size * count;
  transfer.response_.headersTooLong = transfer.headerBytes_ > kMostHeaders;
  if (transfer.response_.headersTooLong) return 0;
  transfer.NoteHeader({bytes, size * count});
  return size * count;
}

std::size_t Transfer::OnBody(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<Transfer*>(self);
  const std::size_t got = size * count;
  const std::size_t left = transfer.mostBody_ - transfer.bodyBytes_;
  const std::size_t taken = std::min(got, left);
  if (transfer.keepsBody_) transfer.response_.body.append(bytes, taken);
  transfer.bodyBytes_ += taken;
  transfer.response_.isCut = taken < got;
  return taken;
}

curl_socket_t Transfer::OnSocket(void* self, curlsocktype, curl_sockaddr* address) {
  auto& transfer = *static_cast<Transfer*>(self);
  if (!transfer.usesProxy_ && IsOwnNetwork(address->addr)) {
    transfer.response_.metOwnNetwork = true;
    return CURL_SOCKET_BAD;
  }
  return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

Response Transfer::Finish(CURLcode code) {
  CURL* const easy = easy_.get();
  Response& response = response_;
  response.isCut = response.isCut || code == CURLE_BAD_CONTENT_ENCODING;
  const bool isOurCut = code == CURLE_WRITE_ERROR || code == CURLE_BAD_CONTENT_ENCODING;
  response.code = response.isCut && isOurCut ? CURLE_OK : code;
  response.status = static_cast<int>(InfoOf<long>(easy, CURLINFO_RESPONSE_CODE, 0));
  response.proxyStatus = static_cast<int>(InfoOf<long>(easy, CURLINFO_HTTP_CONNECTCODE, 0));
  if (code != CURLE_OK)
    response.error = error_[0] != '\0' ? error_.get() : Curl().easy_strerror(code);
  response.contentType = TextInfoOf(easy, CURLINFO_CONTENT_TYPE);
  LowerAsciiLetters(response.contentType);
  response.wasConnected = InfoOf<curl_off_t>(easy, CURLINFO_CONNECT_TIME_T, 0) > 0 ||
                          InfoOf<long>(easy, CURLINFO_NUM_CONNECTS, 0) == 0;
  const auto seconds = InfoOf<curl_off_t>(easy, CURLINFO_RETRY_AFTER, 0);
  if (seconds > 0)
    response.retryAfter = ExternalSettings::Seconds(std::min<curl_off_t>(seconds, 1 << 30));
  return std::move(response_);
}

}  // namespace zvrsit
