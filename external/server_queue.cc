#include "external/server_queue.h"

namespace zvrsit {

Server& ServerQueue::Of(const std::string& origin) {
  std::unique_ptr<Server>& server = servers_[origin];
  if (server == nullptr) server = std::make_unique<Server>();
  return *server;
}

void ServerQueue::Add(Server& server, std::size_t task, bool isFirst) {
  if (isFirst) {
    server.waiting.push_front(task);
  } else {
    server.waiting.push_back(task);
  }
  Consider(server);
}

void ServerQueue::AddLater(Server& server, std::size_t task, AskingClock::time_point when) {
  sleeping_.push({when, &server, task});
}

void ServerQueue::Pause(Server& server, AskingClock::time_point until) {
  if (until > server.notBefore) server.notBefore = until;
  sleeping_.push({until, &server, std::nullopt});
}

void ServerQueue::Consider(Server& server) {
  const bool mayBeAsked = server.robotsState != Server::RobotsState::kAsked &&
                          server.active < perServer_ && server.notBefore <= AskingClock::now();
  if (server.isListed || server.waiting.empty() || !mayBeAsked) return;
  server.isListed = true;
  ready_.push_back(&server);
}

void ServerQueue::Wake() {
  const AskingClock::time_point now = AskingClock::now();
  while (!sleeping_.empty() && sleeping_.top().when <= now) {
    const Sleeper sleeper = sleeping_.top();
    sleeping_.pop();
    if (sleeper.task) sleeper.server->waiting.push_front(*sleeper.task);
    Consider(*sleeper.server);
  }
}

Server* ServerQueue::Next() {
  Wake();
  while (!ready_.empty()) {
    Server* const server = ready_.front();
    ready_.pop_front();
    server->isListed = false;
    const bool mayBeAsked = !server->waiting.empty() && server->notBefore <= AskingClock::now();
    if (mayBeAsked) return server;
  }
  return nullptr;
}

std::optional<AskingClock::time_point> ServerQueue::NextTime() const {
  if (sleeping_.empty()) return std::nullopt;
  return sleeping_.top().when;
}

}  // namespace zvrsit
