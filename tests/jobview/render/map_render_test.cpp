// The map drawn headless: against small reference images (antialiasing off,
// text left out, a tolerance for rasteriser differences), the order in which
// boundaries and station circles cover each other, and the PNG and PDF files.
//
// A missing reference image fails the test. Run with QARVEL_UPDATE_REFERENCES=1
// to write the missing ones (delete a reference to have it drawn afresh).

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QImage>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "core/error_trap.h"
#include "jobview/render/map_export.h"
#include "jobview/render/map_renderer.h"
#include "jobview/station_colors.h"

namespace qarvel::jobview {
namespace {

namespace fs = std::filesystem;

class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "jobview_render_tests";
        static char* argv[] = {name, nullptr};
        m_app = std::make_unique<QGuiApplication>(argc, argv);
    }
    void TearDown() override { m_app.reset(); }

private:
    std::unique_ptr<QGuiApplication> m_app;
};
[[maybe_unused]] ::testing::Environment* const kQt = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

constexpr float kLat = 39.0f, kLon = 98.0f;  // map centre, longitude WEST

// A county line 0.1 degree north of the centre across the map, a state line
// along the centre's meridian south of it, a diagonal county line.
MapArrays Boundaries() {
    MapArrays a;
    a.countyMapLoaded = a.stateMapLoaded = true;
    a.countyMap = {{0, 0}, {0, 1}, {39.1f, 100.0f}, {39.1f, 96.0f}, {0, 2}, {38.3f, 99.5f}, {39.6f, 97.0f}};
    a.stateMap = {{0, 0}, {0, 1}, {38.0f, 98.0f}, {38.95f, 98.0f}};
    return a;
}

MapStation Station(const char* call, double x, double y, double radius, std::int32_t c1, std::int32_t c2) {
    MapStation s;
    s.callsign = call;
    s.service = "FM";
    s.x = x;
    s.y = y;
    s.radius = radius;
    s.color1 = c1;
    s.color2 = c2;
    return s;
}

MapScene Scene(const MapArrays* arrays) {
    MapScene scene;
    scene.centreLat = kLat;
    scene.centreLon = kLon;
    scene.arrays = arrays;
    scene.stations = {Station("KRED", -40, 0, 40, kColorPrimary, kColorShort),
                      Station("KYEL", 50, 30, 25, kColorFirstAdj, kColorClose),
                      Station("KGRN", 10, -45, 30, kColorIF, kColorClear)};
    return scene;
}

MapSettings TextFree(std::int32_t scale = 5000000) {
    MapSettings s;
    s.scale = scale;
    s.drawText = false;
    return s;
}

MapImageOptions Small() {
    MapImageOptions o;
    o.widthPx = 160;
    o.heightPx = 120;
    return o;
}

// Share of pixels whose colour differs by more than `tolerance` in a channel.
double DifferingShare(const QImage& a, const QImage& b, int tolerance) {
    long differing = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            if (std::abs(qRed(p) - qRed(q)) > tolerance || std::abs(qGreen(p) - qGreen(q)) > tolerance ||
                std::abs(qBlue(p) - qBlue(q)) > tolerance) {
                ++differing;
            }
        }
    }
    return static_cast<double>(differing) / (a.width() * a.height());
}

void ExpectMatchesReference(const QImage& actual, const std::string& name) {
    const fs::path reference = fs::path(QARVEL_SOURCE_DIR) / "tests/jobview/render/reference" / (name + ".png");
    const QString referencePath = QString::fromStdString(reference.string());
    if (!fs::exists(reference)) {
        const char* update = std::getenv("QARVEL_UPDATE_REFERENCES");
        if (update != nullptr && std::string(update) == "1") {
            ASSERT_TRUE(actual.save(referencePath, "PNG"));
            std::cout << "wrote reference " << reference << "\n";
            return;
        }
        FAIL() << "missing reference image " << reference << " (QARVEL_UPDATE_REFERENCES=1 writes it)";
    }
    const QImage expected = QImage(referencePath).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(expected.size(), actual.size()) << reference;
    const double share = DifferingShare(expected, actual.convertToFormat(QImage::Format_RGB32), 16);
    if (share > 0.01) {
        const fs::path seen = fs::temp_directory_path() / ("qarvel_render_" + name + ".png");
        actual.save(QString::fromStdString(seen.string()), "PNG");
        ADD_FAILURE() << name << ": " << share * 100 << " % of the pixels differ from " << reference
                      << "; the drawing is in " << seen;
    }
}

TEST(MapRender, CirclesByClearance) {
    const MapArrays arrays = Boundaries();
    ExpectMatchesReference(RenderMapImage(Scene(&arrays), TextFree(), Small()), "circles_clearance");
}

TEST(MapRender, FilledByChannel) {
    const MapArrays arrays = Boundaries();
    MapSettings s = TextFree();
    s.fillCircles = true;
    s.coloring = StationColoring::Channel;
    ExpectMatchesReference(RenderMapImage(Scene(&arrays), s, Small()), "fill_channel");
}

