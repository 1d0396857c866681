// Small things that are done to texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace twctl {

/// The text without white space at its ends.
std::string_view trim(std::string_view text);
/// ASCII letters in lower case, everything else as it is.
std::string lower(std::string_view text);
/// Only the ASCII letters and digits of the text, in lower case: "ACS-6000" and "acs6000" become one.
std::string folded(std::string_view text);
/// True for well-formed UTF-8 (no overlong forms, no surrogates).
bool is_utf8(std::string_view text);
/// True when the text holds a control character (NUL, line ends, escapes, DEL).
bool has_control(std::string_view text);
/// Is the text fit for a name, a serial number, a password: 1 to 255 bytes of UTF-8 without control
/// characters?
bool is_label(std::string_view text);
/// The text as it may be shown on a terminal: control characters and broken UTF-8 become \xNN.
std::string printable(std::string_view text);
/// The whole text as a decimal number; nothing for anything else, a leading '+' or white space included.
std::optional<int64_t> parse_number(std::string_view text);
/// yes, true, 1, on and no, false, 0, off, in any case.
std::optional<bool> parse_truth(std::string_view text);
/// True for an IPv4 or IPv6 address or a host name of letters, digits, hyphens and dots.
bool is_host(std::string_view text);
/// Seconds since the epoch as "2026-01-31T10:20:30Z".
std::string utc_time(int64_t seconds);
/// The text of a heap copy that libtwconfig or libtwobject hands out, which is freed; "" for NULL.
std::string take(char *heap_text);
/// A text that may be NULL.
inline std::string_view view(const char *text) { return text ? std::string_view(text) : std::string_view(); }

}  // namespace twctl
