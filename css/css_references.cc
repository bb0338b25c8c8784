#include "css/css_references.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "css/css_tokenizer.h"
#include "util/ascii.h"

namespace zvrsit {
namespace {

using Type = CssTokenType;

// Properties whose addresses are images; sorted, without vendor prefixes.
constexpr std::string_view kImageProperties[] = {
    "background",
    "background-image",
    "border-image",
    "border-image-source",
    "box-image",
    "box-reflect",
    "content",
    "cursor",
    "list-style",
    "list-style-image",
    "mask",
    "mask-border",
    "mask-border-source",
    "mask-box-image",
    "mask-box-image-source",
    "mask-image",
    "shape-outside",
};
static_assert(std::is_sorted(std::begin(kImageProperties), std::end(kImageProperties)));

// After one of these at-rules an @import no longer counts; sorted. A rule that is not known is
// skipped by browsers and changes nothing.
constexpr std::string_view kRulesBehindImports[] = {
    "container",
    "counter-style",
    "font-face",
    "font-feature-values",
    "font-palette-values",
    "keyframes",
    "media",
    "namespace",
    "page",
    "position-try",
    "property",
    "scope",
    "starting-style",
    "supports",
    "view-transition",
};
static_assert(std::is_sorted(std::begin(kRulesBehindImports), std::end(kRulesBehindImports)));

template <size_t kSize>
bool IsAmong(const std::string_view (&sorted)[kSize], std::string_view name) {
  return std::binary_search(std::begin(sorted), std::end(sorted), name);
}

// "-webkit-mask" gives "mask"; a custom property ("--x") stays as it is.
std::string_view WithoutPrefix(std::string_view name) {
  if (name.size() < 2 || name[0] != '-' || name[1] == '-') return name;
  const size_t dash = name.find('-', 1);
  return dash == std::string_view::npos ? name : name.substr(dash + 1);
}

std::string LowerCaseValue(std::string_view value) {
  std::string lower = CssValue(value);
  LowerAsciiLetters(lower);
  return lower;
}

bool IsCustomProperty(std::string_view name) {
  return name.substr(0, 2) == "--";
}

// The kinds of brackets and blocks that are open at a place in the text.
enum class Open : std::uint8_t {
  kRules,     // the block of a rule
  kParen,     // (, or the arguments of a function
  kSquare,    // [
  kCurly,     // { within a value
  kAddress,   // url( or src(, before its first argument
  kImageSet,  // image-set(, directly within
};

class Collector {
 public:
  Collector(std::string_view text, CssSource source, std::vector<CssReference>& found)
      : text_(text), tokens_(text), source_(source), found_(found) {}

  void Run() {
    BeginStatement();
    for (CssToken token = tokens_.Next(); token.type != Type::kEnd; token = tokens_.Next()) {
      if (statement_ == Statement::kNone) {
        Begin(token);
      } else {
        Continue(token);
      }
    }
    if (statement_ == Statement::kImport) EndImport();
  }

  void RunValue(std::string_view property) {
    BeginStatement();
    BeginValue(property);
    for (CssToken token = tokens_.Next(); token.type != Type::kEnd; token = tokens_.Next()) {
      if (AtStatementLevel() && token.type == Type::kSemicolon) {
        found_.resize(firstReference_);
        return;
      }
      TakeAddress(token);
      Nest(token);
    }
  }

 private:
  enum class Statement : std::uint8_t {
    kNone,         // between two statements
    kImport,       // an @import in its place
    kAtRule,       // the prelude of any other at-rule
    kSelector,     // the prelude of a rule outside of every block
    kDeclaration,  // or the selector of a nested rule: only its end tells
  };
  // Which of the rules that come first in a sheet may still come.
  enum class Head : std::uint8_t { kLayersAndImports, kImports, kNone };

  bool InBlock() const { return source_ == CssSource::kDeclarations || !opens_.empty(); }
  // Whether the statement itself has nothing open.
  bool AtStatementLevel() const { return opens_.size() == statementLevel_; }

