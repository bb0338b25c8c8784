// The formats of findings/output.h, one function each; they append to `out`.
#pragma once

#include <string>
#include <string_view>

#include "findings/finding.h"
#include "findings/output.h"

namespace zvrsit {

void AppendText(const FindingReport& report, const TextStyle& style, std::string& out);
void AppendJson(const FindingReport& report, std::string& out);
void AppendJsonl(const FindingReport& report, std::string& out);
void AppendCsv(const FindingReport& report, std::string& out);
void AppendJunit(const FindingReport& report, std::string& out);
void AppendSarif(const FindingReport& report, std::string& out);
void AppendGithub(const FindingReport& report, std::string& out);
void AppendMarkdown(const FindingReport& report, std::string& out);

// "1 page", "2 pages".
std::string Counted(std::size_t count, const char* one);
// "a.htm:3:14", "a.htm" for a place without a line; a file as the report names it.
std::string PlaceText(const FindingReport& report, const FindingPlace& place);
// "2 errors and 1 warning in 12 places".
std::string CountedFindings(const FindingReport& report);
// What is likely meant, where the message does not say it; empty for none.
std::string UntoldSuggestion(const Finding& finding);
// A message, and what is likely meant.
std::string FullMessage(const Finding& finding);
// The URL of a native path, absolute or relative: percent-encoded, in UTF-8.
std::string UrlOfPath(std::string_view native);

}  // namespace zvrsit
