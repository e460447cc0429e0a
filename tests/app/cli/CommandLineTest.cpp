#include "CommandLine.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

ParsedCommandLine parse(const char* arguments)
{
    return CommandLine::parse(QString::fromLatin1(arguments).split(u' ', Qt::SkipEmptyParts),
                              u"1.2.3"_s);
}

struct Refusal {
    const char* arguments;
    const char* sentence;
    const char* command; ///< whose help is named
};

class CommandLineRefusalTest : public testing::TestWithParam<Refusal>
{
};

class CommandLineAcceptanceTest : public testing::TestWithParam<const char*>
{
};

} // namespace

TEST_P(CommandLineRefusalTest, wrongUsageIsNamedAndTheHelpToo)
{
    const Refusal& refusal = GetParam();
    const ParsedCommandLine parsed = parse(refusal.arguments);
    EXPECT_EQ(parsed.command, nullptr);
    EXPECT_TRUE(parsed.output.isEmpty());
    const QString command = QString::fromUtf8(refusal.command);
    const QString help = command.isEmpty()
                             ? u"Run “corvane-cli --help” to see how it is used."_s
                             : u"Run “corvane-cli %1 --help” to see how it is used."_s.arg(command);
    EXPECT_EQ(parsed.error.toStdString(),
              (QString::fromUtf8(refusal.sentence) + u'\n' + help).toStdString());
}

INSTANTIATE_TEST_SUITE_P(
    all,
    CommandLineRefusalTest,
    testing::Values(
        Refusal{"",
                "A command is missing: scan, list, info, check, trash, verify, backup or sample.",
                ""},
        Refusal{"frobnicate", "The following argument was not expected: frobnicate", ""},
        Refusal{"scan", "LIBRARY is required", "scan"},
        Refusal{"scan L --unknown", "The following argument was not expected: --unknown", "scan"},
        Refusal{"list L M", "The following argument was not expected: M", "list"},
        Refusal{"list L M N --x O", "The following arguments were not expected: M N --x O", "list"},
        Refusal{"list -- --x --y", "The following argument was not expected: --y", "list"},
        Refusal{"--quiet list L",
                "Not expected before the command “list”: --quiet. What a command takes follows "
                "its name.",
                "list"},
        Refusal{"L --quiet scan --raw",
                "Not expected before the command “scan”: L --quiet. What a command takes follows "
                "its name.",
                "scan"},
        Refusal{"scan L --tag --no-tag", "--tag excludes --no-tag", "scan"},
        Refusal{"scan L --scale 0.5 --long 800", "--scale excludes --long", "scan"},
        Refusal{"scan L --all --raw", "--all excludes --raw", "scan"},
        Refusal{"trash L --empty --restore", "--restore excludes --empty", "trash"},
        Refusal{"trash L --yes", "--yes requires --empty", "trash"},
        Refusal{"trash L --id 3", "--id requires --restore", "trash"},
        Refusal{"scan L --quality 1.5",
                "The value of --quality must lie between 0 and 1, but is 1.5",
                "scan"},
        Refusal{"scan L --quality nan",
                "The value of --quality is not a number that fits: nan",
                "scan"},
        Refusal{
            "scan L --quality x", "The value of --quality is not a number that fits: x", "scan"},
        Refusal{"scan L --scale 0.3",
                "The value of --scale must be 1, 0.75, 0.5 or 0.25, but is 0.3",
                "scan"},
        Refusal{"scan L --long -5",
                "The value of --long must lie between 1 and 1000000, but is -5",
                "scan"},
        Refusal{"scan L --short 0",
                "The value of --short must lie between 1 and 1000000, but is 0",
                "scan"},
        Refusal{"scan L --id three", "The value of --id is not a number that fits: three", "scan"},
        Refusal{"scan L --id 3 5", "The following argument was not expected: 5", "scan"},
        Refusal{"sample /tmp --photos 0",
                "The value of --photos must lie between 1 and 1000, but is 0",
                "sample"},
        Refusal{"scan L --defaults /dev",
                "The settings file /dev cannot be used: that is a folder.",
                "scan"},
        Refusal{"info L --defaults /dev/null",
                "The settings file /dev/null cannot be used: that is no regular file.",
                "info"},
        Refusal{"sample /tmp --defaults /dev",
                "The settings file /dev cannot be used: that is a folder.",
                "sample"},
        Refusal{"sample", "DIRECTORY is required", "sample"}));

TEST_P(CommandLineAcceptanceTest, rightUsageBecomesACommand)
{
    const ParsedCommandLine parsed = parse(GetParam());
    EXPECT_NE(parsed.command, nullptr) << parsed.error.toStdString();
    EXPECT_TRUE(parsed.error.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(all,
                         CommandLineAcceptanceTest,
                         testing::Values("scan L",
                                         "scan --id 3 --id 7 L",
                                         "scan L --roll A --roll B --album C --keyword D --present",
                                         "scan L --long 1600 --short 900 --quality 0 --report -",
                                         "scan L --scale 1.0 --albums --no-trash --displayed",
                                         "scan L --dry-run --after-crash --quiet --defaults F",
                                         "list list --json",
                                         "info L --json",
                                         "check L --raw --json",
                                         "trash L --json",
                                         "trash L --restore --id 3 --id 4",
                                         "trash L --empty --yes --after-crash",
                                         "sample /tmp --photos 1000 --megapixels 0.05",
                                         "sample /tmp --defaults F --quiet"));

TEST(CommandLineTest, aFileWithoutANameIsWrongUsage)
{
    for (const QString& option : {u"--report"_s, u"--defaults"_s}) {
        const ParsedCommandLine parsed =
            CommandLine::parse({u"scan"_s, u"L"_s, option, QString()}, u"1.2.3"_s);
        EXPECT_EQ(parsed.command, nullptr);
        EXPECT_EQ(parsed.error,
                  option + u" needs the name of a file, but was given none.\nRun “corvane-cli scan "
                           u"--help” to see how it is used."_s);
    }
}

TEST(CommandLineTest, versionAndHelpAreResults)
{
    EXPECT_EQ(parse("--version").output, u"corvane-cli 1.2.3"_s);
    EXPECT_TRUE(parse("--help").output.contains(u"sample"_s));
    const ParsedCommandLine scan = parse("scan --help");
    EXPECT_TRUE(scan.output.contains(u"Usage: corvane-cli scan [OPTIONS] LIBRARY"_s));
    EXPECT_TRUE(scan.output.contains(u"130 interrupted"_s));
    EXPECT_EQ(scan.command, nullptr);
}
