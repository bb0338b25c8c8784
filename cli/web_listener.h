// A server of web pages on the loopback. What speaks with browsers is a library of its own, which
// is loaded when it is needed: what it stands on takes longer to load than the rest of the program.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zvrsit::cli {

// GET or HEAD of an address, from one who has named this server as its host.
struct WebRequest {
  std::string path;   // as the browser has sent it, percent-encoded; begins with "/"
  std::string query;  // what follows "?"; likewise
  std::string cookies;
};

struct WebAnswer {
  int status = 200;
  std::string type = "text/plain; charset=utf-8";
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  bool isEvents = false;  // the browser stays, and is told of events; there is no body
};

// Who answers. Several threads call at the same time.
class WebHandler {
 public:
  virtual ~WebHandler() = default;
  virtual WebAnswer Answer(const WebRequest& request) = 0;
  // Waits for the events after number `seen`, but no longer than some seconds, and gives their text
  // in the form of server-sent events; one that says nothing when there are none. `seen`: at first
  // 0. False when there will be no more.
  virtual bool NextEvents(unsigned& seen, std::string& text) = 0;
};

class WebListener {
 public:
  // Ends all conversations; the handler is not called any more.
  virtual ~WebListener() = default;
  virtual int port() const = 0;
};

// Listens on 127.0.0.1, on that port or (0) on any that is free, and answers through `handler`,
// which stays the caller's. Throws Failure: kUsage where the program cannot serve, kFileSystem when
// the port cannot be had.
std::unique_ptr<WebListener> ListenOnLoopback(WebHandler& handler, int port);

// What the library has; null when the port cannot be had.
using MakeWebListener = WebListener* (*)(WebHandler* handler, int port);
inline constexpr const char* kMakeWebListener = "zvrsit_make_web_listener";
inline constexpr const char* kListenerLibrary = "libzvrsit-serve.so";

}  // namespace zvrsit::cli
