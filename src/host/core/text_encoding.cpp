// UTF-16 and UTF-8 conversions of the host: paths and names towards the loader library.
#include "host/core/text_encoding.h"

#include <cstdint>
#include <stdexcept>

namespace host {

std::string utf16_to_utf8(const std::u16string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        uint32_t cp = text[i];
        if (cp >= 0xD800 && cp < 0xE000) {
            if (cp >= 0xDC00 || i + 1 >= text.size() || text[i + 1] < 0xDC00 || text[i + 1] >= 0xE000)
                throw std::range_error("bad conversion");
            cp = 0x10000 + ((cp - 0xD800) << 10) + (text[++i] - 0xDC00);
        }
        if (cp < 0x80) {
            out += static_cast<char>(cp);
        } else if (cp < 0x800) {
            out += static_cast<char>(0xC0 | (cp >> 6));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            out += static_cast<char>(0xE0 | (cp >> 12));
            out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (cp >> 18));
            out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        }
    }
    return out;
}

std::u16string utf8_to_utf16(const std::string& text) {
    std::u16string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        uint32_t cp;
        size_t extra;
        if (c < 0x80) {
            cp = c;
            extra = 0;
        } else if ((c & 0xE0) == 0xC0) {
            cp = c & 0x1F;
            extra = 1;
        } else if ((c & 0xF0) == 0xE0) {
            cp = c & 0x0F;
            extra = 2;
        } else if ((c & 0xF8) == 0xF0) {
            cp = c & 0x07;
            extra = 3;
        } else {
            throw std::range_error("bad conversion");
        }
        for (size_t k = 1; k <= extra; ++k) {
            if (i + k >= text.size()) throw std::range_error("bad conversion");
            unsigned char cc = static_cast<unsigned char>(text[i + k]);
            if ((cc & 0xC0) != 0x80) throw std::range_error("bad conversion");
            cp = (cp << 6) | (cc & 0x3F);
        }
        i += extra + 1;
        // Over-long forms, encoded surrogates and values beyond U+10FFFF are not UTF-8.
        static const uint32_t kMinimum[] = {0, 0x80, 0x800, 0x10000};
        if (cp < kMinimum[extra] || (cp >= 0xD800 && cp < 0xE000) || cp > 0x10FFFF)
            throw std::range_error("bad conversion");
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (cp >> 10));
            out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        } else {
            out += static_cast<char16_t>(cp);
        }
    }
    return out;
}

}  // namespace host
