#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <unordered_map>
#include <vector>

/// A byte-to-text table for an encoding that no conversion library on the system carries:
/// one- and two-byte sequences, each decoding to a short text. The data come from
/// MappingTableData.cpp (made by scripts/generate-codec-tables) or are written by hand.
class MappingTable
{
public:
    /// The compiled form of one table, sorted by byte sequence. A code below 0x100 is one
    /// byte; a larger one is a lead byte (high) and a trail byte (low). Each entry's text
    /// is `lengths[i] & 0x7F` UTF-16 units, following the previous entry's in `text`;
    /// bit 0x80 marks a sequence that decodes but is never written.
    struct Data {
        quint32 encoding; ///< Core Foundation number
        int count;
        const quint16* codes;
        const quint8* lengths;
        const char16_t* text;
    };

    /// The table of a Core Foundation encoding; null when there is none. Built on first use.
    static const MappingTable* tableForEncoding(quint32 encoding);

    /// Strict: false on a byte sequence the table does not hold.
    bool decode(QByteArrayView data, QString& text) const;
    /// Strict: false on any character the table cannot write.
    bool encode(QStringView text, QByteArray& data) const;

    explicit MappingTable(const Data& data);

private:
    static const Data tables[];
    static const int tableCount;

    const Data& _data;
    // (offset << 8 | length) + 1 for each one-byte sequence; 0 = invalid
    std::vector<quint32> _single;
    // Same for two-byte sequences, indexed by the whole 16-bit code; empty if none.
    std::vector<quint32> _double;
    std::vector<bool> _isLead;
    // Written form of each one-unit text: the code + 1, 0 = cannot be written.
    std::vector<quint32> _writeSingle;
    // Texts of more than one unit, by their first unit; longest first.
    std::unordered_map<char16_t, std::vector<std::pair<std::u16string, quint16>>> _writeMulti;
};
