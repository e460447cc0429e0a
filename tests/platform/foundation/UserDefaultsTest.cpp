#include "UserDefaults.h"

#include "PropertyList.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

class UserDefaultsTest : public testing::Test
{
protected:
    [[nodiscard]] QString path() const { return m_folder.filePath(u"deep/defaults.plist"_s); }

    [[nodiscard]] QVariantMap stored() const
    {
        const Result<QVariant> content = PropertyList::read(path());
        return content.ok() ? content.value().toMap() : QVariantMap();
    }

    void replaceFile(const QByteArray& bytes) const { replaceFile(path(), bytes); }

    static void replaceFile(const QString& name, const QByteArray& bytes)
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(name).path()));
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    static QByteArray content(const QString& name)
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Notes "key=value" of each announcement, read while it is made.
    static void note(UserDefaults& defaults, QStringList& announced)
    {
        QObject::connect(
            &defaults,
            &UserDefaults::valueChanged,
            &defaults,
            [&defaults, &announced](const QString& key) {
                announced.append(key + u'=' + defaults.stringValue(key));
            },
            Qt::DirectConnection);
    }

    QTemporaryDir m_folder;
};

/// The log entries while the object lives.
class CapturedLog final
{
public:
    CapturedLog()
    {
        entries().clear();
        m_before = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& message) {
                entries().append(message);
            });
    }

    ~CapturedLog() { qInstallMessageHandler(m_before); }

    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    static QStringList& entries()
    {
        static QStringList all;
        return all;
    }

private:
    QtMessageHandler m_before;
};

TEST_F(UserDefaultsTest, aReadSeesVolatileThenPersistentThenRegistered)
{
    UserDefaults defaults(path());
    EXPECT_FALSE(defaults.value(u"Key"_s).isValid());
    defaults.registerDefaults({{u"Key"_s, u"registered"_s}});
    EXPECT_EQ(defaults.stringValue(u"Key"_s), u"registered"_s);
    defaults.setValue(u"Key"_s, u"persistent"_s);
    EXPECT_EQ(defaults.stringValue(u"Key"_s), u"persistent"_s);
    defaults.setVolatile(u"Key"_s, u"volatile"_s);
    EXPECT_EQ(defaults.stringValue(u"Key"_s), u"volatile"_s);
}

TEST_F(UserDefaultsTest, whatIsSetIsThereInTheNextRun)
{
    {
        UserDefaults defaults(path());
        defaults.setBool(u"Switch"_s, true);
        defaults.setInteger(u"Number"_s, -7);
        defaults.setDouble(u"Quality"_s, 0.8);
    }
    const UserDefaults defaults(path());
    EXPECT_TRUE(defaults.boolValue(u"Switch"_s));
    EXPECT_EQ(defaults.integerValue(u"Number"_s), -7);
    EXPECT_EQ(defaults.doubleValue(u"Quality"_s), 0.8);
    EXPECT_TRUE(defaults.stringValue(u"None"_s).isNull());
}

TEST_F(UserDefaultsTest, aWriteToAVolatileKeyStaysVolatile)
{
    UserDefaults defaults(path());
    defaults.setVolatile(u"Quality"_s, 0.5);
    defaults.setDouble(u"Quality"_s, 0.6);
    EXPECT_EQ(defaults.doubleValue(u"Quality"_s), 0.6);
    EXPECT_FALSE(QFileInfo::exists(path()));
    defaults.setInteger(u"Other"_s, 1);
    EXPECT_EQ(stored(), (QVariantMap{{u"Other"_s, qlonglong{1}}}));
}

