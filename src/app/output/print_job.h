#pragma once
// Printing of the job display: the map at the print scale (gMapPrintScale)
// and the grid page by page, each under the job's header and, for the map,
// a colour key; every page carries "Page n of m" and the date. Output goes
// to a printer or to a PDF file (written under a temporary name beside the
// target and renamed into place). Any failure shows "Printing Error".

#include <QDate>
#include <QString>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "jobview/display_list.h"
#include "jobview/grid_query.h"
#include "jobview/study_filter.h"

class QPagedPaintDevice;
class QPainter;

namespace qarvel::app {

inline constexpr const char* kPrintingError = "Printing Error";
// The grid's printed font; a system without it substitutes its own.
inline constexpr const char* kGridPrintFont = "MS Sans Serif";

// What a printout shows, taken from the job display.
struct PrintContent {
    std::string jobName;
    std::string masterSource;  // the master database the job came from
    std::string comments;
    std::string description;   // "" : what the colours mean
    jobview::StudyFilter filter;
    jobview::MapScene scene;       // the stations drawn, the arrays, the centre
    jobview::MapSettings settings; // printer on, the print scale
    jobview::GridTable grid;
    QDate date = QDate::currentDate();
};

// The header lines: "Job: ", "Master Database: ", "Lat: " ... " Lon: ",
// "Scale: 1:", "Channel: " ... " Class: ", "Status: " (Licensed,
// Construction Permit, Application, Addition, Vacant/Reserved, Deleted, as
// ticked), "Channels: " (Primary, 1st Adj, 2nd Adj, 3rd Adj, IF, TV6, as
// ticked), "Range: " ... " km", "Comments: ", "Description: ".
std::vector<std::string> HeaderLines(const PrintContent& content);

// The colour key: "Key:" then, colouring by clearance, "Short", "Close",
// "Clear", "Short/Directional"; colouring by channel, the relation names.
// Colours as printed (yellow darkened for paper).
std::vector<std::pair<std::string, std::int32_t>> ColourKey(jobview::StationColoring coloring);

// "Page n of m".
std::string PageText(int page, int pages);
// "Date: " and the date, yyyy-MM-dd.
std::string DateText(const QDate& date);

// Rows of the grid that fit a page, and the pages the grid needs (one at
// least, so an empty grid still prints its header).
int GridPageCount(std::size_t rows, int rowsPerPage);

// PrintMap / PrintGrid onto a paged device (a QPrinter or a QPdfWriter).
// Reported under "frmDispJob" ":PrintMap:" / ":PrintGrid:"; false (after
// "Printing Error") on failure.
bool PrintMap(const PrintContent& content, QPagedPaintDevice& device);
bool PrintGrid(const PrintContent& content, QPagedPaintDevice& device);

// The same into a PDF file at `pdf` (any previous file is replaced only by
// a complete one).
bool PrintMapToPdf(const PrintContent& content, const std::filesystem::path& pdf);
bool PrintGridToPdf(const PrintContent& content, const std::filesystem::path& pdf);

}  // namespace qarvel::app
