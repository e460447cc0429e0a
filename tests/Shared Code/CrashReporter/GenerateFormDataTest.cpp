#include "GenerateFormData.h"

#include "Assertion.h"
#include "LogRecorder.h"
#include "QtPrinters.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

#include <limits>

using namespace Qt::StringLiterals;

namespace
{

class GenerateFormDataTest : public testing::Test
{
protected:
    QUrl makeFile(const QString& name, const QByteArray& content)
    {
        const QString path = m_folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(content), content.size());
        return QUrl::fromLocalFile(path);
    }

    static QByteArray form(const QVariantMap& values) { return GenerateFormData(values, u"b"_s); }

    /// A form of one text.
    static QByteArray textForm(const QByteArray& name, const QByteArray& content)
    {
        return "--b\r\nContent-Disposition: form-data; name=\"" + name +
               "\"\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n" + content + "\r\n--b--\r\n";
    }

    static QByteArray numberForm(const QVariant& number) { return form({{u"n"_s, number}}); }

    QTemporaryDir m_folder;
    LogRecorder m_log;
};

TEST_F(GenerateFormDataTest, aFileAloneGivesExactlyTheseBytes)
{
    const QUrl file = makeFile(u"X.crash"_s, "C");
    EXPECT_EQ(
        GenerateFormData(QVariantMap{{u"crashLog"_s, file}}, u"81e29ba4f957efe5916039f587fe3ed7"_s),
        "--81e29ba4f957efe5916039f587fe3ed7\r\n"
        "Content-Disposition: form-data; name=\"crashLog\"; filename=\"X.crash\"\r\n"
        "Content-Type: application/octet-stream\r\n"
        "\r\n"
        "C\r\n"
        "--81e29ba4f957efe5916039f587fe3ed7--\r\n");
}

TEST_F(GenerateFormDataTest, theThreeKindsOfValuesStandInTheOrderOfTheDictionary)
{
    const QVariantMap values{{u"a text"_s, u"\u00dcber\nzwei Zeilen"_s},
                             {u"b number"_s, qlonglong{-42}},
                             {u"c flag"_s, true},
                             {u"d file"_s, makeFile(u"log"_s, QByteArray("\0\r\n\xff", 4))}};
    EXPECT_EQ(form(values),
              QByteArray("--b\r\n"
                         "Content-Disposition: form-data; name=\"a text\"\r\n"
                         "Content-Type: text/plain; charset=utf-8\r\n"
                         "\r\n"
                         "\xC3\x9C"
                         "ber\nzwei Zeilen\r\n"
                         "--b\r\n"
                         "Content-Disposition: form-data; name=\"b number\"\r\n"
                         "Content-Type: text/plain; charset=utf-8\r\n"
                         "\r\n"
                         "-42\r\n"
                         "--b\r\n"
                         "Content-Disposition: form-data; name=\"c flag\"\r\n"
                         "Content-Type: text/plain; charset=utf-8\r\n"
                         "\r\n"
                         "1\r\n"
                         "--b\r\n"
                         "Content-Disposition: form-data; name=\"d file\"; filename=\"log\"\r\n"
                         "Content-Type: application/octet-stream\r\n"
                         "\r\n") +
                  QByteArray("\0\r\n\xff", 4) + "\r\n--b--\r\n");
}

TEST_F(GenerateFormDataTest, aDictionaryOfNothingIsTheClosingLine)
{
    EXPECT_EQ(form({}), "--b--\r\n");
}

TEST_F(GenerateFormDataTest, anEmptyTextIsAPartWithoutContent)
{
    EXPECT_EQ(form({{u"n"_s, u""_s}}), textForm("n", ""));
    EXPECT_EQ(form({{u"n"_s, QString()}}), textForm("n", ""));
}

TEST_F(GenerateFormDataTest, numbersAreDecimal)
{
    EXPECT_EQ(numberForm(false), textForm("n", "0"));
    EXPECT_EQ(numberForm(0), textForm("n", "0"));
    EXPECT_EQ(numberForm(std::numeric_limits<qlonglong>::min()),
              textForm("n", "-9223372036854775808"));
    EXPECT_EQ(numberForm(std::numeric_limits<qulonglong>::max()),
              textForm("n", "18446744073709551615"));
    EXPECT_EQ(numberForm(std::numeric_limits<qint32>::min()), textForm("n", "-2147483648"));
    EXPECT_EQ(numberForm(0.5), textForm("n", "0.5"));
    EXPECT_EQ(numberForm(2100000000.0), textForm("n", "2100000000"));
}

