#include "external/url_asker.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <unordered_map>
#include <utility>

#include "external/asker.h"
#include "external/kept_answers.h"
#include "external/url.h"
#include "links/fragment.h"

namespace zvrsit {
namespace {

// One URL without a fragment, however often it is linked to.
struct Asked {
  Question question;
  std::optional<Answer> answer;
};

// The same URL with other passwords is another one.
std::string KeyOf(const AskableUrl& url) {
  return url.user + '\n' + url.password + '\n' + url.url;
}

class Batch {
 public:
  Batch(const std::vector<std::string>& urls, const ExternalSettings& settings,
        const std::string& file)
      : settings_(settings), kept_(file) {
    std::unordered_map<std::string, std::size_t> known;
    for (const std::string& text : urls) {
      std::optional<AskableUrl> url = ParseUrl(text);
      if (!url) {
        places_.push_back({});
        continue;
      }
      const std::string written = url->fragment;
      const std::string fragment = WantedFragment(written);
      const auto [entry, isNew] = known.try_emplace(KeyOf(*url), asked_.size());
      if (isNew) asked_.push_back({{*std::move(url), {}}, {}});
      auto& fragments = asked_[entry->second].question.fragments;
      if (!fragment.empty() && std::ranges::find(fragments, fragment) == fragments.end()) {
        fragments.push_back(fragment);
      }
      places_.push_back({entry->second, written, fragment});
    }
  }

  void UseKept() {
    const std::int64_t now = std::time(nullptr);
    for (Asked& one : asked_) {
      if (MayBeKept(one)) one.answer = kept_.Find(one.question.url.url);
      if (!one.answer || settings_.offline) continue;
      if (IsStale(*one.answer, settings_, now) || LacksFragment(one)) one.answer.reset();
    }
    fromBefore_ = static_cast<std::size_t>(
        std::ranges::count_if(asked_, [](const Asked& one) { return one.answer.has_value(); }));
    if (!settings_.offline) return;
    for (Asked& one : asked_) {
      if (one.answer) continue;
      one.answer.emplace();
      one.answer->fault = ExternalFault::kNotKept;
    }
  }

  void AskTheRest(const WhileAsking& whileAsking) {
    std::vector<Question> questions;
    std::vector<Asked*> open;
    for (Asked& one : asked_) {
      if (one.answer) continue;
      questions.push_back(one.question);
      open.push_back(&one);
    }
    now_ = open.size();
    if (open.empty()) return;
    AskingCalls calls;
    calls.answered = [&](std::size_t number, const Answer& answer) {
      Asked& one = *open[number];
      one.answer = answer;
      if (answer.fault == ExternalFault::kUnknownHost ||
          answer.fault == ExternalFault::kUnreachable) {
        ++unreached_;
      }
      const bool isForNowOnly = answer.fault >= ExternalFault::kOwnNetwork;
      if (!isForNowOnly && MayBeKept(one)) kept_.Keep(one.question.url.url, answer);
    };
    calls.waiting = [&](const AskingProgress& progress) {
      kept_.WriteSometimes();
      whileAsking(progress.done, progress.all, progress.url);
    };
    AskAll(settings_, questions, calls);
  }

  AskedUrls Results() const {
    AskedUrls all;
    all.asked = now_;
    all.kept = fromBefore_;
    all.unreached = unreached_;
    all.fault = kept_.fault();
    for (const Place& place : places_) all.results.push_back(ResultOf(place));
    return all;
  }

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  // One of the given URLs.
  struct Place {
    std::size_t asked = kNone;  // in asked_; kNone: it cannot be asked
    std::string written;        // its fragment
    std::string fragment;       // the part of it that is looked for
  };

  // The fragment that is to be looked for; empty for none.
  std::string WantedFragment(const std::string& written) const {
    const std::string_view fragment = std::string_view(written).substr(0, written.find(":~:"));
    return settings_.fragments && NamesAnElement(fragment) ? std::string(fragment) : "";
  }

  static bool MayBeKept(const Asked& one) {
    return one.question.url.user.empty() && one.question.url.password.empty();
  }

  // Whether a page that is there was not looked through for one of the fragments.
  bool LacksFragment(const Asked& one) const {
    const UrlState state = Judge(*one.answer, settings_).state;
    if (state != UrlState::kOk && state != UrlState::kMoved) return false;
    return std::ranges::any_of(one.question.fragments, [&](const std::string& fragment) {
      return std::ranges::find(one.answer->fragments, fragment,
                               &std::pair<std::string, FragmentState>::first) ==
             one.answer->fragments.end();
    });
  }

  UrlResult ResultOf(const Place& place) const {
    UrlResult result;
    if (place.asked == kNone) {
      result.state = UrlState::kUnasked;
      result.words = "is no URL of http or https";
      return result;
    }
    const Asked& one = asked_[place.asked];
    const UrlVerdict verdict = Judge(*one.answer, settings_);
    result.state = verdict.state;
    result.url = one.question.url.url;
    result.words = verdict.words;
    result.status = one.answer->status;
    result.time = one.answer->time;
    if (verdict.state == UrlState::kMoved) {
      result.movedTo = one.answer->movedTo;
      const bool takesOver =
          !place.written.empty() && result.movedTo.find('#') == std::string::npos;
      if (takesOver) result.movedTo += "#" + place.written;
    }
    const bool isThere = verdict.state == UrlState::kOk || verdict.state == UrlState::kMoved;
    if (isThere && !place.fragment.empty()) TellFragment(*one.answer, place, result);
    return result;
  }

  static void TellFragment(const Answer& answer, const Place& place, UrlResult& result) {
    const FragmentState state = StateOfFragment(answer, place.fragment);
    if (state == FragmentState::kFound) return;
    const bool isMissing = state == FragmentState::kMissing;
    result.state = isMissing ? UrlState::kMissingFragment : UrlState::kUnsure;
    result.url += "#" + place.written;
    result.words = isMissing ? "has nothing named \"" + place.fragment + "\""
                             : "cannot be looked through to its end for \"" + place.fragment + "\"";
  }

  const ExternalSettings& settings_;
  KeptAnswers kept_;
  std::vector<Asked> asked_;
  std::vector<Place> places_;  // of each URL
  std::size_t fromBefore_ = 0;
  std::size_t now_ = 0;
  std::size_t unreached_ = 0;
};

}  // namespace

AskedUrls AskUrls(const std::vector<std::string>& urls, const ExternalSettings& settings,
                  const std::string& file, const WhileAsking& whileAsking) {
  Batch batch(urls, settings, file);
  batch.UseKept();
  batch.AskTheRest(whileAsking);
  return batch.Results();
}

}  // namespace zvrsit