  void BeginStatement() {
    statement_ = Statement::kNone;
    statementLevel_ = opens_.size();
    firstReference_ = found_.size();
    candidate_ = {};
    hasProperty_ = false;
    isCustom_ = false;
    kind_ = CssReferenceKind::kOther;
    expectsImport_ = false;
  }

  void Begin(const CssToken& token) {
    switch (token.type) {
      case Type::kWhitespace:
        return;
      case Type::kSemicolon:
        if (InBlock()) return;
        break;  // outside of a block it begins the prelude of a rule
      case Type::kCdo:
      case Type::kCdc:
        if (!InBlock()) return;
        break;
      case Type::kCloseCurly:
        if (opens_.empty()) break;  // closes nothing, and is part of what follows
        opens_.pop_back();
        BeginStatement();
        return;
      case Type::kAtKeyword:
        BeginAtRule(token);
        return;
      default:
        break;
    }
    statement_ = InBlock() ? Statement::kDeclaration : Statement::kSelector;
    Continue(token);
  }

  void BeginAtRule(const CssToken& token) {
    statement_ = Statement::kAtRule;
    if (InBlock()) return;
    const std::string name = LowerCaseValue(token.value);
    isLayer_ = name == "layer";
    if (name == "import") {
      if (head_ == Head::kNone) return;
      statement_ = Statement::kImport;
      expectsImport_ = true;
    } else if (IsAmong(kRulesBehindImports, WithoutPrefix(name))) {
      head_ = Head::kNone;
    }
  }

  void Continue(const CssToken& token) {
    if (AtStatementLevel() && EndsStatement(token)) return;
    if (statement_ == Statement::kDeclaration) {
      LookForProperty(token);
      TakeAddress(token);
    } else if (expectsImport_) {
      TakeImport(token);
    }
    Nest(token);
  }

  // Ends the statement where the token does so.
  bool EndsStatement(const CssToken& token) {
    switch (token.type) {
      case Type::kSemicolon:
        if (statement_ == Statement::kSelector) return false;
        if (statement_ == Statement::kImport) EndImport();
        if (statement_ == Statement::kAtRule) EndLayerNames();
        BeginStatement();
        return true;
      case Type::kCloseCurly:
        if (opens_.empty()) return false;
        opens_.pop_back();
        BeginStatement();
        return true;
      case Type::kOpenCurly:
        if (isCustom_) return false;
        OpenBlock();
        return true;
      default:
        return false;
    }
  }

  // The text so far was the part of a rule before its block. It refers to nothing.
  void OpenBlock() {
    found_.resize(firstReference_);
    const bool isKnownRule =
        statement_ == Statement::kSelector || (statement_ == Statement::kAtRule && isLayer_);
    if (!InBlock() && isKnownRule) head_ = Head::kNone;
    opens_.push_back(Open::kRules);
    BeginStatement();
  }

  void EndImport() {
    if (found_.size() > firstReference_) head_ = Head::kImports;
  }

  void EndLayerNames() {
    if (!InBlock() && isLayer_ && head_ == Head::kImports) head_ = Head::kNone;
  }

  // The property is the identifier before the first colon.
  void LookForProperty(const CssToken& token) {
    if (hasProperty_ || !AtStatementLevel()) return;
    if (token.type == Type::kColon) {
      BeginValue(LowerCaseValue(candidate_));
    } else if (token.type != Type::kWhitespace) {
      candidate_ = token.type == Type::kIdent ? token.value : std::string_view();
    }
  }

  void BeginValue(std::string_view property) {
    hasProperty_ = true;
    isCustom_ = IsCustomProperty(property);
    if (IsAmong(kImageProperties, WithoutPrefix(property))) kind_ = CssReferenceKind::kImage;
  }

