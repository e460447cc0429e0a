#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

/// The folders of the program. A file may include what stands in its own folder or in a folder of
/// a lower number, never what stands above it.
struct Layer {
    QString folder;
    int height;
};

const QList<Layer>& layers()
{
    static const QList<Layer> kLayers{
        {u"platform/foundation"_s, 0},
        {u"platform/controls"_s, 1},
        {u"platform/services"_s, 1},
        {u"platform/imaging"_s, 1},
        {u"platform/photolibrary/package"_s, 3},
        {u"platform/photolibrary"_s, 2},
        {u"Shared Code/CrashReporter"_s, 4},
        {u"Shared Code"_s, 4},
        {u"tools"_s, 4},
        {u"app/cli"_s, 6},
        {u"app/desktop"_s, 6},
        {u"app"_s, 5},
    };
    return kLayers;
}

const Layer* layerOf(const QString& relativePath)
{
    for (const Layer& layer : layers()) {
        if (relativePath.startsWith(layer.folder + u'/')) {
            return &layer;
        }
    }
    return nullptr;
}

struct SourceFile {
    QString path; ///< relative to the source tree
    QStringList includes;
};

QList<SourceFile> sourceFiles()
{
    const QDir root(QStringLiteral(CORVANE_SOURCE_DIR));
    const QRegularExpression include(u"^#include \"([^\"]+)\""_s,
                                     QRegularExpression::MultilineOption);
    QList<SourceFile> files;
    for (const QString& top : {u"platform"_s, u"Shared Code"_s, u"tools"_s, u"app"_s}) {
        QDirIterator walk(
            root.filePath(top), {u"*.h"_s, u"*.cpp"_s}, QDir::Files, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            QFile file(walk.next());
            if (!file.open(QIODevice::ReadOnly)) {
                continue;
            }
            SourceFile source{root.relativeFilePath(file.fileName()), {}};
            auto matches = include.globalMatch(QString::fromUtf8(file.readAll()));
            while (matches.hasNext()) {
                source.includes.append(matches.next().captured(1));
            }
            files.append(source);
        }
    }
    return files;
}

} // namespace

TEST(Layers, everySourceFileStandsInALayer)
{
    const QList<SourceFile> files = sourceFiles();
    ASSERT_GT(files.size(), 50);
    for (const SourceFile& file : files) {
        EXPECT_NE(layerOf(file.path), nullptr) << file.path.toStdString();
    }
}

TEST(Layers, noIncludeRunsUp)
{
    const QList<SourceFile> files = sourceFiles();
    QHash<QString, QString> headers; // file name -> path
    for (const SourceFile& file : files) {
        if (file.path.endsWith(u".h"_s)) {
            headers.insert(file.path.section(u'/', -1), file.path);
        }
    }
    for (const SourceFile& file : files) {
        for (const QString& include : file.includes) {
            const QString target = headers.value(include.section(u'/', -1));
            const Layer* from = layerOf(file.path);
            const Layer* to = target.isEmpty() ? nullptr : layerOf(target);
            if (from == nullptr || to == nullptr || from->folder == to->folder) {
                continue;
            }
            EXPECT_GT(from->height, to->height)
                << file.path.toStdString() << " includes " << target.toStdString();
        }
    }
}

TEST(Layers, headerNamesAreUnique)
{
    QSet<QString> seen;
    for (const SourceFile& file : sourceFiles()) {
        if (file.path.endsWith(u".h"_s)) {
            const QString name = file.path.section(u'/', -1);
            EXPECT_FALSE(seen.contains(name)) << file.path.toStdString();
            seen.insert(name);
        }
    }
}

TEST(Layers, nothingButTheDesktopFaceKnowsWidgets)
{
    const QRegularExpression widgets(
        u"Qt6::Widgets|#include <Q(Widget|MainWindow|Dialog|PushButton|Label|Application)>"_s);
    const QDir root(QStringLiteral(CORVANE_SOURCE_DIR));
    for (const QString& top : {u"platform"_s, u"Shared Code"_s, u"tools"_s, u"app"_s}) {
        QDirIterator walk(root.filePath(top),
                          {u"*.h"_s, u"*.cpp"_s, u"CMakeLists.txt"_s},
                          QDir::Files,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            QFile file(walk.next());
            if (file.fileName().contains(u"/app/desktop/"_s)) {
                continue;
            }
            ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
            EXPECT_FALSE(widgets.match(QString::fromUtf8(file.readAll())).hasMatch())
                << file.fileName().toStdString();
        }
    }
}
