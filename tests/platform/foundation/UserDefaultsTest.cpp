#include "UserDefaults.h"

#include "PropertyList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

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

    void replaceFile(const QByteArray& bytes) const
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path()).path()));
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(bytes), bytes.size());
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
    QFile aside(path() + u".damaged"_s);
    ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
    EXPECT_EQ(aside.readAll(), "torn");
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