  void TakeAddress(const CssToken& token) {
    const Open inner = opens_.empty() ? Open::kRules : opens_.back();
    const bool isArgument = inner == Open::kAddress || inner == Open::kImageSet;
    if (token.type == Type::kUrl || (token.type == Type::kString && isArgument)) {
      Add(kind_, token);
    }
    TakeFirstArgument(token);
  }

  void TakeImport(const CssToken& token) {
    if (token.type == Type::kWhitespace) return;
    if (token.type == Type::kUrl || token.type == Type::kString) {
      Add(CssReferenceKind::kImport, token);
    }
    TakeFirstArgument(token);
    expectsImport_ = IsAddressFunction(token);
  }

  // Only the first argument of url() and src() is the address.
  void TakeFirstArgument(const CssToken& token) {
    if (opens_.empty() || token.type == Type::kWhitespace) return;
    if (opens_.back() == Open::kAddress) opens_.back() = Open::kParen;
  }

  static bool IsAddressFunction(const CssToken& token) {
    return token.type == Type::kFunction &&
           (CssValueIs(token.value, "url") || CssValueIs(token.value, "src"));
  }

  static Open OpenedBy(const CssToken& function) {
    if (IsAddressFunction(function)) return Open::kAddress;
    const bool isImageSet =
        CssValueIs(function.value, "image-set") || CssValueIs(function.value, "-webkit-image-set");
    return isImageSet ? Open::kImageSet : Open::kParen;
  }

  void Nest(const CssToken& token) {
    switch (token.type) {
      case Type::kFunction:
        opens_.push_back(OpenedBy(token));
        break;
      case Type::kOpenParen:
        opens_.push_back(Open::kParen);
        break;
      case Type::kOpenSquare:
        opens_.push_back(Open::kSquare);
        break;
      case Type::kOpenCurly:
        opens_.push_back(Open::kCurly);
        break;
      case Type::kCloseParen:
        Close(Open::kParen);
        break;
      case Type::kCloseSquare:
        Close(Open::kSquare);
        break;
      case Type::kCloseCurly:
        Close(Open::kCurly);
        break;
      default:
        break;
    }
  }

  // A closing bracket that does not fit the innermost open one closes nothing.
  void Close(Open bracket) {
    if (AtStatementLevel()) return;
    const Open inner = opens_.back();
    const bool isFunction = inner == Open::kAddress || inner == Open::kImageSet;
    if (inner == bracket || (bracket == Open::kParen && isFunction)) opens_.pop_back();
  }

  void Add(CssReferenceKind kind, const CssToken& token) {
    std::string text = CssValue(token.value);
    if (text.empty() || text.front() == '#') return;
    const auto offset = static_cast<std::int32_t>(token.raw.data() - text_.data());
    const auto value = static_cast<std::int32_t>(token.value.data() - text_.data());
    const auto length = static_cast<std::int32_t>(token.value.size());
    found_.push_back({kind, std::move(text), offset, value, length});
  }

  std::string_view text_;
  CssTokenizer tokens_;
  CssSource source_;
  std::vector<CssReference>& found_;
  std::vector<Open> opens_;
  Head head_ = Head::kLayersAndImports;

  Statement statement_ = Statement::kNone;
  size_t statementLevel_ = 0;   // opens_.size() at its beginning
  size_t firstReference_ = 0;   // found_.size() at its beginning
  std::string_view candidate_;  // the identifier that may turn out to be the property
  bool hasProperty_ = false;
  bool isCustom_ = false;
  bool isLayer_ = false;
  bool expectsImport_ = false;  // the address of the @import has not come yet
  CssReferenceKind kind_ = CssReferenceKind::kOther;
};

}  // namespace

void CollectCssReferences(std::string_view text, CssSource source,
                          std::vector<CssReference>& found) {
  Collector(text, source, found).Run();
}

void CollectCssReferencesOfValue(std::string_view value, std::string_view property,
                                 std::vector<CssReference>& found) {
  Collector(value, CssSource::kDeclarations, found).RunValue(property);
}

}  // namespace zvrsit
