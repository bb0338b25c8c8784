// The library that speaks HTTP, over cpp-httplib.
#include <httplib.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "cli/web_listener.h"

namespace zvrsit::cli {
namespace {

// How long one who says nothing is waited for, in seconds.
constexpr int kPatience = 3;
// So many are answered at the same time, slow ones and those who wait for events; the next have to
// wait.
constexpr std::size_t kMostThreads = 256;
constexpr int kMostWaiting = 64;

// A thread for each conversation, so that a slow one holds up nobody.
class ThreadEach : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> talk) override {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return count_ < kMostThreads; });
    ++count_;
    std::thread([this, talk = std::move(talk)] {
      talk();
      const std::lock_guard ending(mutex_);
      --count_;
      changed_.notify_all();
    }).detach();
  }
  void shutdown() override {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return count_ == 0; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t count_ = 0;
};

class HttpListener : public WebListener {
 public:
  explicit HttpListener(WebHandler& handler) : handler_(handler) {}

  bool Begin(int port) {
    server_.new_task_queue = [] { return new ThreadEach; };
    server_.set_read_timeout(kPatience);
    server_.set_write_timeout(kPatience);
    server_.set_keep_alive_timeout(kPatience);
    server_.set_tcp_nodelay(true);
    // The library would share a port with other programs.
    server_.set_socket_options([](socket_t) {});
    server_.set_pre_routing_handler(
        [this](const httplib::Request& asked, httplib::Response& answer) {
          Answer(asked, answer);
          return httplib::Server::HandlerResponse::Handled;
        });
    port_ = port > 0 ? (server_.bind_to_port("127.0.0.1", port) ? port : -1)
                     : server_.bind_to_any_port("127.0.0.1");
    if (port_ <= 0) return false;
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return true;
  }
  ~HttpListener() override {
    isEnding_ = true;
    if (!thread_.joinable()) return;
    server_.stop();
    thread_.join();
  }
  int port() const override { return port_; }

 private:
  // Names that mean this machine only: a page of another site may have a name of its own lead here.
  bool IsForUs(const httplib::Request& asked) const {
    const std::string host = asked.get_header_value("Host");
    const std::string port = ":" + std::to_string(port_);
    return asked.get_header_value_count("Host") == 1 &&
           (host == "127.0.0.1" + port || host == "localhost" + port);
  }

  void Answer(const httplib::Request& asked, httplib::Response& answer) {
    WebAnswer ours;
    if (!IsForUs(asked)) {
      ours = {421, "text/plain; charset=utf-8", {}, "This server has another name.\n", false};
    } else if (asked.method != "GET" && asked.method != "HEAD") {
      ours = {405,
              "text/plain; charset=utf-8",
              {{"Allow", "GET, HEAD"}},
              "Nothing is written here.\n",
              false};
    } else {
      const std::size_t mark = asked.target.find('?');
      ours = handler_.Answer({asked.target.substr(0, mark),
                              mark == asked.target.npos ? "" : asked.target.substr(mark + 1),
                              asked.get_header_value("Cookie")});
    }
    if (ours.isEvents && (asked.method == "HEAD" || waiting_ >= kMostWaiting)) {
      ours = {503, "text/plain; charset=utf-8", {}, "Too many wait for events.\n", false};
    }
    answer.status = ours.status;
    for (const auto& [name, value] : ours.headers) answer.set_header(name, value);
    // What was sent along has not been read.
    if (ours.status == 405 || ours.status == 421) answer.set_header("Connection", "close");
    if (!ours.isEvents) return answer.set_content(ours.body, ours.type);
    ++waiting_;
    answer.set_chunked_content_provider(
        "text/event-stream",
        [this, seen = 0U](std::size_t, httplib::DataSink& sink) mutable {
          std::string text;
          if (isEnding_ || !handler_.NextEvents(seen, text)) {
            sink.done();
            return false;
          }
          return sink.write(text.data(), text.size());
        },
        [this](bool) { --waiting_; });
  }

  WebHandler& handler_;
  httplib::Server server_;
  std::thread thread_;
  int port_ = -1;
  std::atomic<int> waiting_{0};
  std::atomic<bool> isEnding_{false};
};

}  // namespace
}  // namespace zvrsit::cli

extern "C" __attribute__((visibility("default"))) zvrsit::cli::WebListener*
zvrsit_make_web_listener(zvrsit::cli::WebHandler* handler, int port) {
  auto listener = std::make_unique<zvrsit::cli::HttpListener>(*handler);
  return listener->Begin(port) ? listener.release() : nullptr;
}
