#include "TextField.h"

#include <QThread>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace
{

TEST(TextField, theTextIsStoredBeforeItIsAnnounced)
{
    TextField field;
    EXPECT_EQ(field.stringValue(), QString());
    QStringList announced;
    QObject::connect(&field, &TextField::stringValueChanged, [&](const QString& text) {
        announced.append(text);
        EXPECT_EQ(field.stringValue(), text);
    });
    field.setStringValue(u"1 of 3"_s);
    field.setStringValue(u"2 of 3"_s);
    EXPECT_EQ(announced, (QStringList{u"1 of 3"_s, u"2 of 3"_s}));
}

TEST(TextField, threadsReadWholeTexts)
{
    TextField field;
    const QStringList texts{u"first text"_s, u"second, longer text"_s};
    field.setStringValue(texts.first());
    const std::unique_ptr<QThread> writer(QThread::create([&] {
        for (int round = 0; round < 2000; ++round) {
            field.setStringValue(texts.at(round % 2));
        }
    }));
    writer->start();
    for (int round = 0; round < 2000; ++round) {
        EXPECT_TRUE(texts.contains(field.stringValue()));
    }
    writer->wait();
}

} // namespace
