#pragma once

#include "platform/TextSource.h"

/// A text held in one piece, read as a text source.
class StringTextSource final : public TextSource
{
public:
    explicit StringTextSource(QStringView text)
        : _text(text)
    {}

    qsizetype size() const override { return _text.size(); }
    QStringView view(qsizetype from, qsizetype to) override
    {
        return _text.sliced(from, to - from);
    }

private:
    QStringView _text;
};
