#include "external/asker.h"

#include <fmt/core.h>
#include "external/curl_library.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <new>
#include <utility>

#include "external/page_fragments.h"
#include "external/server_queue.h"
#include "external/transfer.h"

namespace zvrsit {
namespace {

// So many requests that fail without any answer of a server mean that none will come.
constexpr int kMostFailures = 3;
// So many URLs that a server answers with 429 to the last mean that it wants to be left alone.
constexpr int kMostRefusals = 3;
// Redirects of robots.txt that are followed (RFC 9309).
constexpr int kMostRobotsRedirects = 5;
constexpr std::chrono::milliseconds kLongestPoll{100};

struct MultiFreer {
  void operator()(CURLM* multi) const { Curl().multi_cleanup(multi); }
};
struct ShareFreer {
  void operator()(CURLSH* share) const { Curl().share_cleanup(share); }
};

// A question on its way to its answer.
struct Task {
  const Question* question = nullptr;
  Server* server = nullptr;
  AskableUrl url;  // at hand: redirects change it
  bool usesGet = false;
  int tries = 0;
  int redirects = 0;
  bool allForGood = true;  // the redirects until now
  std::string fragment;    // the one that they name; empty for none
  Answer answer;
};

bool IsRedirect(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

ExternalFault FaultOf(const Response& response) {
  if (response.metOwnNetwork && response.code == CURLE_COULDNT_CONNECT) {
    return ExternalFault::kOwnNetwork;
  }
  if (response.proxyStatus / 100 > 2) return ExternalFault::kUnreachable;
  switch (response.code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_URL_MALFORMAT:  // letters that no host can have
      return ExternalFault::kUnknownHost;
    case CURLE_COULDNT_CONNECT:
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_PROXY:
      return ExternalFault::kUnreachable;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
      return ExternalFault::kCertificate;
    case CURLE_OPERATION_TIMEDOUT:
      return response.wasConnected ? ExternalFault::kTimeout : ExternalFault::kUnreachable;
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_PARTIAL_FILE:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return ExternalFault::kLost;
    default:
      return ExternalFault::kResponse;
  }
}

std::string DetailOf(const Response& response, ExternalFault fault) {
  if (response.headersTooLong) return "its header lines are too long";
  if (response.proxyStatus / 100 > 2) {
    return fmt::format("the proxy answers {}", response.proxyStatus);
  }
  if (response.code == CURLE_COULDNT_RESOLVE_PROXY || response.code == CURLE_PROXY) {
    return "it is the proxy that fails";
  }
  const bool isTold = fault == ExternalFault::kCertificate || fault == ExternalFault::kResponse;
  return isTold ? response.error : "";
}

// One call of AskAll.
class Run {
 public:
  Run(const ExternalSettings& settings, const std::vector<Question>& questions,
      const AskingCalls& calls)
      : settings_(settings),
        calls_(calls),
        share_(Curl().share_init()),
        multi_(Curl().multi_init()),
        queue_(settings.perServer),
        tasks_(questions.size()) {
    if (share_ == nullptr || multi_ == nullptr) throw std::bad_alloc();
    Curl().share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    Curl().multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, static_cast<long>(settings.parallel));
    for (std::size_t i = 0; i < questions.size(); ++i) {
      tasks_[i].question = &questions[i];
      tasks_[i].url = questions[i].url;
      tasks_[i].usesGet = !questions[i].fragments.empty();
      Enqueue(i, false);
    }
    progress_.all = questions.size();
  }
  ~Run() {
    for (Slot& slot : slots_) Curl().multi_remove_handle(multi_.get(), slot.transfer->handle());
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  void ToTheEnd() {
    while (progress_.done < progress_.all) {
      Fill();
      int running = 0;
      Curl().multi_perform(multi_.get(), &running);
      const bool hadMessages = TakeMessages();
      calls_.waiting(progress_);
      if (!hadMessages && progress_.done < progress_.all) Wait();
    }
  }

 private:
  static constexpr std::size_t kNoTask = static_cast<std::size_t>(-1);
  // A request on its way: of a task, or of the robots.txt of a server.
  struct Slot {
    std::unique_ptr<Transfer> transfer;
    std::size_t task = kNoTask;
    Server* server = nullptr;
    AskableUrl url;
    int redirects = 0;  // of robots.txt
    bool isIdle = true;
  };

  void Enqueue(std::size_t number, bool isFirst) {
    Task& task = tasks_[number];
    task.server = &queue_.Of(task.url.origin);
    queue_.Add(*task.server, number, isFirst);
  }

  // Begins as many requests as there may be.
  void Fill() {
    while (active_ < settings_.parallel) {
      Server* const server = queue_.Next();
      if (server == nullptr) return;
      if (settings_.robots && server->robotsState == Server::RobotsState::kUnknown) {
        BeginRobots(*server);
      } else {
        BeginNext(*server);
      }
      queue_.Consider(*server);
    }
  }

  void BeginNext(Server& server) {
    const std::size_t number = server.waiting.front();
    server.waiting.pop_front();
    Task& task = tasks_[number];
    if (server.dead) {
      task.answer.detail = server.dead->detail;
      return Finish(number, server.dead->fault);
    }
    if (!server.robots.Allows(task.url.path)) return Finish(number, ExternalFault::kRobots);
    Request request;
    request.url = task.url;
    request.isHead = !task.usesGet;
    request.keepsBody = !task.question->fragments.empty();
    if (request.keepsBody) request.mostBody = kMostPage;
    if (!Begin(request, number, server)) Finish(number, ExternalFault::kOwnNetwork);
  }

  void BeginRobots(Server& server) {
    const std::size_t number = server.waiting.front();
    const std::string& origin = tasks_[number].url.origin;
    server.robotsState = Server::RobotsState::kAsked;
    if (!BeginRobotsAt(ParseUrl(origin + "/robots.txt"), server, 0)) KnowRobots(server, "");
  }

  bool BeginRobotsAt(const std::optional<AskableUrl>& url, Server& server, int redirects) {
    Request request;
    request.keepsBody = true;
    request.mostBody = kMostRobots;
    if (url) request.url = *url;
    return url && Begin(request, kNoTask, server, redirects);
  }

  // False when it may not be asked.
  bool Begin(const Request& request, std::size_t task, Server& server, int redirects = 0) {
    Slot& slot = IdleSlot();
    if (!slot.transfer->Begin(request)) return false;
    slot.task = task;
    slot.server = &server;
    slot.url = request.url;
    slot.redirects = redirects;
    slot.isIdle = false;
    ++active_;
    ++server.active;
    Curl().easy_setopt(slot.transfer->handle(), CURLOPT_PRIVATE, &slot);
    Curl().multi_add_handle(multi_.get(), slot.transfer->handle());
    return true;
  }

  Slot& IdleSlot() {
    const auto idle = std::ranges::find(slots_, true, &Slot::isIdle);
    if (idle != slots_.end()) return *idle;
    slots_.emplace_back();
    slots_.back().transfer = std::make_unique<Transfer>(settings_, share_.get());
    return slots_.back();
  }

  bool TakeMessages() {
    bool hadAny = false;
    int left = 0;
    while (const CURLMsg* const message = Curl().multi_info_read(multi_.get(), &left)) {
      if (message->msg != CURLMSG_DONE) continue;
      hadAny = true;
      const CURLcode code = message->data.result;  // the message goes with its handle
      void* slot = nullptr;
      Curl().easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &slot);
      TakeResponse(*static_cast<Slot*>(slot), code);
    }
    return hadAny;
  }

  void TakeResponse(Slot& slot, CURLcode code) {
    Curl().multi_remove_handle(multi_.get(), slot.transfer->handle());
    const Response response = slot.transfer->Finish(code);
    slot.isIdle = true;
    --active_;
    --slot.server->active;
    Server& server = *slot.server;
    if (slot.task == kNoTask) {
      TakeRobots(slot, response);
    } else {
      TakeAnswer(slot.task, response);
    }
    queue_.Consider(server);
  }

  void TakeRobots(const Slot& slot, const Response& response) {
    Server& server = *slot.server;
    const int redirects = slot.redirects;
    const bool isRedirect = response.code == CURLE_OK && IsRedirect(response.status);
    if (isRedirect && redirects < kMostRobotsRedirects &&
        BeginRobotsAt(ParseUrl(response.location, &slot.url), server, redirects + 1)) {
      return;
    }
    const bool isThere = response.code == CURLE_OK && response.status / 100 == 2;
    KnowRobots(server, isThere ? response.body : "");
  }

  void KnowRobots(Server& server, const std::string& text) {
    const std::string& agent = settings_.userAgent;
    server.robots = Robots(text, agent.empty() ? "zvrsit" : agent);
    server.robotsState = Server::RobotsState::kKnown;
  }

  void TakeAnswer(std::size_t number, const Response& response) {
    Task& task = tasks_[number];
    task.answer.status = response.status;
    if (response.code != CURLE_OK) return TakeFault(number, response);
    task.server->hasAnswered = true;
    if (IsRedirect(response.status) && !response.location.empty()) {
      return FollowRedirect(number, response);
    }
    const bool isGood = IsAccepted(response.status, settings_);
    const bool asksToWait = response.status == 429 || response.retryAfter.has_value();
    if (!isGood && !task.usesGet && !asksToWait) return TryWithGet(number);
    const bool mayPass = MayPass(response.status) || response.retryAfter;
    if (!isGood && mayPass && TryLater(number, response)) return;
    NoteRefusal(*task.server, response);
    if (isGood) LookAtPage(task, response);
    Finish(number, ExternalFault::kNone);
  }

  static void LookAtPage(Task& task, const Response& response) {
    if (task.question->fragments.empty()) return;
    if (task.fragment.empty()) {
      task.answer.fragments = LookForFragments(
          {response.body, response.contentType, !response.isCut}, task.question->fragments);
      return;
    }
    // The browser goes where the redirect says; the fragments of the links do not count.
    for (const std::string& fragment : task.question->fragments) {
      task.answer.fragments.emplace_back(fragment, FragmentState::kFound);
    }
  }

  // Nothing more is asked of a server that wants us to wait for too long, or refuses URL after URL.
  void NoteRefusal(Server& server, const Response& response) {
    if (response.status != 429) {
      server.refusals = 0;
      return;
    }
    const bool isTooLong = response.retryAfter && *response.retryAfter > settings_.longestWait;
    if (!isTooLong && ++server.refusals < kMostRefusals) return;
    server.dead.emplace().fault = ExternalFault::kLeftAlone;
    server.notBefore = {};  // what waits for it need not
  }

  void TakeFault(std::size_t number, const Response& response) {
    Task& task = tasks_[number];
    const ExternalFault fault = FaultOf(response);
    const bool mayPass = fault == ExternalFault::kLost || fault == ExternalFault::kTimeout ||
                         fault == ExternalFault::kUnreachable;
    // Of a body that nobody wants, nothing can be missing.
    if (mayPass && task.question->fragments.empty() && IsAccepted(response.status, settings_)) {
      return Finish(number, ExternalFault::kNone);
    }
    task.answer.status = 0;
    task.answer.detail = DetailOf(response, fault);
    if (fault == ExternalFault::kLost && !task.usesGet) return TryWithGet(number);
    if (mayPass && TryLater(number, response)) return;
    NoteFailure(*task.server, task.answer, fault);
    Finish(number, fault);
  }

  // Nothing more is wanted of a server that cannot be reached, or never answered.
  void NoteFailure(Server& server, const Answer& answer, ExternalFault fault) {
    if (server.hasAnswered || fault == ExternalFault::kResponse) return;
    const bool isSure = fault != ExternalFault::kTimeout && fault != ExternalFault::kLost;
    if (!isSure && ++server.failures < kMostFailures) return;
    server.dead = answer;
    server.dead->fault = fault;
  }

  void TryWithGet(std::size_t number) {
    tasks_[number].usesGet = true;
    Enqueue(number, true);
  }

  // False when it has been tried often enough, or would have to wait for too long.
  bool TryLater(std::size_t number, const Response& response) {
    Task& task = tasks_[number];
    if (task.tries >= settings_.retries || task.server->dead) return false;
    ExternalSettings::Milliseconds delay = settings_.retryDelay * (1 << std::min(task.tries, 10));
    if (response.retryAfter) delay = *response.retryAfter;
    if (delay > settings_.longestWait) return false;
    ++task.tries;
    const auto when = AskingClock::now() + delay;
    if (response.status == 429 || response.retryAfter) queue_.Pause(*task.server, when);
    queue_.AddLater(*task.server, number, when);
    return true;
  }

  void FollowRedirect(std::size_t number, const Response& response) {
    Task& task = tasks_[number];
    std::optional<AskableUrl> next = ParseUrl(response.location, &task.url);
    task.answer.status = 0;
    if (!next) return Finish(number, ExternalFault::kScheme);
    if (++task.redirects > settings_.redirects) return Finish(number, ExternalFault::kRedirects);
    const AskableUrl& first = task.question->url;
    const bool isOfFirst = next->origin == first.origin;
    next->user = isOfFirst ? first.user : "";
    next->password = isOfFirst ? first.password : "";
    task.allForGood = task.allForGood && (response.status == 301 || response.status == 308);
    if (!next->fragment.empty()) task.fragment = next->fragment;
    if (task.allForGood) {
      task.answer.movedTo = next->url + (task.fragment.empty() ? "" : "#" + task.fragment);
    }
    task.answer.endedAt = next->url;
    task.url = *std::move(next);
    Enqueue(number, true);
  }

  void Finish(std::size_t number, ExternalFault fault) {
    Task& task = tasks_[number];
    task.answer.fault = fault;
    task.answer.time = static_cast<std::int64_t>(std::time(nullptr));
    task.answer.isLogin = !task.answer.endedAt.empty() && LooksLikeLogin(task.url) &&
                          !LooksLikeLogin(task.question->url);
    ++progress_.done;
    progress_.url = task.question->url.url;
    calls_.answered(number, task.answer);
    task.answer = Answer();
    task.url = AskableUrl();
  }

  void Wait() {
    auto longest = kLongestPoll;
    if (const auto next = queue_.NextTime()) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - AskingClock::now());
      longest = std::clamp(left, std::chrono::milliseconds(0), kLongestPoll);
    }
    Curl().multi_poll(multi_.get(), nullptr, 0, static_cast<int>(longest.count()), nullptr);
  }

  const ExternalSettings& settings_;
  const AskingCalls& calls_;
  std::unique_ptr<CURLSH, ShareFreer> share_;
  std::unique_ptr<CURLM, MultiFreer> multi_;
  ServerQueue queue_;
  std::vector<Task> tasks_;
  std::deque<Slot> slots_;
  int active_ = 0;
  AskingProgress progress_;
};

struct CurlUse {
  CurlUse() {
    if (Curl().global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) throw std::bad_alloc();
  }
  ~CurlUse() { Curl().global_cleanup(); }
  CurlUse(const CurlUse&) = delete;
  CurlUse& operator=(const CurlUse&) = delete;
};

}  // namespace

void AskAll(const ExternalSettings& settings, const std::vector<Question>& questions,
            const AskingCalls& calls) {
  const CurlUse curl;
  Run(settings, questions, calls).ToTheEnd();
}

}  // namespace zvrsit
