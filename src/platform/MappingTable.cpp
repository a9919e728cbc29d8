#include "platform/MappingTable.h"

#include "platform/LargeBuffer.h"

#include <algorithm>
#include <memory>
#include <mutex>

const MappingTable* MappingTable::tableForEncoding(quint32 encoding)
{
    static std::once_flag flags[16];
    static std::unique_ptr<MappingTable> built[16];
    for (int i = 0; i < tableCount && i < 16; ++i) {
        if (tables[i].encoding == encoding) {
            std::call_once(flags[i], [i] { built[i] = std::make_unique<MappingTable>(tables[i]); });
            return built[i].get();
        }
    }
    return nullptr;
}

MappingTable::MappingTable(const Data& data)
    : _data(data)
    , _single(256, 0)
    , _isLead(256, false)
    , _writeSingle(0x10000, 0)
{
    quint32 offset = 0;
    for (int i = 0; i < data.count; ++i) {
        const quint16 code = data.codes[i];
        const int length = data.lengths[i] & 0x7F;
        const bool written = !(data.lengths[i] & 0x80);
        const quint32 slot = (offset << 8 | quint32(length)) + 1;
        if (code < 0x100) {
            _single[code] = slot;
        } else {
            if (_double.empty()) {
                _double.assign(0x10000, 0);
            }
            _double[code] = slot;
            _isLead[code >> 8] = true;
        }
        if (written) {
            if (length == 1) {
                if (_writeSingle[data.text[offset]] == 0) {
                    _writeSingle[data.text[offset]] = quint32(code) + 1;
                }
            } else {
                auto& candidates = _writeMulti[data.text[offset]];
                candidates.emplace_back(std::u16string(data.text + offset, size_t(length)), code);
            }
        }
        offset += quint32(length);
    }
    for (auto& [first, candidates] : _writeMulti) {
        std::stable_sort(candidates.begin(), candidates.end(), [](const auto& a, const auto& b) {
            return a.first.size() > b.first.size();
        });
    }
}

bool MappingTable::decode(QByteArrayView data, QString& text) const
{
    // Every sequence here yields at least one unit per byte pair and at most a few per
    // sequence, so the byte count is a close upper bound for the common case.
    text.resize(data.size());
    LargeBuffer::adviseHugePages(text.data(), text.size() * 2);
    char16_t* out = reinterpret_cast<char16_t*>(text.data());
    qsizetype used = 0;
    const auto* bytes = reinterpret_cast<const uchar*>(data.data());
    const qsizetype size = data.size();
    for (qsizetype i = 0; i < size;) {
        quint32 slot;
        if (_isLead[bytes[i]]) {
            if (i + 1 >= size) {
                return false;
            }
            slot = _double[quint32(bytes[i]) << 8 | bytes[i + 1]];
            i += 2;
        } else {
            slot = _single[bytes[i]];
            i += 1;
        }
        if (slot == 0) {
            return false;
        }
        --slot;
        const quint32 length = slot & 0xFF;
        if (used + qsizetype(length) > text.size()) {
            text.resize(text.size() + qMax<qsizetype>(16, size - i + length));
            out = reinterpret_cast<char16_t*>(text.data());
        }
        std::copy_n(_data.text + (slot >> 8), length, out + used);
        used += length;
    }
    text.resize(used);
    return true;
}

bool MappingTable::encode(QStringView text, QByteArray& data) const
{
    data.clear();
    data.reserve(text.size() * 2);
    const auto* units = reinterpret_cast<const char16_t*>(text.utf16());
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < size;) {
        const char16_t unit = units[i];
        quint32 code = 0;
        qsizetype consumed = 1;
        if (const auto multi = _writeMulti.find(unit); multi != _writeMulti.end()) {
            for (const auto& [sequence, written] : multi->second) {
                const qsizetype length = qsizetype(sequence.size());
                if (i + length <= size && std::equal(sequence.begin(), sequence.end(), units + i)) {
                    code = quint32(written) + 1;
                    consumed = length;
                    break;
                }
            }
        }
        if (code == 0) {
            code = _writeSingle[unit];
        }
        if (code == 0) {
            return false;
        }
        --code;
        if (code >= 0x100) {
            data.append(char(code >> 8));
        }
        data.append(char(code & 0xFF));
        i += consumed;
    }
    return true;
}
