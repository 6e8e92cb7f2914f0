// The calculators, the markers window and the record editor, driven as a
// user would on the offscreen platform.

#include "app/datatools/calculator_dialog.h"
#include "app/datatools/markers_dialog.h"
#include "app/datatools/record_editor.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "app_fixture.h"
#include "stationdb/schema.h"

namespace qarvel::app {
namespace {

QString Label(const QWidget& w, const char* name) { return w.findChild<QLabel*>(QString::fromLatin1(name))->text(); }
QLineEdit* Edit(const QWidget& w, const char* name) { return w.findChild<QLineEdit*>(QString::fromLatin1(name)); }

TEST(CalculatorDialogTest, RangePositionAndConversion) {
    CalculatorDialog dialog(40.0, 75.0);
    EXPECT_EQ(dialog.objectName(), "frmCalc");
    dialog.SetRangeTo(41.0, 76.0);
    EXPECT_TRUE(Label(dialog, "lblRange").startsWith("Distance: 139.70 km")) << Label(dialog, "lblRange").toStdString();
    // A pasted web-map pair (longitude east positive) fills both fields.
    Edit(dialog, "txtToLat")->setText(QString());
    Edit(dialog, "txtToLat")->insert(QStringLiteral("41.0, -76.0"));
    EXPECT_EQ(Edit(dialog, "txtToLon")->text(), "76.000000");
    EXPECT_TRUE(Label(dialog, "lblRange").startsWith("Distance: 139.70 km"));

    Edit(dialog, "txtPosDistance")->setText(QStringLiteral("100"));
    Edit(dialog, "txtPosBearing")->setText(QStringLiteral("90"));
    EXPECT_TRUE(Label(dialog, "lblPosition").contains("Latitude: 40.000000")) << Label(dialog, "lblPosition").toStdString();
    Edit(dialog, "txtPosBearing")->setText(QStringLiteral("400"));
    EXPECT_TRUE(Label(dialog, "lblPosition").startsWith("Enter"));

    Edit(dialog, "txtConvert")->setText(QStringLiteral("73 58.8 W"));
    EXPECT_TRUE(Label(dialog, "lblConverted").contains("Decimal: 73.980000"));
    EXPECT_TRUE(Label(dialog, "lblConverted").contains("073 58.8000 W"));
}

TEST(MarkersDialogTest, AddsThroughTheFormAndRefusesBadPositions) {
    testing::AppWorld world;
    const auto local = world.Root() / "local.fdb";
    ASSERT_TRUE(stationdb::CreateJobDatabase(local));
    MarkersDialog dialog(local);
    int changes = 0;
    QObject::connect(&dialog, &MarkersDialog::markersChanged, [&] { ++changes; });
    // The marker form is modal: fill it once it shows, first with a bad
    // latitude (the form stays open and says why), then a good one.
    QTimer::singleShot(0, [] {
        auto* form = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(form, nullptr);
        Edit(*form, "txtLabel")->setText(QStringLiteral("Tower site"));
        Edit(*form, "txtLat")->setText(QStringLiteral("95"));
        form->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
        EXPECT_TRUE(Label(*form, "lblProblem").contains("latitude"));
        EXPECT_TRUE(form->isVisible());
        Edit(*form, "txtLat")->setText(QStringLiteral("41:15:00N"));
        form->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    });
    dialog.AddAt(0, 96.0);
    ASSERT_EQ(dialog.Markers().size(), 1u);
    EXPECT_EQ(dialog.Markers()[0].label, "Tower site");
    EXPECT_DOUBLE_EQ(dialog.Markers()[0].lat, 41.25);
    EXPECT_EQ(changes, 1);
    dialog.findChild<QTableWidget*>()->selectRow(0);
    dialog.findChild<QPushButton*>(QStringLiteral("cmdDelete"))->click();
    EXPECT_TRUE(dialog.Markers().empty());
}

std::string Bytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(RecordEditorTest, FindEditUndoAndSaveOnlyWhenAsked) {
    testing::AppWorld world;
    const auto master = world.MasterFmd();
    const std::string before = Bytes(master);
    RecordEditor editor(master);
    auto* grid = editor.findChild<QTableWidget*>(QStringLiteral("grdRecords"));
    editor.Find(QStringLiteral("fac_callsign"), QStringLiteral("*"), QStringLiteral("application_id"), false);
    const int all = grid->rowCount();
    ASSERT_GT(all, 2);
    editor.Find(QStringLiteral("application_id"), QStringLiteral("1"), QStringLiteral("application_id"), false);
    ASSERT_EQ(grid->rowCount(), 1);

    EXPECT_FALSE(editor.Edit(0, QStringLiteral("station_channel"), QStringLiteral("301")));
    EXPECT_TRUE(Label(editor, "lblStatus").contains("200 to 300"));
    EXPECT_FALSE(editor.HasChanges());
    EXPECT_TRUE(editor.Edit(0, QStringLiteral("fac_callsign"), QStringLiteral("KEDT")));
    EXPECT_TRUE(editor.Edit(0, QStringLiteral("station_channel"), QStringLiteral("251")));
    editor.Undo();
    EXPECT_EQ(grid->item(0, 0)->text(), "1");
    EXPECT_TRUE(editor.HasChanges());
    EXPECT_EQ(Bytes(master), before);  // nothing reaches the file before Save
    editor.Save();
    EXPECT_FALSE(editor.HasChanges());
    EXPECT_NE(Bytes(master), before);

    RecordEditor reopened(master);
    reopened.Find(QStringLiteral("fac_callsign"), QStringLiteral("KED?"), QStringLiteral("fac_callsign"), true);
    auto* again = reopened.findChild<QTableWidget*>(QStringLiteral("grdRecords"));
    ASSERT_EQ(again->rowCount(), 1);
    EXPECT_EQ(again->item(0, 0)->text(), "1");
}

}  // namespace
}  // namespace qarvel::app
