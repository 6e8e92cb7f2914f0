// The map options dialog edits a copy of the gMapOpt... settings.

#include "app/jobdisplay/map_options_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QSpinBox>

#include <gtest/gtest.h>

namespace qarvel::app {
namespace {

TEST(MapOptionsDialogTest, ShowsTheSettingsAndAppliesTheChoices) {
    shell::ProgramSettings settings;
    settings.gMapOptCounty = false;
    MapOptionsDialog dialog(settings);
    EXPECT_EQ(dialog.objectName(), "frmOptionsMap");
    EXPECT_FALSE(dialog.findChild<QCheckBox*>(QStringLiteral("chkCounty"))->isChecked());
    dialog.findChild<QCheckBox*>(QStringLiteral("chkLatLon"))->setChecked(false);
    dialog.findChild<QCheckBox*>(QStringLiteral("chkReduceRadii"))->setChecked(true);
    dialog.findChild<QSpinBox*>(QStringLiteral("txtCityCount"))->setValue(35);
    dialog.findChild<QComboBox*>(QStringLiteral("cboPrintScale"))->setCurrentIndex(7);  // 1:500,000
    const shell::ProgramSettings result = dialog.Result();
    EXPECT_FALSE(result.gMapOptLatLon);
    EXPECT_FALSE(result.gMapOptCounty);
    EXPECT_TRUE(result.gMapOptReduceRadii);
    EXPECT_EQ(result.gMapCityCount, 35);
    EXPECT_EQ(result.gMapPrintScale, 500000);
    EXPECT_TRUE(settings.gMapOptLatLon);  // the caller's copy is untouched
}

TEST(MapOptionsDialogTest, TypedPrintScale) {
    shell::ProgramSettings settings;
    MapOptionsDialog dialog(settings);
    auto* scale = dialog.findChild<QComboBox*>(QStringLiteral("cboPrintScale"));
    scale->setEditText(QStringLiteral("1:300,000"));
    EXPECT_EQ(dialog.Result().gMapPrintScale, 300000);
    scale->setEditText(QStringLiteral("250000"));
    EXPECT_EQ(dialog.Result().gMapPrintScale, 250000);
    scale->setEditText(QStringLiteral("big"));
    EXPECT_EQ(dialog.Result().gMapPrintScale, 1000000);  // unreadable: kept
}

}  // namespace
}  // namespace qarvel::app
