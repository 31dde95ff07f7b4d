// Tests of the host's UTF-8 / UTF-16 conversions: reference encodings and refusal of malformed text.
#include "host/core/text_encoding.h"

#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using host::utf16_to_utf8;
using host::utf8_to_utf16;

TEST(TextEncoding, BothDirectionsGiveTheReferenceEncoding) {
    // Characters from each UTF-8 length class with their edges, and both UTF-16 forms.
    const std::pair<std::string, std::u16string> pairs[] = {
        {"", u""},
        {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
        {"caf\xC3\xA9 \x7F\xC2\x80\xDF\xBF", u"caf\u00E9 \u007F\u0080\u07FF"},
        {"\xE2\x82\xAC\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\u20AC\u0800\uD7FF\uE000\uFFFF"},
        {"\xF0\x9F\x98\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U0001F600\U00010000\U0010FFFF"},
    };
    for (const auto& p : pairs) {
        EXPECT_EQ(utf16_to_utf8(p.second), p.first) << p.first;
        EXPECT_EQ(utf8_to_utf16(p.first), p.second) << p.first;
    }
}

TEST(TextEncoding, EveryBmpScalarAndSampledAstralScalarsRoundTrip) {
    std::u16string all;
    for (char32_t c = 1; c < 0x10000; ++c)
        if (c < 0xD800 || c > 0xDFFF) all += static_cast<char16_t>(c);
    for (char32_t c = 0x10000; c <= 0x10FFFF; c += 0x1FF) {
        all += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
        all += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
    EXPECT_EQ(utf8_to_utf16(utf16_to_utf8(all)), all);
}

template <typename Text, typename Convert>
void expect_bad_conversion(Convert convert, const Text& text, const char* label) {
    try {
        convert(text);
        ADD_FAILURE() << label << ": no exception";
    } catch (const std::range_error& e) {
        EXPECT_STREQ(e.what(), "bad conversion") << label;
    }
}

TEST(TextEncoding, LoneSurrogatesAndMalformedNonShortestOrOutOfRangeUtf8AreBadConversions) {
    const std::pair<std::u16string, const char*> utf16[] = {
        {{0xD83D}, "high at the end"}, {{0xD83D, u'x'}, "high before a non-surrogate"},
        {{0xDBFF, 0xE000}, "high before U+E000"}, {{u'x', 0xDFFF, 0xDC00}, "low before a low"}};
    for (const auto& c : utf16) expect_bad_conversion(utf16_to_utf8, c.first, c.second);
    const std::pair<std::string, const char*> utf8[] = {
        {"\x80", "continuation byte alone"},           {"\xFC\x80\x80\x80", "lead byte 0xFC"},
        {"\xF0\x9F\x98", "sequence cut"},              {"\xE2\xC3\xA1", "second byte a lead byte"},
        {"\xC1\xBF", "over-long two-byte U+007F"},     {"\xE0\x9F\xBF", "over-long three-byte U+07FF"},
        {"\xF0\x8F\xBF\xBF", "over-long four-byte U+FFFF"}, {"\xED\xA0\x80", "encoded high surrogate U+D800"},
        {"\xED\xBF\xBF", "encoded low surrogate U+DFFF"}, {"\xF4\x90\x80\x80", "U+110000"},
    };
    for (const auto& c : utf8) expect_bad_conversion(utf8_to_utf16, c.first, c.second);
}

}  // namespace
