#include "VolumeSetting.h"

#include "QtPrinters.h"
#include "UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(VolumeSetting, onlyAbsoluteFoldersCount)
{
    const QTemporaryDir folder;
    UserDefaults defaults(folder.filePath(u"defaults.plist"_s));
    EXPECT_TRUE(VolumeSetting::folders(defaults).isEmpty());
    defaults.setValue(u"VolumeFolders"_s,
                      QVariantMap{{u"Photos"_s, u"/mnt/photos/"_s},
                                  {u"Here"_s, u"photos"_s},
                                  {u"None"_s, u""_s},
                                  {u"Number"_s, 7},
                                  {u"/"_s, u"/mnt/mac"_s}});
    EXPECT_EQ(VolumeSetting::folders(defaults),
              (QMap<QString, QString>{{u"/"_s, u"/mnt/mac"_s}, {u"Photos"_s, u"/mnt/photos"_s}}));
    defaults.setValue(u"VolumeFolders"_s, u"/mnt"_s);
    EXPECT_TRUE(VolumeSetting::folders(defaults).isEmpty());
}
