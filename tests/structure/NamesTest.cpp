#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

/// The types that a header defines outside of any namespace. Within one nothing is indented; its
/// first and its last line tell.
QStringList globalTypes(const QString& header)
{
    static const QRegularExpression kType(
        u"^(?:class|struct|enum class|union) (\\w+)(?: final)?(?: :.*)?(?: \\{.*)?$"_s);
    QStringList types;
    bool isInNamespace = false;
    const QStringList lines = header.split(u'\n');
    for (const QString& line : lines) {
        if (line.startsWith("namespace "_L1) && !line.contains(u';')) {
            isInNamespace = true;
        } else if (line.startsWith("} // namespace"_L1)) {
            isInNamespace = false;
        } else if (!isInNamespace) {
            const auto match = kType.match(line);
            if (match.hasMatch()) {
                types.append(match.captured(1));
            }
        }
    }
    return types;
}

} // namespace

TEST(Names, noTwoHeadersDefineAGlobalTypeOfOneName)
{
    // Programs that link both would mix them up without a word.
    QHash<QString, QString> headerOf;
    for (const QString& top : {u"platform"_s, u"Shared Code"_s, u"tools"_s, u"app"_s, u"bench"_s}) {
        QDirIterator walk(QStringLiteral(CORVANE_SOURCE_DIR) + u'/' + top,
                          {u"*.h"_s},
                          QDir::Files,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            QFile file(walk.next());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
            const QStringList types = globalTypes(QString::fromUtf8(file.readAll()));
            for (const QString& type : types) {
                EXPECT_FALSE(headerOf.contains(type))
                    << type.toStdString() << " is defined in " << file.fileName().toStdString()
                    << " and " << headerOf.value(type).toStdString();
                headerOf.insert(type, file.fileName());
            }
        }
    }
    EXPECT_GT(headerOf.size(), 250);
}

TEST(Names, typesOfNamespacesAreNoGlobalOnes)
{
    EXPECT_EQ(
        globalTypes(u"class A final\n{\n};\nnamespace N\n{\nstruct B {\n};\n} // namespace N\n"
                    "struct C : A {\nclass Forward;\nstruct D {\nstruct A::Inner {\n"_s),
        (QStringList{u"A"_s, u"C"_s, u"D"_s}));
}
