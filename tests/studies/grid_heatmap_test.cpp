// AutoScan over a grid of points, its heat map and the PNG encoder.

#include <gtest/gtest.h>

#include <zlib.h>
#include <fstream>
#include <iterator>

#include "geodesy/geodesy.h"
#include "studies/grid_scan.h"
#include "studies/heatmap.h"
#include "studies/png_writer.h"
#include "test_master.h"

namespace qarvel::studies {
namespace {

using test::FmRow;
using test::Stored;

std::uint32_t ReadU32(const std::string& s, std::size_t at) {
    std::uint32_t v = 0;
    for (std::size_t i = 0; i < 4; ++i) v = (v << 8) | static_cast<unsigned char>(s[at + i]);
    return v;
}

// Walks the chunks, checks every CRC and returns the IHDR data and the
// inflated IDAT data.
void DecodeChunks(const std::string& png, std::string& ihdr, std::string& raw) {
    ASSERT_EQ(png.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
    std::string idat;
    std::vector<std::string> types;
    for (std::size_t at = 8; at < png.size();) {
        const std::uint32_t length = ReadU32(png, at);
        const std::string type = png.substr(at + 4, 4);
        const std::string data = png.substr(at + 8, length);
        const auto crc = crc32(0L, reinterpret_cast<const Bytef*>(png.data() + at + 4), length + 4);
        EXPECT_EQ(ReadU32(png, at + 8 + length), static_cast<std::uint32_t>(crc)) << type;
        types.push_back(type);
        if (type == "IHDR") ihdr = data;
        if (type == "IDAT") idat += data;
        at += 12 + length;
    }
    EXPECT_EQ(types, (std::vector<std::string>{"IHDR", "IDAT", "IEND"}));
    raw.assign(1 << 16, '\0');
    uLongf size = static_cast<uLongf>(raw.size());
    ASSERT_EQ(
        uncompress(reinterpret_cast<Bytef*>(raw.data()), &size,
                   reinterpret_cast<const Bytef*>(idat.data()), static_cast<uLong>(idat.size())),
        Z_OK);
    raw.resize(size);
}

TEST(PngWriter, ChunksCrcsAndPixelsReadBack) {
    RgbImage image(3, 2);
    image.Set(0, 0, 0xFF0000);
    image.Set(2, 0, 0x00FF00);
    image.Set(1, 1, 0x0000FF);
    image.Set(5, 5, 0xFFFFFF);  // outside: ignored
    std::string ihdr, raw;
    DecodeChunks(EncodePng(image), ihdr, raw);
    EXPECT_EQ(ReadU32(ihdr, 0), 3u);
    EXPECT_EQ(ReadU32(ihdr, 4), 2u);
    EXPECT_EQ(ihdr.substr(8), std::string("\x08\x02\x00\x00\x00", 5));
    const std::string expected =
        std::string("\0\xFF\0\0\0\0\0\0\xFF\0", 10) + std::string("\0\0\0\0\0\0\xFF\0\0\0", 10);
    EXPECT_EQ(raw, expected);
}

TEST(PngWriter, WritesBesideAndRenamesFailsCleanly) {
    test::TempFolder folder;
    RgbImage image(4, 4);
    EXPECT_TRUE(WritePng(folder.Path() / "map.png", image));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
    std::string error;
    EXPECT_FALSE(WritePng(folder.Path() / "missing" / "map.png", image, &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(WritePng(folder.Path() / "empty.png", RgbImage(), &error));
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "empty.png"));
}

TEST(MakeScanGrid, StepsInKmAtTheMiddleLatitudeAnyCornerOrder) {
    const ScanGrid a = MakeScanGrid(40.0, 80.0, 41.0, 79.0, 10.0);
    const ScanGrid b = MakeScanGrid(41.0, 79.0, 40.0, 80.0, 10.0);
    EXPECT_EQ(a.north, 41.0);
    EXPECT_EQ(a.west, 80.0);
    EXPECT_EQ(a.rows, b.rows);
    EXPECT_EQ(a.cols, b.cols);
    // 1 degree of latitude is about 111 km: rows at 0, 10, ..., 110 km.
    EXPECT_EQ(a.rows, 12);
    EXPECT_EQ(a.cols, 9);  // a degree of longitude at 40.5 N is about 84.8 km
    EXPECT_NEAR(a.dLat * geodesy::KmPerDegLat(40.5), 10.0, 1e-9);
    EXPECT_GE(a.Lat(a.rows - 1), 40.0);
    EXPECT_GE(a.Lon(a.cols - 1), 79.0);
    const ScanGrid one = MakeScanGrid(40.0, 80.0, 40.0, 80.0, 5.0);
    EXPECT_EQ(one.Size(), 1u);
}

TEST(MakeScanGrid, RefusesBadSteps) {
    EXPECT_THROW(MakeScanGrid(40, 80, 41, 79, 0.0), std::invalid_argument);
    EXPECT_THROW(MakeScanGrid(40, 80, 41, 79, -1.0), std::invalid_argument);
    EXPECT_THROW(MakeScanGrid(89.9, 80, 90, 79, 1.0), std::invalid_argument);
    EXPECT_THROW(MakeScanGrid(20, 60, 50, 130, 0.1), std::invalid_argument);
}

TEST(ScanGridPoints, EveryPointAsASingleScanOnAllThreads) {
    test::TestMaster master;
    for (int ch = 200; ch <= 300; ch += 7) {
        master.AddFm({.channel = ch,
                      .lat = Stored(40.0 + (ch % 10) * 0.05),
                      .lon = Stored(80.0 - (ch % 13) * 0.05),
                      .stationClass = "B"});
    }
    const auto index = MasterIndex::Load(master.Path());
    ASSERT_TRUE(index);
    const ScanGrid grid = MakeScanGrid(39.0, 81.0, 41.5, 78.5, 40.0);
    ASSERT_GE(grid.Size(), 20u);
    std::size_t lastDone = 0;
    const GridScanResult result =
        ScanGridPoints(index, grid, 4, -1, ScanOptions{}, 3,
                       [&](std::size_t done, std::size_t) { lastDone = done; });
    EXPECT_FALSE(result.cancelled);
    EXPECT_EQ(result.completed, grid.Size());
    EXPECT_EQ(lastDone, grid.Size());
    auto reference = master.Engine(false);
    int varied = 0;
    for (int r = 0; r < grid.rows; ++r) {
        for (int c = 0; c < grid.cols; ++c) {
            const ScanResult one =
                ScanChannels(*reference, {grid.Lat(r), grid.Lon(c), 4, -1}, ScanOptions{});
            const GridPointResult& p = result.points[static_cast<std::size_t>(r * grid.cols + c)];
            EXPECT_EQ(p.openings, one.openings);
            EXPECT_EQ(p.openChannels.size(), static_cast<std::size_t>(one.openings));
            EXPECT_TRUE(std::is_sorted(p.openChannels.begin(), p.openChannels.end()));
            if (one.openings != 101) ++varied;
        }
    }
    EXPECT_GT(varied, 0);
}

TEST(ScanGridPoints, CancelStopsTheWorkers) {
    test::TestMaster master;
    const auto index = MasterIndex::Load(master.Path());
    std::atomic<bool> cancel{true};
    const GridScanResult result = ScanGridPoints(index, MakeScanGrid(39, 81, 41, 79, 20), 4, -1,
                                                 ScanOptions{}, 2, {}, &cancel);
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(result.completed, 0u);
}

TEST(HeatMap, CellsColouredByOpeningsLinesDrawnOver) {
    ScanGrid grid;
    grid.north = 41;
    grid.west = 81;
    grid.dLat = grid.dLon = 1;
    grid.rows = 2;
    grid.cols = 3;
    const std::vector<int> openings = {0, 50, 101, 101, 101, 101};
    const RgbImage plain = RenderHeatMap(grid, openings, 4);
    ASSERT_EQ(plain.width, 12);
    ASSERT_EQ(plain.height, 8);
    EXPECT_EQ(plain.Get(0, 0), OpeningsColour(0));
    EXPECT_EQ(plain.Get(5, 3), OpeningsColour(50));
    EXPECT_EQ(plain.Get(11, 7), OpeningsColour(101));
    EXPECT_NE(OpeningsColour(0), OpeningsColour(101));
    EXPECT_EQ(OpeningsColour(-5), OpeningsColour(0));
    // A line along the second row's latitude, from the first column to the
    // last: the middle pixel row of those squares takes the line colour.
    const RgbImage lined = RenderHeatMap(grid, openings, 4, {{{40.0f, 81.0f}, {40.0f, 79.0f}}});
    for (int x = 2; x <= 10; ++x) EXPECT_EQ(lined.Get(x, 6), kMapLineColour) << x;
    EXPECT_EQ(lined.Get(1, 6), plain.Get(1, 6));
    EXPECT_EQ(lined.Get(5, 2), plain.Get(5, 2));
    EXPECT_THROW(RenderHeatMap(grid, {1, 2}, 4), std::invalid_argument);
}

}  // namespace
}  // namespace qarvel::studies
