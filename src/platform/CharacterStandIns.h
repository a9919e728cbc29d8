#pragma once

#include <QByteArrayView>
#include <QChar>
#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

/// The characters Qt's text classes cannot show or hold as they are, and those that stand in
/// for them while the text is edited.
///
/// Qt's text layout and text documents end a line at CR and U+2029, and its documents also at
/// their two frame marks U+FDD0 and U+FDD1 (and give every line end back as U+2029): a literal
/// one of these in a file would be shown, or come back, as a line break. Each such character of a
/// text is replaced, while the text is edited, by a character the text does not hold anywhere else
/// (a noncharacter, which no keyboard types, whenever one is free), and put back when the text is
/// taken out, so the two mappings are exact inverses for that text.
class CharacterStandIns
{
public:
    /// No character needs a stand-in.
    CharacterStandIns() = default;

    /// Stand-ins for the characters of `text` that need one. CR needs one only with
    /// `keepCarriageReturns`, for a text whose line breaks are kept exactly as read (LF then
    /// ends the blocks alone). Nothing when the text already holds every character that
    /// could stand in (some 63,000 different ones).
    static std::optional<CharacterStandIns> forText(QStringView text, bool keepCarriageReturns);
    /// Whether the UTF-8 bytes `utf8` hold a character that needs a stand-in when CRs are not
    /// kept, found without decoding them.
    static bool neededInUtf8(QByteArrayView utf8);

    bool isEmpty() const { return _pairs.empty(); }
    /// Puts the stand-ins in place of the characters they stand for.
    void substitute(QString& text) const;
    /// Puts the original characters back.
    void restore(QString& text) const;
    /// The character `standIn` stands for, or a null character when it stands for none.
    QChar originalOf(QChar standIn) const;

    bool operator==(const CharacterStandIns& other) const;

private:
    struct Pair {
        char16_t original;
        char16_t standIn;
        bool operator==(const Pair&) const = default;
    };
    std::vector<Pair> _pairs;
};