TEST_F(UserDefaultsTest, aRemovedVolatileKeyStaysVolatileAndReadsSeeTheLayersBelow)
{
    UserDefaults defaults(path());
    defaults.registerDefaults({{u"Quality"_s, 0.1}});
    defaults.setDouble(u"Quality"_s, 0.4);
    defaults.setVolatile(u"Quality"_s, 0.5);
    const QVariantMap before = stored();

    defaults.remove(u"Quality"_s);
    EXPECT_EQ(defaults.doubleValue(u"Quality"_s), 0.4);
    EXPECT_EQ(stored(), before) << "the stored value is another layer's";
    defaults.setDouble(u"Quality"_s, 0.6);
    EXPECT_EQ(defaults.doubleValue(u"Quality"_s), 0.6);
    defaults.setValue(u"Quality"_s, QVariant());
    EXPECT_EQ(defaults.doubleValue(u"Quality"_s), 0.4) << "an invalid value removes";
    EXPECT_EQ(stored(), before);

    defaults.setVolatile(u"New"_s, 1);
    defaults.remove(u"New"_s);
    EXPECT_FALSE(defaults.value(u"New"_s).isValid());
    defaults.registerDefaults({{u"New"_s, 7}});
    EXPECT_EQ(defaults.integerValue(u"New"_s), 7);
    defaults.setInteger(u"New"_s, 2);
    EXPECT_EQ(defaults.integerValue(u"New"_s), 2);
    EXPECT_EQ(stored(), before);
}

TEST_F(UserDefaultsTest, aRemovedKeyFallsBackToTheRegisteredValue)
{
    UserDefaults defaults(path());
    defaults.registerDefaults({{u"Key"_s, 1}});
    defaults.setInteger(u"Key"_s, 2);
    defaults.remove(u"Key"_s);
    EXPECT_EQ(defaults.integerValue(u"Key"_s), 1);
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(UserDefaultsTest, twoProgramsThatShareTheFileLoseNothing)
{
    UserDefaults one(path());
    UserDefaults two(path());
    one.setInteger(u"One"_s, 1);
    two.setInteger(u"Two"_s, 2);
    one.setInteger(u"Three"_s, 3);
    EXPECT_EQ(stored(),
              (QVariantMap{
                  {u"One"_s, qlonglong{1}}, {u"Two"_s, qlonglong{2}}, {u"Three"_s, qlonglong{3}}}));
    EXPECT_EQ(one.integerValue(u"Two"_s), 2) << "a write reads what others wrote";
}

TEST_F(UserDefaultsTest, threadsThatWriteAtTheSameTimeLoseNothing)
{
    constexpr int kThreads = 4;
    constexpr int kKeys = 10;
    std::vector<std::unique_ptr<QThread>> threads;
    UserDefaults shared(path());
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back(QThread::create([this, number, &shared] {
            UserDefaults own(path());
            for (int key = 0; key < kKeys; ++key) {
                UserDefaults& defaults = key % 2 == 0 ? own : shared;
                defaults.setInteger(u"%1-%2"_s.arg(number).arg(key), key);
            }
        }));
        threads.back()->start();
    }
    for (const auto& thread : threads) {
        thread->wait();
    }
    EXPECT_EQ(stored().size(), kThreads * kKeys);
}

TEST_F(UserDefaultsTest, aWriteAnnouncesWhatAnotherProgramChangedMeanwhile)
{
    UserDefaults one(path());
    one.registerDefaults({{u"AsRegistered"_s, 5}, {u"Fallback"_s, qlonglong{6}}});
    one.setInteger(u"Changed"_s, 1);
    one.setInteger(u"Removed"_s, 2);
    one.setInteger(u"Same"_s, 3);
    one.setVolatile(u"Hidden"_s, 4);

    UserDefaults two(path());
    two.setInteger(u"Changed"_s, 10);
    two.remove(u"Removed"_s);
    two.setInteger(u"Added"_s, 11);
    two.setInteger(u"Hidden"_s, 12);
    two.setInteger(u"Fallback"_s, 6);

    QStringList announced;
    note(one, announced);
    one.setInteger(u"Own"_s, 13);
    ASSERT_FALSE(announced.isEmpty());
    EXPECT_EQ(announced.first(), u"Own=13"_s) << "the written key comes first";
    announced.sort();
    EXPECT_EQ(announced, (QStringList{u"Added=11"_s, u"Changed=10"_s, u"Own=13"_s, u"Removed="_s}))
        << "once each, and nothing of which reads see the same as before";
    announced.clear();
    one.setInteger(u"Own"_s, 14);
    EXPECT_EQ(announced, QStringList{u"Own=14"_s});
}

