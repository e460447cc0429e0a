#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QSize>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// A folder of small picture files that a test makes for itself.
class PictureFolder final
{
public:
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

    /// A JPEG file of one colour; `orientation`: what its EXIF tag says, 1..8.
    QString jpeg(const QString& name, QSize size, const QColor& color, int orientation = 1)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        QByteArray content;
        QBuffer buffer(&content);
        EXPECT_TRUE(image.save(&buffer, "JPG"));
        constexpr qsizetype kStartOfImage = 2;
        content.insert(kStartOfImage, exifSegment(orientation));
        return bytes(name, content);
    }

    /// The file's folders are made with it.
    QString bytes(const QString& name, const QByteArray& content)
    {
        QFile file(placeFor(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path(name);
    }

private:
    /// An APP1 segment with nothing but the orientation.
    static QByteArray exifSegment(int orientation)
    {
        QByteArray segment("\xFF\xE1\x00\x22" // the length counts itself
                           "Exif\0\0"
                           "MM\0\x2A\0\0\0\x08"
                           "\0\x01"                           // one entry
                           "\x01\x12\0\x03\0\0\0\x01\0\1\0\0" // a short
                           "\0\0\0\0",                        // no other directory
                           36);
        constexpr qsizetype kValue = 29;
        segment[kValue] = static_cast<char>(orientation);
        return segment;
    }

    [[nodiscard]] QString placeFor(const QString& name) const
    {
        EXPECT_TRUE(m_folder.isValid());
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path(name)).path()));
        return path(name);
    }

    QTemporaryDir m_folder;
};
