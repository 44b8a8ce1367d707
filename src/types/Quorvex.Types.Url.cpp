#include "Quorvex.Types.Url.hpp"

#include <pcre2.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

#include "Quorvex.Platform.Net.hpp"
#include "Quorvex.Utils.Path.hpp"

namespace Quorvex::Types::Url {

namespace {

// Indexed by TURLEscapeOption.
constexpr uint32_t kOptionFlags[] = {Platform::UrlDontEscapeExtraInfo, Platform::UrlDontEscapeExtraInfo,
                                     Platform::UrlEscapeSpacesOnly, Platform::UrlEscapePercent,
                                     Platform::UrlEscapeSegmentOnly};
static_assert(std::size(kOptionFlags) == static_cast<size_t>(ueoEscapeSegmentOnly) + 1);

// The URL syntax VerifyUrl accepts, anchored at both ends; the "(?#...)"
// groups are the pattern's own comments.
constexpr UnicodeStringView kVerifyPattern =
    uR"(^(?#Protocol)(?:(?:ht|f)tp(?:s?)\:\/\/|~\/|\/)?(?#Username:Password)(?:\w+(:\w+)?@)?(?#Subdomains)((?:(?:[0-9]|[1-9]\d|1\d{2}|2[0-4]\d|25[0-5])\.){3}(?:[0-9]|[1-9]\d|1\d{2}|2[0-4]\d|25[0-5])|(?:(?:[-\w]+\.)+(?#TopLevel Domains)(?:com|org|net|gov|mil|biz|info|mobi|name|aero|jobs|museum|travel|[a-z]{2})))(?#Port)(?::[\d]{1,5})?(?#Directories)(?:(?:(?:\/(?:[-\w~!$+|.,\(\)=]|%[a-f\d]{2})+)+|\/)+|\?|#)?(?#Query)(?:(?:(\#&|\?)(?:[-\w~!$+|.,\(\)*:]|%[a-f\d{2}])+=?(?:[-\w~!$+|.,\(\)*:=]|%[a-f\d]{2})*)(?:&(?:[-\w~!$+|.,*:]|%[a-f\d{2}])+=?(?:[-\w~!$+|.,*:=]|%[a-f\d]{2})*)*)*(?#Anchor)(?:#(?:[-\w~!$+|.,*:=]|%[a-f\d]{2})*)?$)";

// Backtracking decides ordinary URLs fastest, but the pattern nests
// unbounded repeats, over which it can take exponential time. So it gets a
// small budget (well under a millisecond), and a text that exhausts it is
// decided by the automaton matcher instead: the pattern has no
// back-references, so that gives the same answers, in time linear in the
// text. The automaton only counts nested calls, which this pattern never
// makes; its limits are lifted so that no answer depends on one.
constexpr uint32_t kBacktrackBudget = 10'000;
constexpr uint32_t kNoLimit = UINT32_MAX;

// Scratch space of the automaton, in ints: room for its active states,
// which the pattern's size bounds. A call that needs more doubles it.
constexpr size_t kInitialWorkspace = 1024;

struct TCodeDeleter {
  void operator()(pcre2_code* code) const { pcre2_code_free(code); }
};
struct TMatchContextDeleter {
  void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
};
struct TMatchDataDeleter {
  void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};
using TMatchContext = std::unique_ptr<pcre2_match_context, TMatchContextDeleter>;

TMatchContext LimitedContext(uint32_t matchLimit) {
  TMatchContext context(pcre2_match_context_create(nullptr));
  if (!context) return context;
  pcre2_set_match_limit(context.get(), matchLimit);
  pcre2_set_depth_limit(context.get(), matchLimit);
  return context;
}

// The compiled pattern and its two match settings. All are only read once
// built, which the engine allows from any number of threads at once.
struct TVerifier {
  std::unique_ptr<pcre2_code, TCodeDeleter> Code;
  TMatchContext Budgeted = LimitedContext(kBacktrackBudget);
  TMatchContext Unlimited = LimitedContext(kNoLimit);

  TVerifier() {
    int error = 0;
    PCRE2_SIZE offset = 0;
    Code.reset(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(kVerifyPattern.data()), kVerifyPattern.size(),
                             PCRE2_CASELESS | PCRE2_DOTALL, &error, &offset, nullptr));
  }