TEST_F(UserDefaultsTest, aKeyThatAnotherProgramChangedTooIsAnnouncedOnce)
{
    UserDefaults one(path());
    one.setInteger(u"Key"_s, 1);
    UserDefaults(path()).setInteger(u"Key"_s, 2);
    QStringList announced;
    note(one, announced);
    one.setInteger(u"Key"_s, 3);
    EXPECT_EQ(announced, QStringList{u"Key=3"_s});
}

TEST_F(UserDefaultsTest, readsAndVolatileWritesDoNotWaitForAWriteToTheFile)
{
    UserDefaults defaults(path());
    defaults.setInteger(u"Key"_s, 1);
    defaults.setVolatile(u"Volatile"_s, 1);
    QLockFile otherProgram(path() + u".lock"_s);
    ASSERT_TRUE(otherProgram.lock());
    const std::unique_ptr<QThread> writer(
        QThread::create([&defaults] { defaults.setInteger(u"Key"_s, 2); }));
    writer->start();

    QElapsedTimer whole;
    whole.start();
    qint64 longest = 0;
    while (!whole.hasExpired(300)) {
        QElapsedTimer one;
        one.start();
        EXPECT_NE(defaults.integerValue(u"Key"_s), 0);
        defaults.setInteger(u"Volatile"_s, 2);
        longest = std::max(longest, one.elapsed());
        QThread::msleep(1);
    }
    EXPECT_LT(longest, 1000) << "milliseconds";
    otherProgram.unlock();
    writer->wait();
    EXPECT_EQ(defaults.integerValue(u"Key"_s), 2);
    EXPECT_EQ(stored().value(u"Key"_s), QVariant(qlonglong{2}));
}

TEST_F(UserDefaultsTest, aLockOfAProgramThatWasKilledBeforeItNamedItselfIsNoObstacle)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path()).path()));
    QFile lock(path() + u".lock"_s);
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly)); // and nothing is written to it
    lock.close();
    UserDefaults defaults(path());
    defaults.setInteger(u"Key"_s, 1);
    EXPECT_EQ(stored().value(u"Key"_s), QVariant(qlonglong{1}));
}

TEST_F(UserDefaultsTest, writesAreOrderedSoThatReadsSeeInTheEndWhatTheFileHolds)
{
    constexpr int kThreads = 4;
    constexpr int kWrites = 10;
    UserDefaults defaults(path());
    std::vector<std::unique_ptr<QThread>> threads;
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back(QThread::create([number, &defaults] {
            for (int write = 0; write < kWrites; ++write) {
                defaults.setInteger(u"Key"_s, kWrites * number + write + 1);
                EXPECT_NE(defaults.integerValue(u"Key"_s), 0);
            }
        }));
        threads.back()->start();
    }
    for (const auto& thread : threads) {
        thread->wait();
    }
    EXPECT_EQ(stored().value(u"Key"_s), defaults.value(u"Key"_s));
}

TEST_F(UserDefaultsTest, theValueThatIsStoredAlreadyIsNotWrittenAgain)
{
    UserDefaults defaults(path());
    defaults.setDouble(u"Quality"_s, 0.8);
    defaults.setInteger(u"Number"_s, 1);
    const QByteArray before = PropertyList::toXml(stored()).value();
    // A comment shows whether the file was written again.
    replaceFile(before + "<!-- mine -->");
    defaults.setDouble(u"Quality"_s, 0.8);
    defaults.remove(u"None"_s);
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().endsWith("<!-- mine -->"));
    file.close();
    defaults.setBool(u"Number"_s, true);
    EXPECT_STREQ(stored().value(u"Number"_s).typeName(), QVariant(true).typeName())
        << "the switch YES is another value than the number 1";
}

