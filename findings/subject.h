// What findings are about.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "findings/rules.h"

namespace zvrsit {

// A finding without its places.
struct Subject {
  Rule rule = Rule::kMissingFile;
  std::string target;
  std::string message;
  std::string suggestion;
};

// The subjects that have been found; each stays where it is.
class Subjects {
 public:
  explicit Subjects(const Severities& severities) : severities_(severities) {}

  // The subject of a rule about a target, made when it is the first one. Null when the rule is off.
  Subject* Of(Rule rule, const std::string& target) {
    if (!severities_.IsOn(rule)) return nullptr;
    Subject& subject = all_[{rule, target}];
    subject.rule = rule;
    subject.target = target;
    return &subject;
  }
  // The same, with these words.
  const Subject* Of(Rule rule, const std::string& target, const std::string& message,
                    const std::string& suggestion = "") {
    Subject* const subject = Of(rule, target);
    if (subject == nullptr) return nullptr;
    subject->message = message;
    subject->suggestion = suggestion;
    return subject;
  }
  const Severities& severities() const { return severities_; }

 private:
  const Severities severities_;
  std::map<std::pair<Rule, std::string>, Subject> all_;
};

}  // namespace zvrsit
