// What other servers answer: whole responses, robots.txt, pages whose fragments are looked for; and
// the file in which answers are kept.
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "external/asker.h"
#include "external/kept_answers.h"
#include "external/page_fragments.h"
#include "external/robots.h"
#include "fuzz/target.h"
#include "support/temp_folder.h"

namespace zvrsit::fuzz {
namespace {

// A path in the first line, then the file.
void ReadRobots(std::string_view text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const Robots robots(text.substr(std::min(end + 1, text.size())), "zvrsit/1.0");
  (void)robots.Allows(text.substr(0, end));
  (void)robots.Allows("/a/b.html?c=d");
}

// A fragment in the first line, then the page.
void ReadAnsweredPage(std::string_view text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string fragment(text.substr(0, end));
  for (const bool isWhole : {true, false}) {
    const ReceivedPage page{text.substr(std::min(end + 1, text.size())), "text/html", isWhole};
    const auto states = LookForFragments(page, {fragment, "top"});
    if (states.size() != 2 || states[0].first != fragment) std::abort();
  }
}

// What is kept is found, whatever the file was.
void ReadKeptFile(std::string_view bytes) {
  static const test::TempFolder folder;
  const std::string file = folder.native("answers");
  test::WriteWhole(file, bytes);
  Answer answer;
  answer.time = std::time(nullptr);
  answer.status = 301;
  answer.movedTo = "http://b/";
  answer.fragments = {{"top", FragmentState::kFound}};
  {
    KeptAnswers kept(file);
    (void)kept.Find("http://a/");
    kept.Keep("http://a/", answer);
    kept.WriteSometimes();
    if (!kept.fault().empty()) return;
    const std::optional<Answer> found = kept.Find("http://a/");
    if (kept.fault().empty() && (!found || found->status != 301 || found->movedTo != "http://b/")) {
      std::abort();
    }
  }
  unlink((file + "-journal").c_str());
}

// Answers every connection with the same bytes, and closes it.
class FixedServer {
 public:
  FixedServer() : listening_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    if (bind(listening_, any, length) != 0 || listen(listening_, 64) != 0 ||
        getsockname(listening_, any, &length) != 0) {
      std::abort();
    }
    port_ = ntohs(address.sin_port);
    std::thread([this] { Serve(); }).detach();
  }
  int port() const { return port_; }
  void Set(std::string_view answer) {
    const std::lock_guard using_(mutex_);
    answer_ = answer;
  }

 private:
  void Serve() {
    for (;;) {
      const int connection = accept(listening_, nullptr, nullptr);
      if (connection < 0) continue;
      char request[4096];
      (void)recv(connection, request, sizeof request, 0);
      {
        const std::lock_guard using_(mutex_);
        (void)send(connection, answer_.data(), answer_.size(), MSG_NOSIGNAL);
      }
      close(connection);
    }
  }

  int listening_;
  int port_ = 0;
  std::mutex mutex_;
  std::string answer_;
};

// The server stands in for all servers, as their proxy: no redirect leads out of the machine.
FixedServer& ServerOfAll() {
  static FixedServer& server = *[] {
    auto* const made = new FixedServer;
    const std::string proxy = "http://127.0.0.1:" + std::to_string(made->port());
    for (const char* name : {"http_proxy", "https_proxy"}) setenv(name, proxy.c_str(), 1);
    for (const char* name : {"no_proxy", "NO_PROXY"}) unsetenv(name);
    return made;
  }();
  return server;
}

void ReadResponse(std::string_view response) {
  ServerOfAll().Set(response);
  ExternalSettings settings;
  settings.fragments = true;
  settings.retries = 0;
  settings.redirects = 2;
  settings.retryDelay = settings.longestWait = ExternalSettings::Milliseconds(1);
  settings.connectTimeout = settings.stallTimeout = settings.timeout =
      ExternalSettings::Milliseconds(500);
  settings.robots = response.size() % 2 == 0;
  const std::vector<Question> questions = {{*ParseUrl("http://a.example/p#top"), {"top"}},
                                           {*ParseUrl("http://a.example/q"), {}}};
  std::size_t count = 0;
  AskingCalls calls;
  calls.answered = [&](std::size_t, const Answer& answer) {
    ++count;
    (void)Judge(answer, settings);
    (void)StateOfFragment(answer, "top");
    if (!answer.movedTo.empty() && !ParseUrl(answer.movedTo)) std::abort();
    if (!answer.endedAt.empty() && !ParseUrl(answer.endedAt)) std::abort();
  };
  calls.waiting = [](const AskingProgress&) {};
  AskAll(settings, questions, calls);
  if (count != questions.size()) std::abort();
}

// The first byte chooses what the rest is.
void ReadAnswer(std::string_view input) {
  constexpr void (*kReaders[])(std::string_view) = {&ReadRobots, &ReadAnsweredPage, &ReadKeptFile,
                                                    &ReadResponse};
  if (input.empty()) return;
  const auto which = static_cast<unsigned char>(input[0] - '0');
  kReaders[which % std::size(kReaders)](input.substr(1));
}

std::string KeptSeed() {
  const test::TempFolder folder;
  {
    KeptAnswers kept(folder.native("answers"));
    Answer answer;
    answer.time = std::time(nullptr);
    answer.status = 200;
    answer.fragments = {{"top", FragmentState::kMissing}};
    kept.Keep("http://a/", answer);
  }
  return "2" + folder.read("answers");
}

std::vector<std::string> AnswerSeeds() {
  return {
      "0/a/b.html\nUser-agent: zvrsit\nDisallow: /a/*.html$\nAllow: /a/b\n\nUser-agent: *\n"
      "Disallow: /\n",
      "0/x\n\xEF\xBB\xBFuser-AGENT : *\r\nuser-agent: b\rDisallow: # nothing\nAllow:/%41**b$$\n",
      "1top\n<html><p id=top><a name=a%20b>x</a><p id='user-content-c'></html>",
      "1a%20b\n<meta charset=shift_jis><p id=\x83\\>",
      "3HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 12\r\n\r\n<p id='top'>",
      "3HTTP/1.1 301 Moved\r\nLocation: /b?c#d\r\nContent-Length: 0\r\n\r\n",
      "3HTTP/1.1 302 Found\r\nLocation: https://user:pw@b.example:8/login\r\nSet-Cookie: "
      "a=b\r\n\r\n",
      "3HTTP/1.1 429 Slow\r\nRetry-After: Wed, 21 Oct 2037 07:28:00 GMT\r\n\r\n",
      "3HTTP/1.1 503 Busy\r\nRetry-After: 1\r\nTransfer-Encoding: "
      "chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n",
      "3HTTP/1.0 404 None\r\nContent-Encoding: gzip\r\n\r\nxyz",
      KeptSeed()};
}

}  // namespace

const Target kAnswersTarget = {"answers", &ReadAnswer, &AnswerSeeds};

}  // namespace zvrsit::fuzz
