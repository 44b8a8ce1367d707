// Address conversions and URL services of the platform: the socket
// library's dotted-address functions, the shell's URL escaping and the
// desktop's browser. Nothing here raises.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Quorvex::Platform {

// The word inet_addr answers for text it rejects (also the value of
// "255.255.255.255").
constexpr uint32_t InvalidInetAddress = 0xFFFFFFFFu;

// inet_addr: dotted IPv4 text (8-bit characters) as a network-order word,
// InvalidInetAddress when the text is rejected.
uint32_t InetAddr(const std::string& text);

// inet_ntoa: a network-order word as dotted decimal text.
std::u16string InetNtoa(uint32_t address);

// Characters in the buffer the URL escaping works in, its terminating null
// included: results of this length or longer do not fit.
constexpr size_t UrlBufferLength = 2084;

// URL flag bits of the shell's escaping functions.
constexpr uint32_t UrlDontEscapeExtraInfo = 0x02000000;
constexpr uint32_t UrlEscapeSpacesOnly = 0x04000000;
constexpr uint32_t UrlEscapePercent = 0x00001000;
constexpr uint32_t UrlEscapeSegmentOnly = 0x00002000;

// UrlEscapeW into a UrlBufferLength buffer with `flags`: true with the
// escaped text in `result`, false (and `result` empty) when the call fails
// or the result does not fit.
bool UrlEscape(std::u16string_view url, uint32_t flags, std::u16string& result);

// UrlUnescapeW likewise.
bool UrlUnescape(std::u16string_view url, uint32_t flags, std::u16string& result);

// Hands `url` to the desktop to open in the default browser and returns at
// once; whether that works is not reported.
void OpenInBrowser(std::u16string_view url);

}  // namespace Quorvex::Platform
