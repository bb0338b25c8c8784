// One request over libcurl, and the response to it.
#pragma once

#include "external/curl_library.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "external/settings.h"
#include "external/url.h"

namespace zvrsit {

// How much of a body is read where nothing is wanted of it: one that ends before that leaves its
// connection to the next request.
inline constexpr std::size_t kMostUnwanted = 64 * 1024;
// How much of a page is read for its IDs, decompressed. It is kept in memory while it comes.
inline constexpr std::size_t kMostPage = 4 * 1024 * 1024;
// How long the header lines of a response may be, all together.
inline constexpr std::size_t kMostHeaders = 256 * 1024;

struct Request {
  AskableUrl url;
  bool isHead = false;
  bool keepsBody = false;
  std::size_t mostBody = kMostUnwanted;  // the transfer ends where there is more
};

struct Response {
  CURLcode code = CURLE_OK;
  int status = 0;           // 0 for none
  int proxyStatus = 0;      // of a proxy that was to lead through to the server; 0 for none
  std::string error;        // of a failure, in libcurl's words
  std::string location;     // as the server says it; empty for none
  std::string contentType;  // in lower case
  std::string body;         // where it is kept
  // Its body is longer than was wanted, or could not be unpacked to its end; `code` is CURLE_OK
  // then.
  bool isCut = false;
  bool wasConnected = false;
  bool metOwnNetwork = false;  // a connection there was wanted, and was not made
  bool headersTooLong = false;
  std::optional<ExternalSettings::Milliseconds> retryAfter;
};

struct EasyFreer {
  void operator()(CURL* easy) const {
    ForgetCookieFiles(easy);
    Curl().easy_cleanup(easy);
  }
  // libcurl 7.88 loses the list of them when a transfer never began.
  static void ForgetCookieFiles(CURL* easy) {
    Curl().easy_setopt(easy, CURLOPT_COOKIEFILE, nullptr);
  }
};

// Makes one request after the other. Between Begin and Finish its handle is with a multi handle.
class Transfer {
 public:
  // Cookies are shared over `share`. The settings and `share` must outlive it.
  Transfer(const ExternalSettings& settings, CURLSH* share);
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  CURL* handle() { return easy_.get(); }
  // Sets the handle up. False for a host that must not be asked of a proxy either.
  [[nodiscard]] bool Begin(const Request& request);
  Response Finish(CURLcode code);

 private:
  void SetCommon();
  void SetRequest(const Request& request);
  void NoteHeader(std::string_view line);
  static std::size_t OnHeader(char* bytes, std::size_t size, std::size_t count, void* self);
  static std::size_t OnBody(char* bytes, std::size_t size, std::size_t count, void* self);
  static curl_socket_t OnSocket(void* self, curlsocktype purpose, curl_sockaddr* address);

  const ExternalSettings& settings_;
  CURLSH* share_;
  std::unique_ptr<CURL, EasyFreer> easy_;
  std::unique_ptr<char[]> error_;
  bool keepsBody_ = false;
  bool usesProxy_ = false;
  std::size_t mostBody_ = 0;
  std::size_t headerBytes_ = 0;
  std::size_t bodyBytes_ = 0;
  Response response_;
};

}  // namespace zvrsit