TEST(MapRender, PrinterPointsReducedRadii) {
    const MapArrays arrays = Boundaries();
    MapSettings s = TextFree(2000000);
    s.printer = true;
    s.gMapOptReduceRadii = true;
    s.showCircles = false;
    ExpectMatchesReference(RenderMapImage(Scene(&arrays), s, Small()), "printer_points");
}

// The row of the county line 0.1 degree north, found where no station is.
int CountyRow(const QImage& image) {
    for (int y = 0; y < image.height(); ++y) {
        if (image.pixelColor(2, y) == ToQColor(kColorGrey)) return y;
    }
    return -1;
}

int CountInRow(const QImage& image, int y, std::int32_t color) {
    int n = 0;
    for (int x = 0; x < image.width(); ++x) n += image.pixelColor(x, y) == ToQColor(color) ? 1 : 0;
    return n;
}

TEST(MapRender, BoundariesUnderOutlinesOverFills) {
    const MapArrays arrays = Boundaries();
    MapScene scene = Scene(&arrays);
    scene.stations.resize(1);  // KRED, 40 km east of the centre, crossing the county line
    MapSettings s = TextFree();
    s.gMapOptLatLon = s.gMapOptCrosshair = s.gMapOptScale = false;

    const QImage outlines = RenderMapImage(scene, s, Small());
    const int row = CountyRow(outlines);
    ASSERT_GE(row, 0);
    EXPECT_GE(CountInRow(outlines, row, kColorShort), 2);  // the outline crosses over the line

    s.fillCircles = true;
    const QImage filled = RenderMapImage(scene, s, Small());
    ASSERT_EQ(CountyRow(filled), row);
    EXPECT_EQ(CountInRow(filled, row, kColorShort), 0);  // the line runs over the disc
    EXPECT_EQ(filled.pixelColor(160 / 2 + 12, 120 / 2 + 10), ToQColor(kColorShort));  // inside the disc
}

TEST(MapRender, GroundAndCrosshair) {
    const QImage screen = RenderMapImage(Scene(nullptr), TextFree(), Small());
    EXPECT_EQ(screen.pixelColor(1, 1), ToQColor(kColorBlack));
    EXPECT_EQ(screen.pixelColor(80, 60), ToQColor(kColorWhite));  // the crosshair's centre
    MapSettings paper = TextFree();
    paper.printer = true;
    const QImage printed = RenderMapImage(Scene(nullptr), paper, Small());
    EXPECT_EQ(printed.pixelColor(1, 1), ToQColor(kColorWhite));
    EXPECT_EQ(printed.pixelColor(80, 60), ToQColor(kColorBlack));
}

TEST(MapRender, TextAddsLabels) {
    MapArrays arrays;
    arrays.places = {{"Salina", static_cast<int>(kLat * 14400), static_cast<int>(kLon * 14400)}};
    MapSettings s = TextFree(1000000);
    s.gMapOptCrosshair = s.gMapOptScale = s.gMapOptLatLon = false;
    MapScene scene = Scene(&arrays);
    scene.stations.clear();
    const QImage without = RenderMapImage(scene, s, Small());
    s.drawText = true;
    const QImage with = RenderMapImage(scene, s, Small());
    EXPECT_GT(DifferingShare(without, with, 16), 0.0);
}

class MapFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() /
                ("qarvel_map_file_" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
    }
    void TearDown() override { fs::remove_all(m_dir); }
    std::size_t FileCount() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(m_dir), fs::directory_iterator()));
    }
    fs::path m_dir;
};

TEST_F(MapFileTest, PngAndPdf) {
    const MapArrays arrays = Boundaries();
    ASSERT_TRUE(SaveMapImage(m_dir / "map.png", Scene(&arrays), TextFree(), Small()));
    const QImage png(QString::fromStdString((m_dir / "map.png").string()));
    EXPECT_EQ(png.size(), QSize(160, 120));
    MapSettings paper = TextFree();
    paper.printer = true;
    ASSERT_TRUE(SaveMapImage(m_dir / "map.PDF", Scene(&arrays), paper, Small()));
    std::ifstream pdf(m_dir / "map.PDF", std::ios::binary);
    std::string head(4, '\0');
    pdf.read(head.data(), 4);
    EXPECT_EQ(head, "%PDF");
    EXPECT_EQ(FileCount(), 2u);  // no temporary file left beside them
}

TEST_F(MapFileTest, UnknownKindWritesNothing) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scope(sink);
    EXPECT_FALSE(SaveMapImage(m_dir / "map.gif", Scene(nullptr), TextFree(), Small()));
    EXPECT_FALSE(SaveMapImage(m_dir / "missing" / "map.png", Scene(nullptr), TextFree(), Small()));
    ASSERT_EQ(sink.Reports().size(), 2u);
    EXPECT_EQ(sink.Reports()[0].routine, ":SaveMapImage:");
    EXPECT_EQ(FileCount(), 0u);
}

}  // namespace
}  // namespace qarvel::jobview
