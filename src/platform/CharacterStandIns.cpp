#include "platform/CharacterStandIns.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

// The characters Qt's text classes turn into line ends, LF aside.
constexpr std::array<char16_t, 3> kBlockEnds{0x2029, 0xFDD0, 0xFDD1};

// Whether `c` may stand in for another character: not one of those Qt's text classes or their
// layout treats specially (block and line ends, the object mark, surrogates), and not a
// control character, which a reader would take for part of the file.
bool mayStandIn(char16_t c)
{
    if (c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0xD800 && c < 0xE000)) {
        return false;
    }
    return c != 0x2028 && c != 0x2029 && c != 0xFDD0 && c != 0xFDD1 && c != 0xFFFC && c != 0xFEFF;
}

// Candidates in order of preference: the noncharacters, which nothing types or pastes, then
// the private use area, then any other character.
template <typename Visit> bool forEachCandidate(Visit visit)
{
    for (char16_t c = 0xFDD2; c <= 0xFDEF; ++c) {
        if (visit(c)) {
            return true;
        }
    }
    for (char16_t c : {char16_t(0xFFFE), char16_t(0xFFFF)}) {
        if (visit(c)) {
            return true;
        }
    }
    for (char16_t c = 0xE000; c <= 0xF8FF; ++c) {
        if (visit(c)) {
            return true;
        }
    }
    for (char32_t c = 0x20; c < 0xE000; ++c) {
        if (visit(char16_t(c))) {
            return true;
        }
    }
    for (char32_t c = 0xF900; c < 0xFDD0; ++c) {
        if (visit(char16_t(c))) {
            return true;
        }
    }
    for (char32_t c = 0xFDF0; c < 0xFFFE; ++c) {
        if (visit(char16_t(c))) {
            return true;
        }
    }
    return false;
}

} // namespace

bool CharacterStandIns::neededInUtf8(QByteArrayView utf8)
{
    const std::string_view bytes(utf8.data(), size_t(utf8.size()));
    return std::any_of(kBlockEnds.begin(), kBlockEnds.end(), [&](char16_t c) {
        const QByteArray encoded = QStringView(&c, 1).toUtf8();
        // The search goes from one first byte to the next with memchr.
        return bytes.find(std::string_view(encoded.constData(), size_t(encoded.size()))) !=
               std::string_view::npos;
    });
}

std::optional<CharacterStandIns> CharacterStandIns::forText(QStringView text,
                                                            bool keepCarriageReturns)
{
    std::vector<char16_t> needed;
    if (keepCarriageReturns && text.contains(u'\r')) {
        needed.push_back(u'\r');
    }
    for (char16_t c : kBlockEnds) {
        if (text.contains(QChar(c))) {
            needed.push_back(c);
        }
    }
    CharacterStandIns standIns;
    if (needed.empty()) {
        return standIns;
    }
    std::vector<bool> used(0x10000, false);
    for (QChar c : text) {
        used[c.unicode()] = true;
    }
    for (char16_t original : needed) {
        const bool found = forEachCandidate([&](char16_t candidate) {
            if (used[candidate] || !mayStandIn(candidate)) {
                return false;
            }
            used[candidate] = true;
            standIns._pairs.push_back({original, candidate});
            return true;
        });
        if (!found) {
            return std::nullopt;
        }
    }
    return standIns;
}

void CharacterStandIns::substitute(QString& text) const
{
    for (const Pair& pair : _pairs) {
        text.replace(QChar(pair.original), QChar(pair.standIn));
    }
}

void CharacterStandIns::restore(QString& text) const
{
    for (const Pair& pair : _pairs) {
        text.replace(QChar(pair.standIn), QChar(pair.original));
    }
}

QChar CharacterStandIns::originalOf(QChar standIn) const
{
    const auto it = std::find_if(_pairs.begin(), _pairs.end(), [standIn](const Pair& pair) {
        return pair.standIn == standIn.unicode();
    });
    return it == _pairs.end() ? QChar() : QChar(it->original);
}

bool CharacterStandIns::operator==(const CharacterStandIns& other) const
{
    return _pairs == other._pairs;
}
