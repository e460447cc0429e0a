#include "SwitchRow.h"

#include "UserDefaults.h"

#include <QCheckBox>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class SwitchRowTest : public testing::Test
{
protected:
    static QCheckBox& box(const SwitchRow& row)
    {
        return *row.findChild<QCheckBox*>(u"TagEnabled"_s);
    }

    QTemporaryDir m_folder;
    UserDefaults m_defaults{m_folder.filePath(u"defaults.plist"_s)};
    const SwitchRow::Texts m_texts{u"&Tag"_s, u"What it does."_s};
};

TEST_F(SwitchRowTest, saysWhatTheSettingDoes)
{
    const SwitchRow row(m_defaults, u"TagEnabled"_s, m_texts);
    EXPECT_EQ(box(row).text(), u"&Tag"_s);
    EXPECT_EQ(box(row).accessibleName(), u"Tag"_s);
    EXPECT_EQ(box(row).accessibleDescription(), u"What it does."_s);
    EXPECT_EQ(row.findChild<QLabel*>()->text(), u"What it does."_s);
}

TEST_F(SwitchRowTest, showingASettingStoresNothing)
{
    m_defaults.setInteger(u"TagEnabled"_s, 7);
    const SwitchRow row(m_defaults, u"TagEnabled"_s, m_texts);
    EXPECT_TRUE(box(row).isChecked());
    EXPECT_EQ(m_defaults.value(u"TagEnabled"_s).toInt(), 7);
    m_defaults.setInteger(u"TagEnabled"_s, 0);
    EXPECT_FALSE(box(row).isChecked());
    EXPECT_EQ(m_defaults.value(u"TagEnabled"_s).typeId(), QMetaType::LongLong);
}

TEST_F(SwitchRowTest, aClickStoresAndOtherSettingsDoNotMatter)
{
    SwitchRow row(m_defaults, u"TagEnabled"_s, m_texts);
    m_defaults.setBool(u"TrashEnabled"_s, true);
    EXPECT_FALSE(box(row).isChecked());
    QTest::keyClick(&box(row), Qt::Key_Space);
    EXPECT_TRUE(m_defaults.boolValue(u"TagEnabled"_s));
}

} // namespace
