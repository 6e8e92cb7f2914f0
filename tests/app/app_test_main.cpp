// The test program's entry: the widgets run on Qt's "offscreen" platform,
// under one QApplication for every test.

#include <QApplication>

#include <gtest/gtest.h>

#include "geodesy/map_constants.h"
#include "spacing/min_sep.h"

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    qarvel::geodesy::InitMapConstants();
    qarvel::spacing::LoadMinSepTables();
    return RUN_ALL_TESTS();
}
