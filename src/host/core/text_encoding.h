// Text conversions of the host layer; both throw std::range_error("bad conversion") on malformed input.
#pragma once
#include <string>

namespace host {

std::string utf16_to_utf8(const std::u16string& text);
std::u16string utf8_to_utf16(const std::string& text);

}  // namespace host
