// The go-to grammar: a description of lines ("12", "-3", "+2-5", "4-" …), parsed and then
// applied to a small text with a selection the input chooses.
#include "FuzzTarget.h"
#include "search/SearchEngine.h"

TESSARAN_FUZZ_TARGET(line_description)
{
    if (size < 2) {
        return;
    }
    const QString component =
        QString::fromUtf8(reinterpret_cast<const char*>(data + 2), qsizetype(size - 2));
    static const QString text = QStringLiteral("one\ntwo\r\nthree\rfour\u2028five\n\nseven");
    const qsizetype location = data[0] % (text.size() + 1);
    const Range selection(location, data[1] % (text.size() - location + 1));
    qint64 from = 0;
    qint64 to = 0;
    qint64 relative = 0;
    if (SearchEngine::parseLineDescription(component, &from, &to, &relative)) {
        Range range;
        SearchEngine::getRange(&range, text, selection, from, to, relative);
    }
    SearchEngine::selectLinesUsingDescription(component, text, selection);
}
