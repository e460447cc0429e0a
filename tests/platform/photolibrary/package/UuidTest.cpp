#include "Uuid.h"

#include <QByteArray>
#include <QSet>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(UuidTest, aNameIsTwentyTwoLettersOfARandomUuid)
{
    QSet<QString> names;
    for (int round = 0; round < 200; ++round) {
        const QString name = Uuid::create();
        EXPECT_EQ(name.size(), 22);
        EXPECT_TRUE(Uuid::isSafeName(name));
        QByteArray text = name.toLatin1();
        const QByteArray raw = QByteArray::fromBase64(text.replace('%', '/'));
        ASSERT_EQ(raw.size(), 16);
        EXPECT_EQ(static_cast<quint8>(raw.at(6)) >> 4U, 4U);
        EXPECT_EQ(static_cast<quint8>(raw.at(8)) >> 6U, 2U);
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 200);
}

TEST(UuidTest, whatCouldLeadElsewhereIsNoName)
{
    for (const QString& text :
         {QString(), u""_s, u"."_s, u".."_s, u"a/b"_s, u"/"_s, u"a\u0000"_s}) {
        EXPECT_FALSE(Uuid::isSafeName(text)) << text.toStdString();
    }
    EXPECT_TRUE(Uuid::isSafeName(u"..."_s));
    EXPECT_TRUE(Uuid::isSafeName(u"vrlB8qqnRZOXVv5Q+DooWQ"_s));
}
