#include "platform/UnicodeText.h"

#include "platform/LargeBuffer.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

bool UnicodeText::isAscii(QByteArrayView data)
{
    const auto* p = reinterpret_cast<const uchar*>(data.data());
    const auto* end = p + data.size();
#ifdef __SSE2__
    for (; end - p >= 64; p += 64) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16));
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 32));
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 48));
        if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) != 0) {
            return false;
        }
    }
#endif
    for (; p < end; ++p) {
        if (*p >= 0x80) {
            return false;
        }
    }
    return true;
}

bool UnicodeText::isValidUtf8(QByteArrayView data)
{
    const auto* p = reinterpret_cast<const uchar*>(data.data());
    const auto* end = p + data.size();
    while (p < end) {
        // Runs of ASCII go by in blocks.
        if (*p < 0x80) {
#ifdef __SSE2__
            while (end - p >= 16) {
                const int high =
                    _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
                if (high != 0) {
                    p += __builtin_ctz(unsigned(high));
                    break;
                }
                p += 16;
            }
#endif
            while (p < end && *p < 0x80) {
                ++p;
            }
            continue;
        }
        const uchar lead = *p;
        int length = 0;
        uchar low = 0x80;
        uchar high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            low = lead == 0xE0 ? 0xA0 : 0x80;  // no overlong forms
            high = lead == 0xED ? 0x9F : 0xBF; // no surrogates
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            low = lead == 0xF0 ? 0x90 : 0x80;
            high = lead == 0xF4 ? 0x8F : 0xBF; // nothing above U+10FFFF
        } else {
            return false;
        }
        if (end - p < length || p[1] < low || p[1] > high) {
            return false;
        }
        for (int i = 2; i < length; ++i) {
            if (p[i] < 0x80 || p[i] > 0xBF) {
                return false;
            }
        }
        p += length;
    }
    return true;
}

bool UnicodeText::isWellFormed(QStringView text)
{
    const char16_t* p = reinterpret_cast<const char16_t*>(text.utf16());
    const char16_t* end = p + text.size();
    while (p < end) {
#ifdef __SSE2__
        const __m128i mask = _mm_set1_epi16(short(0xF800));
        const __m128i surrogate = _mm_set1_epi16(short(0xD800));
        while (end - p >= 8) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(v, mask), surrogate)) != 0) {
                break;
            }
            p += 8;
        }
        if (p >= end) {
            break;
        }
#endif
        const char16_t unit = *p++;
        if ((unit & 0xF800) != 0xD800) {
            continue;
        }
        if (unit >= 0xDC00 || p == end || (*p & 0xFC00) != 0xDC00) {
            return false;
        }
        ++p;
    }
    return true;
}

bool UnicodeText::decodeUtf8(QByteArrayView data, QString& text)
{
    const auto* p = reinterpret_cast<const uchar*>(data.data());
    const auto* end = p + data.size();
    if (end - p >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF) {
        p += 3;
    }
    // No sequence gives more units than it has bytes, so the output never overtakes
    // the input: the vector path may store 16 units wherever 16 bytes remain.
    text.resize(end - p);
    LargeBuffer::adviseHugePages(text.data(), text.size() * 2);
    char16_t* const start = reinterpret_cast<char16_t*>(text.data());
    char16_t* out = start;
    while (p < end) {
#ifdef __SSE2__
        const __m128i zero = _mm_setzero_si128();
        while (end - p >= 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(v, zero));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(v, zero));
            const int high = _mm_movemask_epi8(v);
            if (high != 0) {
                const int ascii = __builtin_ctz(unsigned(high));
                p += ascii;
                out += ascii;
                break;
            }
            p += 16;
            out += 16;
        }
        if (p >= end) {
            break;
        }
#endif
        const uchar c = *p;
        if (c < 0x80) {
            *out++ = c;
            ++p;
            continue;
        }
        if (c >= 0xC2 && c <= 0xDF) {
            if (end - p < 2 || (p[1] & 0xC0) != 0x80) {
                return false;
            }
            *out++ = char16_t((c & 0x1F) << 6 | (p[1] & 0x3F));
            p += 2;
        } else if (c >= 0xE0 && c <= 0xEF) {
            if (end - p < 3 || (p[1] & 0xC0) != 0x80 || (p[2] & 0xC0) != 0x80 ||
                (c == 0xE0 && p[1] < 0xA0) || (c == 0xED && p[1] > 0x9F)) {
                return false;
            }
            *out++ = char16_t((c & 0x0F) << 12 | (p[1] & 0x3F) << 6 | (p[2] & 0x3F));
            p += 3;
        } else if (c >= 0xF0 && c <= 0xF4) {
            if (end - p < 4 || (p[1] & 0xC0) != 0x80 || (p[2] & 0xC0) != 0x80 ||
                (p[3] & 0xC0) != 0x80 || (c == 0xF0 && p[1] < 0x90) || (c == 0xF4 && p[1] > 0x8F)) {
                return false;
            }
            const char32_t code = char32_t(c & 0x07) << 18 | char32_t(p[1] & 0x3F) << 12 |
                                  char32_t(p[2] & 0x3F) << 6 | char32_t(p[3] & 0x3F);
            *out++ = char16_t(0xD800 + ((code - 0x10000) >> 10));
            *out++ = char16_t(0xDC00 + ((code - 0x10000) & 0x3FF));
            p += 4;
        } else {
            return false;
        }
    }
    text.resize(out - start);
    return true;
}
