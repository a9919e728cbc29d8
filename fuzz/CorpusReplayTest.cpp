// Every input of every fuzz corpus, run through its target as an ordinary test: the crashes
// fuzzing once found stay fixed, with or without a fuzzing compiler.
#include "FuzzTarget.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>

namespace {

std::string targetName(const ::testing::TestParamInfo<FuzzTarget::Target>& info)
{
    return info.param.name;
}

std::vector<FuzzTarget::Target> sortedTargets()
{
    std::vector<FuzzTarget::Target> all = FuzzTarget::targets();
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) {
        return std::string(a.name) < std::string(b.name);
    });
    return all;
}

} // namespace

namespace FuzzTarget {
// Names the target in test names and messages.
void PrintTo(const Target& target, std::ostream* out)
{
    *out << target.name;
}
} // namespace FuzzTarget

class FuzzCorpus : public ::testing::TestWithParam<FuzzTarget::Target>
{
};

TEST_P(FuzzCorpus, EveryInputRunsClean)
{
    const FuzzTarget::Target target = GetParam();
    const QDir corpus(QStringLiteral(TESSARAN_SOURCE_DIR "/fuzz/corpus/") +
                      QString::fromLatin1(target.name));
    const QStringList inputs = corpus.entryList(QDir::Files, QDir::Name);
    ASSERT_FALSE(inputs.isEmpty()) << "no corpus in " << corpus.path().toStdString();
    for (const QString& name : inputs) {
        QFile file(corpus.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        const QByteArray bytes = file.readAll();
        SCOPED_TRACE(name.toStdString());
        target.entry(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                     std::size_t(bytes.size()));
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzCorpus, ::testing::ValuesIn(sortedTargets()), targetName);
