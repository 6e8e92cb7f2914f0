// The new-job wizard: coordinate entry in both forms, channel and frequency,
// the pages' checks and the request it hands on.

#include "app/wizard/new_job_wizard.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>

#include <gtest/gtest.h>

#include <cmath>

#include "app/wizard/coordinate_entry.h"

namespace qarvel::app {
namespace {

TEST(ChannelFrequencyTest, BothEndsAndRounding) {
    EXPECT_NEAR(ChannelFrequency(200), 87.9, 1e-9);
    EXPECT_NEAR(ChannelFrequency(250), 97.9, 1e-9);
    EXPECT_NEAR(ChannelFrequency(300), 107.9, 1e-9);
    EXPECT_EQ(FrequencyChannel(97.9), 250);
    EXPECT_EQ(FrequencyChannel(97.95), 250);  // nearest channel
    EXPECT_EQ(FrequencyChannel(87.9), 200);
    EXPECT_EQ(FrequencyChannel(108.1), 0);
    EXPECT_EQ(FrequencyChannel(87.7), 0);
    EXPECT_EQ(FrequencyChannel(std::nan("")), 0);
}

TEST(DmsToDegreesTest, MinutesAndSecondsBelowSixty) {
    EXPECT_NEAR(*DmsToDegrees(40, 45, 30.0), 40.758333, 1e-6);
    EXPECT_FALSE(DmsToDegrees(40, 60, 0.0));
    EXPECT_FALSE(DmsToDegrees(40, 0, 60.0));
    EXPECT_FALSE(DmsToDegrees(-1, 0, 0.0));
}

TEST(CoordinateEntryTest, DecimalAndDmsWithHemispheres) {
    CoordinateEntry lon(CoordinateAxis::Longitude, QStringLiteral("Lon"));
    lon.findChild<QLineEdit*>(QStringLiteral("txtLonDec"))->setText(QStringLiteral("96.5"));
    EXPECT_DOUBLE_EQ(*lon.Value(), 96.5);  // W is positive
    lon.findChild<QRadioButton*>(QStringLiteral("optLonE"))->setChecked(true);
    EXPECT_DOUBLE_EQ(*lon.Value(), -96.5);
    lon.SetDecimal(false);  // the value carries over
    EXPECT_EQ(lon.findChild<QSpinBox*>(QStringLiteral("txtLonDeg"))->value(), 96);
    EXPECT_EQ(lon.findChild<QSpinBox*>(QStringLiteral("txtLonMin"))->value(), 30);
    EXPECT_DOUBLE_EQ(*lon.Value(), -96.5);
    lon.findChild<QDoubleSpinBox*>(QStringLiteral("txtLonSec"))->setValue(36.0);
    EXPECT_NEAR(*lon.Value(), -96.51, 1e-9);

    CoordinateEntry lat(CoordinateAxis::Latitude, QStringLiteral("Lat"));
    auto* text = lat.findChild<QLineEdit*>(QStringLiteral("txtLatDec"));
    text->setText(QStringLiteral("abc"));
    EXPECT_FALSE(lat.Value());
    text->setText(QStringLiteral("91"));
    EXPECT_FALSE(lat.Value());
    text->setText(QStringLiteral("-33.5"));  // a sign reverses the hemisphere button
    EXPECT_DOUBLE_EQ(*lat.Value(), -33.5);
    lat.SetValue(-12.25);
    EXPECT_TRUE(lat.findChild<QRadioButton*>(QStringLiteral("optLatS"))->isChecked());
    EXPECT_DOUBLE_EQ(*lat.Value(), -12.25);
}

TEST(NewJobWizardTest, RequestCarriesTheTarget) {
    NewJobWizard wizard("/jobs");
    wizard.SetTarget(41.25, 96.0, 250, QStringLiteral("C2"), QStringLiteral("B"));
    wizard.SetScan(150, QStringLiteral("near Omaha"), QStringLiteral("omaha.fmj"));
    const NewJobRequest r = wizard.Request();
    EXPECT_DOUBLE_EQ(r.inputs.lat, 41.25);
    EXPECT_DOUBLE_EQ(r.inputs.lon, 96.0);
    EXPECT_EQ(r.inputs.channel, "250");
    EXPECT_EQ(r.inputs.stationClass, "C2");
    EXPECT_EQ(r.inputs.intlClass, "B");
    EXPECT_EQ(r.inputs.scanRange, 150);
    EXPECT_EQ(r.inputs.comments, "near Omaha");
    EXPECT_EQ(r.jobFile, std::filesystem::path("/jobs/omaha.fmj"));  // ".fmj" not doubled
}

TEST(NewJobWizardTest, FrequencyAndChannelFollowEachOther) {
    NewJobWizard wizard("/jobs");
    auto* channel = wizard.findChild<QSpinBox*>(QStringLiteral("txtChannel"));
    auto* frequency = wizard.findChild<QDoubleSpinBox*>(QStringLiteral("txtFrequency"));
    frequency->setValue(101.1);
    EXPECT_EQ(channel->value(), 266);
    channel->setValue(201);
    EXPECT_NEAR(frequency->value(), 88.1, 1e-9);
}

TEST(NewJobWizardTest, PagesLetOnOnlyWithValidEntries) {
    NewJobWizard wizard("/jobs");
    QWizardPage* location = wizard.page(wizard.pageIds().at(0));
    EXPECT_FALSE(location->isComplete());  // nothing entered yet
    wizard.SetTarget(80.0, 96.0, 250, QStringLiteral("A"));
    EXPECT_FALSE(location->isComplete());  // beyond 76 degrees north
    wizard.SetTarget(0.0, 0.0, 250, QStringLiteral("A"));
    EXPECT_FALSE(location->isComplete());  // the point (0, 0)
    wizard.SetTarget(41.25, 96.0, 250, QStringLiteral("A"));
    EXPECT_TRUE(location->isComplete());
    QWizardPage* scan = wizard.page(wizard.pageIds().at(2));
    wizard.SetScan(100, {}, QStringLiteral("   "));
    EXPECT_FALSE(scan->isComplete());
    wizard.SetScan(100, {}, QStringLiteral("a/b"));
    EXPECT_FALSE(scan->isComplete());
    wizard.SetScan(100, {}, QStringLiteral("study"));
    EXPECT_TRUE(scan->isComplete());
}

}  // namespace
}  // namespace qarvel::app