TEST_F(UserDefaultsTest, everySettingIsAnnouncedOnItsThreadAlsoWhenItIsTheSame)
{
    UserDefaults defaults(path());
    QStringList announced;
    QObject::connect(
        &defaults,
        &UserDefaults::valueChanged,
        &defaults,
        [&](const QString& key) {
            announced.append(key);
            EXPECT_TRUE(defaults.value(key).isValid() || key == u"Gone"_s) << "outside the lock";
        },
        Qt::DirectConnection);
    defaults.setInteger(u"A"_s, 1);
    defaults.setInteger(u"A"_s, 1);
    defaults.setVolatile(u"B"_s, 1);
    defaults.setInteger(u"B"_s, 2);
    defaults.remove(u"Gone"_s);
    defaults.registerDefaults({{u"C"_s, 1}});
    EXPECT_EQ(announced, (QStringList{u"A"_s, u"A"_s, u"B"_s, u"B"_s, u"Gone"_s, u"C"_s}));
}

TEST_F(UserDefaultsTest, aDamagedFileCountsAsEmptyAndIsPutAsideNotOverwritten)
{
    replaceFile("torn");
    const CapturedLog log;
    UserDefaults defaults(path());
    EXPECT_EQ(CapturedLog::entries().size(), 1);
    EXPECT_FALSE(defaults.value(u"A"_s).isValid());
    defaults.setInteger(u"A"_s, 1);
    EXPECT_EQ(stored(), (QVariantMap{{u"A"_s, qlonglong{1}}}));
    EXPECT_EQ(content(path() + u".damaged"_s), "torn");
}

TEST_F(UserDefaultsTest, eachDamagedFileIsPutAsideUnderANameOfItsOwn)
{
    const CapturedLog log;
    const QString aside = path() + u".damaged"_s;
    UserDefaults defaults(path());
    int number = 0;
    for (const QByteArray torn : {"torn once", "torn twice", "torn again"}) {
        replaceFile(torn);
        defaults.setInteger(u"A"_s, ++number);
        EXPECT_EQ(stored(), (QVariantMap{{u"A"_s, qlonglong{number}}}));
    }
    EXPECT_EQ(content(aside), "torn once");
    EXPECT_EQ(content(aside + u" 2"_s), "torn twice");
    EXPECT_EQ(content(aside + u" 3"_s), "torn again");
}

TEST_F(UserDefaultsTest, aDamagedFileThatCannotBePutAsideIsNotOverwrittenAndTheLogSaysWhyOnce)
{
    // With ".lock" behind it the name is short enough, with ".damaged" it is not.
    const QString name = m_folder.filePath(QString(248, u'n'));
    replaceFile(name, "torn");
    const CapturedLog log;
    UserDefaults defaults(name);
    CapturedLog::entries().clear();
    defaults.setInteger(u"A"_s, 1);
    defaults.setInteger(u"B"_s, 2);
    EXPECT_EQ(content(name), "torn");
    EXPECT_EQ(defaults.integerValue(u"A"_s), 1) << "settings live for the run";
    ASSERT_EQ(CapturedLog::entries().size(), 1);
    EXPECT_TRUE(CapturedLog::entries().first().contains(name));
    EXPECT_TRUE(CapturedLog::entries().first().contains(u"name too long"_s));
}

TEST_F(UserDefaultsTest, whereNothingCanBeWrittenSettingsLiveForTheRunAndTheLogSaysSoOnce)
{
    // A file stands where the folder should be.
    QFile inTheWay(m_folder.filePath(u"deep"_s));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    const CapturedLog log;
    UserDefaults defaults(path());
    defaults.setInteger(u"A"_s, 1);
    defaults.setInteger(u"B"_s, 2);
    EXPECT_EQ(defaults.integerValue(u"A"_s), 1);
    EXPECT_EQ(defaults.integerValue(u"B"_s), 2);
    EXPECT_EQ(CapturedLog::entries().filter(u"deep"_s).size(), 1);

    ASSERT_TRUE(inTheWay.remove());
    defaults.setInteger(u"C"_s, 3);
    EXPECT_EQ(stored().size(), 3) << "what could not be stored before is stored now";
}