  bool IsReady() const { return Code && Budgeted && Unlimited; }
};

const TVerifier& Verifier() {
  static const TVerifier verifier;
  return verifier;
}

bool IsLimitReached(int result) {
  return result == PCRE2_ERROR_MATCHLIMIT || result == PCRE2_ERROR_DEPTHLIMIT || result == PCRE2_ERROR_HEAPLIMIT;
}

// Whether the whole of `subject` matches, decided by the automaton.
bool MatchByAutomaton(const TVerifier& verifier, PCRE2_SPTR subject, size_t length, pcre2_match_data* data) {
  std::vector<int> workspace(kInitialWorkspace);
  for (;;) {
    const int result = pcre2_dfa_match(verifier.Code.get(), subject, length, 0, 0, data, verifier.Unlimited.get(),
                                       workspace.data(), workspace.size());
    if (result != PCRE2_ERROR_DFA_WSSIZE) return result >= 0;
    workspace.resize(workspace.size() * 2);
  }
}

using TPlatformUrlFunction = bool (*)(std::u16string_view, uint32_t, std::u16string&);

// Runs an escaping function of the platform, falling back to the input
// when there is nothing to do or the call fails.
UnicodeString Transform(TPlatformUrlFunction function, UnicodeStringView url, TURLEscapeOptions options) {
  if (url.empty()) return UnicodeString();
  UnicodeString result;
  if (!function(url, TUrlEscapeOptionsFormat::Flags(options), result)) return UnicodeString(url);
  return result;
}

}  // namespace

uint32_t TUrlEscapeOptionsFormat::Flags(TURLEscapeOptions AOptions) {
  uint32_t flags = 0;
  for (size_t option = 0; option < std::size(kOptionFlags); ++option)
    if (AOptions.Contains(static_cast<TURLEscapeOption>(option))) flags |= kOptionFlags[option];
  return flags;
}

TUrl::TUrl(UnicodeStringView AUrl) : TUrl(FromString(AUrl)) {}

TUrl TUrl::FromString(UnicodeStringView AUrl) {
  TUrl result;
  UnicodeStringView rest = AUrl;
  const size_t separator = rest.find(u"://");
  if (separator != UnicodeStringView::npos) {
    result.Protocol = rest.substr(0, separator + 3);
    rest.remove_prefix(separator + 3);
  }
  const size_t slash = std::min(rest.find(u'/'), rest.size());
  UnicodeStringView host = rest.substr(0, slash);
  rest.remove_prefix(slash);
  const size_t colon = host.find(u':');
  if (colon != UnicodeStringView::npos) {
    result.Port = Rtl::Strings::StrToIntDef(host.substr(colon + 1), 0);
    host = host.substr(0, colon);
  }
  result.Host = host;
  result.Path = rest;
  return result;
}

UnicodeString TUrl::ToString() const {
  UnicodeString result = Protocol;
  if (!Username.empty()) {
    result += Username;
    if (!Password.empty()) result += u":" + Password;
    result += u'@';
  }
  result += Host;
  // Port 80 is dropped whatever the protocol says.
  if (Port != 0 && Port != 80) result += u":" + Rtl::Strings::IntToStr(Port);
  return result + Path;
}

UnicodeString TUrl::Combine(UnicodeStringView AUrl, UnicodeStringView APath) {
  return Utils::Path::gPath::Combine(AUrl, APath, u"/");
}

UnicodeString TUrl::Combine(const TUrl& AUrl, UnicodeStringView APath) { return Combine(AUrl.ToString(), APath); }

UnicodeString TUrl::EscapeURL(UnicodeStringView AURL, TURLEscapeOptions AOptions) {
  return Transform(Platform::UrlEscape, AURL, AOptions);
}

UnicodeString TUrl::UnescapeURL(UnicodeStringView AURL, TURLEscapeOptions AOptions) {
  return Transform(Platform::UrlUnescape, AURL, AOptions);
}

bool TUrl::VerifyUrl(UnicodeStringView AUrl) {
  const TVerifier& verifier = Verifier();
  if (!verifier.IsReady()) return false;
  // Match data is per call: it is written during the match.
  const std::unique_ptr<pcre2_match_data, TMatchDataDeleter> data(
      pcre2_match_data_create_from_pattern(verifier.Code.get(), nullptr));
  if (!data) return false;
  // The engine refuses a null subject even when it is empty.
  const auto subject = reinterpret_cast<PCRE2_SPTR>(AUrl.empty() ? u"" : AUrl.data());
  const int result = pcre2_match(verifier.Code.get(), subject, AUrl.size(), 0, 0, data.get(), verifier.Budgeted.get());
  if (!IsLimitReached(result)) return result >= 0;
  return MatchByAutomaton(verifier, subject, AUrl.size(), data.get());
}

UnicodeStringView TUrl::VerifyPattern() { return kVerifyPattern; }

void TUrl::GoUrl(const TUrl& AUrl) {
  TUrl target = AUrl;
  if (target.Protocol.empty()) target.Protocol = u"http://";
  Platform::OpenInBrowser(target.ToString());
}

void TUrl::GoUrl(UnicodeStringView AUrl) { GoUrl(FromString(AUrl)); }

}  // namespace Quorvex::Types::Url