TEST_F(GenerateFormDataTest, anIllegalValueIsLoggedAndLeavesAPartWithoutHeaders)
{
    EXPECT_EQ(form({{u"a"_s, QUrl(u"https://example.org/x"_s)}, {u"b"_s, u"text"_s}}),
              "--b\r\n"
              "\r\n" +
                  textForm("b", "text"));
    EXPECT_EQ(m_log.entries(),
              QStringList{u"ZTBCrashReporterError: formValues contained illegal object "
                          "https://example.org/x of class QUrl"_s});
    m_log.clear();
    EXPECT_EQ(form({{u"a"_s, QByteArray("bytes")}}), "--b\r\n\r\n--b--\r\n");
    EXPECT_EQ(m_log.entries(),
              QStringList{u"ZTBCrashReporterError: formValues contained illegal object bytes of "
                          "class QByteArray"_s});
    m_log.clear();
    EXPECT_EQ(form({{u"a"_s, QVariant()}}), "--b\r\n\r\n--b--\r\n");
    EXPECT_EQ(m_log.entries().size(), 1);
}

TEST_F(GenerateFormDataTest, aFileThatCannotBeReadHasNoBytes)
{
    const QByteArray empty =
        "--b\r\nContent-Disposition: form-data; name=\"f\"; filename=\"gone\"\r\n"
        "Content-Type: application/octet-stream\r\n\r\n\r\n--b--\r\n";
    EXPECT_EQ(form({{u"f"_s, QUrl::fromLocalFile(m_folder.filePath(u"gone"_s))}}), empty);
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"gone"_s));
    EXPECT_EQ(form({{u"f"_s, QUrl::fromLocalFile(m_folder.filePath(u"gone"_s))}}), empty)
        << "a folder";
    EXPECT_TRUE(m_log.entries().isEmpty());
}

TEST_F(GenerateFormDataTest, aFileIsReadAtThisMoment)
{
    const QUrl file = makeFile(u"log"_s, "before");
    makeFile(u"log"_s, "after");
    EXPECT_TRUE(form({{u"f"_s, file}}).contains("\r\n\r\nafter\r\n--b--"));
}

TEST_F(GenerateFormDataTest, namesWithBlanksAndOtherLettersAreUtf8)
{
    const QByteArray body = form({{u"f"_s, makeFile(u"Corvane \u00e4\u20ac 1.crash"_s, "x")}});
    EXPECT_TRUE(body.contains("filename=\"Corvane \xC3\xA4\xE2\x82\xAC 1.crash\"\r\n"));
}

TEST_F(GenerateFormDataTest, aNameCannotBreakOutOfItsHeaderLine)
{
    const QByteArray body =
        form({{u"x\"\r\nX: y"_s, makeFile(u"a\"b\r\nSet-Cookie: c"_s, "content")}});
    EXPECT_TRUE(body.startsWith(
        "--b\r\nContent-Disposition: form-data; name=\"x%22%0D%0AX: y\"; "
        "filename=\"a%22b%0D%0ASet-Cookie: c\"\r\nContent-Type: application/octet-stream\r\n"));
}

TEST_F(GenerateFormDataTest, aLogOfFiftyMegabytesIsTakenWhole)
{
    const QByteArray content(qsizetype{50} * 1024 * 1024, 'x');
    const QByteArray body = form({{u"crashLog"_s, makeFile(u"big.crash"_s, content)}});
    EXPECT_EQ(body.size(),
              form({{u"crashLog"_s, makeFile(u"big.crash"_s, "")}}).size() + content.size());
    EXPECT_TRUE(body.endsWith("xx\r\n--b--\r\n"));
}

TEST_F(GenerateFormDataTest, bothParametersAreRequired)
{
    const auto failureOf = [](const std::optional<QVariantMap>& values, const QString& boundary) {
        try {
            std::ignore = GenerateFormData(values, boundary);
        } catch (const AssertionFailure& failure) {
            EXPECT_EQ(failure.function(),
                      u"NSData *GenerateFormData(NSDictionary *__strong, NSString *__strong)"_s);
            EXPECT_EQ(failure.file(), u"Shared Code/CrashReporter/GenerateFormData"_s);
            EXPECT_GT(failure.line(), 0);
            return failure.description();
        }
        return QString();
    };
    EXPECT_EQ(failureOf(std::nullopt, u"b"_s),
              u"Invalid parameter not satisfying: nil != formValues"_s);
    EXPECT_EQ(failureOf(QVariantMap(), QString()),
              u"Invalid parameter not satisfying: nil != boundary"_s);
    EXPECT_EQ(failureOf(QVariantMap(), u"b"_s), QString());
}

} // namespace