TEST_F(UserDefaultsTest, aValueThatNoPropertyListHoldsIsRefusedAndLogged)
{
    const CapturedLog log;
    UserDefaults defaults(path());
    defaults.setValue(u"Bad"_s, QVariantList{QVariant()});
    EXPECT_FALSE(defaults.value(u"Bad"_s).isValid());
    EXPECT_EQ(CapturedLog::entries().size(), 1);
    defaults.setInteger(u"Good"_s, 1);
    EXPECT_EQ(stored().keys(), QStringList{u"Good"_s});
}

TEST_F(UserDefaultsTest, aRefusedValueLeavesTheOldOneAndTheLogNamesTheKeyInOneLine)
{
    UserDefaults defaults(path());
    defaults.setInteger(u"Key"_s, 1);
    defaults.setVolatile(u"Volatile"_s, 2);
    const CapturedLog log;
    QStringList announced;
    note(defaults, announced);
    const QVariantList foreign{QUrl(u"http://localhost"_s),
                               QVariant::fromValue(QThread::currentThread()),
                               QVariant::fromValue(nullptr)};
    for (const QVariant& value : foreign) {
        CapturedLog::entries().clear();
        defaults.setValue(u"Key"_s, value);
        ASSERT_EQ(CapturedLog::entries().size(), 1) << value.typeName();
        EXPECT_TRUE(CapturedLog::entries().first().contains(u"\"Key\""_s));
        EXPECT_FALSE(CapturedLog::entries().first().contains(u'\n'));
        defaults.setValue(u"Volatile"_s, value);
    }
    EXPECT_EQ(announced, QStringList());
    EXPECT_EQ(defaults.integerValue(u"Key"_s), 1);
    EXPECT_EQ(stored(), (QVariantMap{{u"Key"_s, qlonglong{1}}}));
    EXPECT_EQ(defaults.integerValue(u"Volatile"_s), 2);
    const QString unspeakable(QChar(1));
    defaults.setInteger(unspeakable, 3);
    EXPECT_FALSE(defaults.value(unspeakable).isValid()) << "no file could hold this key";
}

TEST_F(UserDefaultsTest, aValueIsKeptAsTheFileGivesItBack)
{
    UserDefaults defaults(path());
    defaults.setValue(u"Date"_s, QVariant::fromValue(PropertyList::Date{1.5}));
    defaults.setValue(u"List"_s, QVariantList{QStringList{u"a"_s}, 1});
    QStringList announced;
    note(defaults, announced);
    defaults.setInteger(u"Key"_s, 1);
    EXPECT_EQ(announced, QStringList{u"Key=1"_s}) << "reading them back changes nothing";
    EXPECT_EQ(defaults.value(u"Date"_s).value<PropertyList::Date>(), PropertyList::Date{1.0});
    EXPECT_EQ(defaults.value(u"List"_s), stored().value(u"List"_s));
}

TEST_F(UserDefaultsTest, textIsReadAsANumbersStart)
{
    UserDefaults defaults(path());
    defaults.setValue(u"Text"_s, u"7x"_s);
    EXPECT_EQ(defaults.integerValue(u"Text"_s), 7);
    EXPECT_EQ(defaults.doubleValue(u"Text"_s), 7.0);
    EXPECT_TRUE(defaults.boolValue(u"Text"_s));
    EXPECT_EQ(defaults.integerValue(u"None"_s), 0);
    EXPECT_FALSE(defaults.boolValue(u"None"_s));
}

TEST_F(UserDefaultsTest, theStandardFileLiesInTheConfigurationFolder)
{
    qputenv("XDG_CONFIG_HOME", "/some/where");
    EXPECT_EQ(UserDefaults::standardFilePath(), u"/some/where/corvane/defaults.plist"_s);
    qunsetenv("XDG_CONFIG_HOME");
    EXPECT_TRUE(UserDefaults::standardFilePath().endsWith(u"/.config/corvane/defaults.plist"_s));
}

} // namespace
