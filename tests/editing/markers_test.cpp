// Markers in a local database, and the editing session that keeps the
// packed file untouched until it is saved.

#include "editing/markers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>

#include "editing/edit_session.h"
#include "support/temp_folder.h"

namespace qarvel::editing {
namespace {

namespace fs = std::filesystem;

std::string Bytes(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

using MarkersTest = testing_support::TempFolderTest;

TEST_F(MarkersTest, AddListMoveDeleteThroughAPackedLocalDatabase) {
    const fs::path local = Root() / "LocalData.fmd";
    {
        EditSession session(local, /*createMissing=*/true);
        EXPECT_EQ(AddMarker(session.Db(), "Tower", 40.5, 75.25), 1);
        EXPECT_EQ(AddMarker(session.Db(), "Ref", -33.5, -151.0), 2);
        session.Save();
    }
    const std::string saved = Bytes(local);
    {
        EditSession session(local);
        std::vector<Marker> markers = ListMarkers(session.Db());
        ASSERT_EQ(markers.size(), 2u);
        EXPECT_EQ(markers[1].label, "Ref");
        EXPECT_DOUBLE_EQ(markers[1].lon, -151.0);
        EXPECT_EQ(markers[0].jdate.size(), 5u);
        markers[0].lat = 41.0;
        EXPECT_TRUE(UpdateMarker(session.Db(), markers[0]));
        EXPECT_TRUE(DeleteMarker(session.Db(), 2));
        EXPECT_FALSE(DeleteMarker(session.Db(), 2));
        // Not saved: the session ends and the file stays as it was.
    }
    EXPECT_EQ(Bytes(local), saved);
    EditSession session(local);
    EXPECT_EQ(ListMarkers(session.Db()).size(), 2u);
    EXPECT_EQ(testing_support::Listing(Root()), std::vector<std::string>{"LocalData.fmd"});
}

TEST_F(MarkersTest, RefusesBadLabelsPositionsAndFiles) {
    EXPECT_TRUE(MarkerProblem("", 0, 0));
    EXPECT_TRUE(MarkerProblem(std::string(129, 'x'), 0, 0));
    EXPECT_FALSE(MarkerProblem(std::string(128, 'x'), 90, -180));
    EXPECT_TRUE(MarkerProblem("x", 90.001, 0));
    EXPECT_TRUE(MarkerProblem("x", 0, std::nan("")));
    std::ofstream(Root() / "junk.fmd") << "not a container";
    EXPECT_THROW(EditSession(Root() / "junk.fmd"), std::runtime_error);
    EXPECT_THROW(EditSession(Root() / "absent.fmd"), std::runtime_error);
}

}  // namespace
}  // namespace qarvel::editing
