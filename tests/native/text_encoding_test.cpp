// Tests of the host's UTF-8 / UTF-16 conversions: reference encodings and refusal of malformed text.
#include "host/core/text_encoding.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace {

using host::utf16_to_utf8;
using host::utf8_to_utf16;

TEST(TextEncoding, BothDirectionsGiveTheReferenceEncoding) {
    struct Pair {
        const char* label;
        std::string utf8;
        std::u16string utf16;
    };
    // Characters from each UTF-8 length class with their edges, and both UTF-16 forms.
    const Pair pairs[] = {
        {"empty", "", u""},
        {"ascii", "/opt/netcore3.1/libcoreclr.so", u"/opt/netcore3.1/libcoreclr.so"},
        {"embedded nul", std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
        {"two-byte", "caf\xC3\xA9 \x7F\xC2\x80\xDF\xBF", u"caf\u00E9 \u007F\u0080\u07FF"},
        {"three-byte", "\xE2\x82\xAC\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF",
         u"\u20AC\u0800\uD7FF\uE000\uFFFF"},
        {"astral", "\xF0\x9F\x98\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U0001F600\U00010000\U0010FFFF"},
        {"mixed", "p/\xC3\xA9/\xE2\x82\xAC/\xF0\x9D\x84\x9E", u"p/\u00E9/\u20AC/\U0001D11E"},
    };
    for (const Pair& p : pairs) {
        EXPECT_EQ(utf16_to_utf8(p.utf16), p.utf8) << p.label;
        EXPECT_EQ(utf8_to_utf16(p.utf8), p.utf16) << p.label;
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

TEST(TextEncoding, LoneSurrogatesAreBadConversions) {
    const char16_t high = 0xD83D, low = 0xDC00;
    const std::pair<std::u16string, const char*> cases[] = {
        {{high}, "high alone"},          {{u'a', u'b', 0xDBFF}, "high at the end"},
        {{high, u'x'}, "high before a non-surrogate"}, {{high, high}, "high before a high"},
        {{low}, "low alone"},            {{u'x', 0xDFFF, u'y'}, "low in the middle"}};
    for (const auto& c : cases) expect_bad_conversion(utf16_to_utf8, c.first, c.second);
}

TEST(TextEncoding, MalformedNonShortestAndOutOfRangeUtf8AreBadConversions) {
    const std::pair<std::string, const char*> cases[] = {
        {"\x80", "continuation byte alone"},          {"ab\xBF", "continuation byte after ascii"},
        {"\xC3", "two-byte sequence cut"},            {"\xE2\x82", "three-byte sequence cut"},
        {"\xF0\x9F\x98", "four-byte sequence cut"},   {"\xC3\x28", "lead byte followed by ascii"},
        {"\xE2\x28\xA1", "second byte not a continuation"}, {"\xFF", "byte 0xFF"}, {"\xFE", "byte 0xFE"},
        {"\xF8\x88\x80\x80\x80", "five-byte form"},   {"\xC0\xAF", "over-long two-byte '/'"},
        {"\xC1\xBF", "over-long two-byte U+007F"},    {"\xE0\x80\xAF", "over-long three-byte '/'"},
        {"\xF0\x80\x80\xAF", "over-long four-byte '/'"}, {"\xED\xA0\x80", "encoded high surrogate U+D800"},
        {"\xED\xBF\xBF", "encoded low surrogate U+DFFF"}, {"\xF4\x90\x80\x80", "U+110000"},
        {"\xF7\xBF\xBF\xBF", "U+1FFFFF"},
    };
    for (const auto& c : cases) expect_bad_conversion(utf8_to_utf16, c.first, c.second);
}

}  // namespace
