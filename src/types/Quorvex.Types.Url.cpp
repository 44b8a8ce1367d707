#include "Quorvex.Types.Url.hpp"

#include <pcre2.h>

#include <algorithm>
#include <iterator>
#include <memory>

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

// The pattern nests unbounded repeats, so a long hostile text could
// backtrack for minutes. These bounds stop such a match early (answering
// false) while any URL of realistic length stays far below them.
constexpr uint32_t kMatchLimit = 1'000'000;
constexpr uint32_t kDepthLimit = 100'000;
constexpr uint32_t kHeapLimitKiB = 64 * 1024;

struct TCodeDeleter {
  void operator()(pcre2_code* code) const { pcre2_code_free(code); }
};
struct TMatchContextDeleter {
  void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
};
struct TMatchDataDeleter {
  void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};

// The compiled pattern and its match limits. Both are only read once
// built, which the engine allows from any number of threads at once.
struct TVerifier {
  std::unique_ptr<pcre2_code, TCodeDeleter> Code;
  std::unique_ptr<pcre2_match_context, TMatchContextDeleter> Context;

  TVerifier() {
    int error = 0;
    PCRE2_SIZE offset = 0;
    Code.reset(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(kVerifyPattern.data()), kVerifyPattern.size(),
                             PCRE2_CASELESS | PCRE2_DOTALL, &error, &offset, nullptr));
    Context.reset(pcre2_match_context_create(nullptr));
    if (!Context) return;
    pcre2_set_match_limit(Context.get(), kMatchLimit);
    pcre2_set_depth_limit(Context.get(), kDepthLimit);
    pcre2_set_heap_limit(Context.get(), kHeapLimitKiB);
  }
};

const TVerifier& Verifier() {
  static const TVerifier verifier;
  return verifier;
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
  if (!verifier.Code || !verifier.Context) return false;
  // Match data is per call: it is written during the match.
  const std::unique_ptr<pcre2_match_data, TMatchDataDeleter> data(
      pcre2_match_data_create_from_pattern(verifier.Code.get(), nullptr));
  if (!data) return false;
  // The engine refuses a null subject even when it is empty.
  const char16_t* subject = AUrl.empty() ? u"" : AUrl.data();
  // Any error, a hit limit included, is a "no".
  return pcre2_match(verifier.Code.get(), reinterpret_cast<PCRE2_SPTR>(subject), AUrl.size(), 0, 0, data.get(),
                     verifier.Context.get()) >= 0;
}

UnicodeStringView TUrl::VerifyPattern() { return kVerifyPattern; }

void TUrl::GoUrl(const TUrl& AUrl) {
  TUrl target = AUrl;
  if (target.Protocol.empty()) target.Protocol = u"http://";
  Platform::OpenInBrowser(target.ToString());
}

void TUrl::GoUrl(UnicodeStringView AUrl) { GoUrl(FromString(AUrl)); }

}  // namespace Quorvex::Types::Url
