// Tests of the host's UTF-8 / UTF-16 conversions: round trips and refusal of malformed text.
#include "host/core/text_encoding.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace {

using host::utf16_to_utf8;
using host::utf8_to_utf16;

struct Pair {
    const char* label;
    std::string utf8;
    std::u16string utf16;
};

// Reference encodings of characters from each UTF-8 length class and both UTF-16 forms.
const Pair kPairs[] = {
    {"empty", "", u""},
    {"ascii", "/opt/netcore3.1/libcoreclr.so", u"/opt/netcore3.1/libcoreclr.so"},
    {"embedded nul", std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
    {"latin-1", "caf\xC3\xA9 \xC3\xBC\xC3\x9F", u"caf\u00E9 \u00FC\u00DF"},
    {"two-byte edges", "\x7F\xC2\x80\xDF\xBF", u"\u007F\u0080\u07FF"},
    {"bmp", "\xE2\x82\xAC \xE6\x97\xA5\xE6\x9C\xAC", u"\u20AC \u65E5\u672C"},
    {"three-byte edges", "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\u0800\uD7FF\uE000\uFFFF"},
    {"astral", "\xF0\x9F\x98\x80", u"\U0001F600"},
    {"astral edges", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
    {"mixed", "p/\xC3\xA9/\xE2\x82\xAC/\xF0\x9D\x84\x9E", u"p/\u00E9/\u20AC/\U0001D11E"},
};

TEST(TextEncoding, Utf16ToUtf8GivesTheReferenceEncoding) {
    for (const Pair& p : kPairs) EXPECT_EQ(utf16_to_utf8(p.utf16), p.utf8) << p.label;
}

TEST(TextEncoding, Utf8ToUtf16GivesTheReferenceEncoding) {
    for (const Pair& p : kPairs) EXPECT_EQ(utf8_to_utf16(p.utf8), p.utf16) << p.label;
}

TEST(TextEncoding, RoundTripsKeepTheText) {
    for (const Pair& p : kPairs) {
        EXPECT_EQ(utf8_to_utf16(utf16_to_utf8(p.utf16)), p.utf16) << p.label;
        EXPECT_EQ(utf16_to_utf8(utf8_to_utf16(p.utf8)), p.utf8) << p.label;
    }
}

TEST(TextEncoding, EveryBmpScalarAndSampledAstralScalarsRoundTrip) {
    std::u16string all;
    for (char32_t c = 1; c < 0x10000; ++c)
        if (c < 0xD800 || c > 0xDFFF) all += static_cast<char16_t>(c);
    for (char32_t c = 0x10000; c <= 0x10FFFF; c += 0x1FF) {
        char32_t v = c - 0x10000;
        all += static_cast<char16_t>(0xD800 + (v >> 10));
        all += static_cast<char16_t>(0xDC00 + (v & 0x3FF));
    }
    std::string utf8 = utf16_to_utf8(all);
    EXPECT_EQ(utf8_to_utf16(utf8), all);
}

void expect_bad_conversion_16(const std::u16string& text, const char* label) {
    try {
        utf16_to_utf8(text);
        ADD_FAILURE() << label << ": no exception";
    } catch (const std::range_error& e) {
        EXPECT_STREQ(e.what(), "bad conversion") << label;
    }
}

void expect_bad_conversion_8(const std::string& text, const char* label) {
    try {
        utf8_to_utf16(text);
        ADD_FAILURE() << label << ": no exception";
    } catch (const std::range_error& e) {
        EXPECT_STREQ(e.what(), "bad conversion") << label;
    }
}

TEST(TextEncoding, LoneSurrogatesAreBadConversions) {
    expect_bad_conversion_16(std::u16string(1, char16_t(0xD800)), "high alone");
    expect_bad_conversion_16(u"ab" + std::u16string(1, char16_t(0xDBFF)), "high at the end");
    expect_bad_conversion_16(std::u16string(1, char16_t(0xD83D)) + u"x", "high before a non-surrogate");
    expect_bad_conversion_16(std::u16string(2, char16_t(0xD83D)), "high before a high");
    expect_bad_conversion_16(std::u16string(1, char16_t(0xDC00)), "low alone");
    expect_bad_conversion_16(u"x" + std::u16string(1, char16_t(0xDFFF)) + u"y", "low in the middle");
}

TEST(TextEncoding, MalformedUtf8IsABadConversion) {
    expect_bad_conversion_8("\x80", "continuation byte alone");
    expect_bad_conversion_8("ab\xBF", "continuation byte after ascii");
    expect_bad_conversion_8("\xC3", "two-byte sequence cut");
    expect_bad_conversion_8("\xE2\x82", "three-byte sequence cut");
    expect_bad_conversion_8("\xF0\x9F\x98", "four-byte sequence cut");
    expect_bad_conversion_8("\xC3\x28", "lead byte followed by ascii");
    expect_bad_conversion_8("\xE2\x28\xA1", "second byte not a continuation");
    expect_bad_conversion_8("\xFF", "byte 0xFF");
    expect_bad_conversion_8("\xFE", "byte 0xFE");
    expect_bad_conversion_8("\xF8\x88\x80\x80\x80", "five-byte form");
}

// The standard conversion also refuses forms that decode to a number but are not UTF-8:
// over-long encodings, encoded surrogates and values beyond U+10FFFF. Disabled while utf8_to_utf16
// still accepts them (decoding C0 AF to "/", or giving lone surrogates and broken surrogate pairs).
TEST(TextEncoding, NonShortestAndOutOfRangeUtf8IsABadConversion) {
    expect_bad_conversion_8("\xC0\xAF", "over-long two-byte '/'");
    expect_bad_conversion_8("\xC1\xBF", "over-long two-byte U+007F");
    expect_bad_conversion_8("\xE0\x80\xAF", "over-long three-byte '/'");
    expect_bad_conversion_8("\xF0\x80\x80\xAF", "over-long four-byte '/'");
    expect_bad_conversion_8("\xED\xA0\x80", "encoded high surrogate U+D800");
    expect_bad_conversion_8("\xED\xBF\xBF", "encoded low surrogate U+DFFF");
    expect_bad_conversion_8("\xF4\x90\x80\x80", "U+110000");
    expect_bad_conversion_8("\xF7\xBF\xBF\xBF", "U+1FFFFF");
}

}  // namespace
