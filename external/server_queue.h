// Which URL is asked next: the servers take turns.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <queue>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "external/answer.h"
#include "external/robots.h"

namespace zvrsit {

using AskingClock = std::chrono::steady_clock;

// One scheme, host and port.
struct Server {
  std::deque<std::size_t> waiting;  // numbers of tasks
  int active = 0;                   // requests
  bool isListed = false;            // in the queue
  AskingClock::time_point notBefore{};
  enum class RobotsState { kUnknown, kAsked, kKnown } robotsState = RobotsState::kUnknown;
  Robots robots;
  bool hasAnswered = false;
  int failures = 0;            // in a row, without any answer
  int refusals = 0;            // in a row, of URLs that were given up after 429
  std::optional<Answer> dead;  // what everything here is answered with
};

class ServerQueue {
 public:
  explicit ServerQueue(int perServer) : perServer_(perServer) {}

  // The server of an origin; made when it is new. It stays where it is.
  Server& Of(const std::string& origin);
  // Adds a task of a server, to be taken now or after a delay. The tasks that are delayed or come
  // back go before those that never had their turn.
  void Add(Server& server, std::size_t task, bool isFirst = false);
  void AddLater(Server& server, std::size_t task, AskingClock::time_point when);
  // Leaves the server alone until then.
  void Pause(Server& server, AskingClock::time_point until);
  // What has changed with the server may let it have its turn.
  void Consider(Server& server);

  // The next server that may be asked, and has something to be asked; null for none.
  Server* Next();
  // When Next may have another answer by time alone; nothing when never.
  std::optional<AskingClock::time_point> NextTime() const;

 private:
  struct Sleeper {
    AskingClock::time_point when;
    Server* server;
    std::optional<std::size_t> task;
    bool operator>(const Sleeper& other) const { return when > other.when; }
  };
  void Wake();

  const int perServer_;
  std::unordered_map<std::string, std::unique_ptr<Server>> servers_;
  std::deque<Server*> ready_;
  std::priority_queue<Sleeper, std::vector<Sleeper>, std::greater<>> sleeping_;
};

}  // namespace zvrsit
