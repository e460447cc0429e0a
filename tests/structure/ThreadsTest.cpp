#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

qsizetype countOf(const QString& pattern, const QString& text)
{
    return text.count(QRegularExpression(pattern));
}

} // namespace

TEST(Threads, eachThatTheProgramStartsHasAStackForSignals)
{
    const QDir root(QStringLiteral(CORVANE_SOURCE_DIR));
    qsizetype threads = 0;
    for (const QString& top : {u"platform"_s, u"Shared Code"_s, u"tools"_s, u"app"_s}) {
        QDirIterator walk(
            root.filePath(top), {u"*.h"_s, u"*.cpp"_s}, QDir::Files, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            QFile file(walk.next());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
            const QString text = QString::fromUtf8(file.readAll());
            // Threads of the standard library and of Qt, and what is handed to a pool of them.
            const qsizetype started = countOf(
                uR"(\bstd::(async|thread|jthread)[({]|\bQThread::create\(|\.start\(\[)"_s, text);
            EXPECT_GE(countOf(uR"(\bconst AlternateSignalStack \w+;)"_s, text), started)
                << file.fileName().toStdString();
            threads += started;
        }
    }
    EXPECT_GE(threads, 6) << "the pattern finds what there is";
}
