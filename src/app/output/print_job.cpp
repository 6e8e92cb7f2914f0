#include "app/output/print_job.h"

#include <QFileInfo>
#include <QFont>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>

#include <algorithm>
#include <cmath>
#include <functional>
#include <system_error>

#include "core/error_trap.h"
#include "core/prompt.h"
#include "geodesy/geodesy.h"
#include "jobview/map_model.h"
#include "jobview/render/map_renderer.h"
#include "jobview/station_colors.h"
#include "jobview/temp_display.h"
#include "jobview/where_clause.h"
#include "spacing/class_codes.h"

namespace qarvel::app {

namespace fs = std::filesystem;

namespace {

constexpr int kHeaderPointSize = 9;
constexpr int kPdfResolution = 300;
constexpr double kPdfMarginMm = 12.0;

// "a, b, c" from the ticked entries.
std::string JoinTicked(const std::vector<std::pair<bool, const char*>>& entries) {
    std::string text;
    for (const auto& [ticked, name] : entries) {
        if (!ticked) continue;
        if (!text.empty()) text += ", ";
        text += name;
    }
    return text;
}

std::string ClassText(int index) {
    return index >= 0 && index + 1 < static_cast<int>(spacing::ClassName.size())
               ? spacing::ClassName[static_cast<std::size_t>(index) + 1]
               : std::string();
}

QFont HeaderFont(QPaintDevice& device) {
    QFont font(QString::fromLatin1(kGridPrintFont), kHeaderPointSize);
    font.setStyleHint(QFont::SansSerif);
    return QFont(font, &device);
}

// Draws the header lines from the top of `area`; returns the y below them.
double DrawHeader(QPainter& painter, const QRectF& area, const std::vector<std::string>& lines) {
    const QFontMetricsF metrics(painter.font(), painter.device());
    double y = area.top() + metrics.ascent();
    for (const std::string& line : lines) {
        painter.drawText(QPointF(area.left(), y), QString::fromStdString(line));
        y += metrics.lineSpacing();
    }
    return y - metrics.ascent() + metrics.descent();
}

// The colour key as a column at the right of `area`, top aligned.
void DrawKey(QPainter& painter, const QRectF& area, jobview::StationColoring coloring) {
    const QFontMetricsF metrics(painter.font(), painter.device());
    const double line = metrics.lineSpacing();
    const double box = metrics.ascent();
    const auto key = ColourKey(coloring);
    double width = metrics.horizontalAdvance(QStringLiteral("Key:"));
    for (const auto& entry : key) {
        width = std::max(width, box * 1.5 + metrics.horizontalAdvance(QString::fromStdString(entry.first)));
    }
    const double x = area.right() - width;
    double y = area.top() + metrics.ascent();
    painter.drawText(QPointF(x, y), QStringLiteral("Key:"));
    for (const auto& [name, color] : key) {
        y += line;
        painter.fillRect(QRectF(x, y - box, box, box), jobview::ToQColor(color));
        painter.drawRect(QRectF(x, y - box, box, box));
        painter.drawText(QPointF(x + box * 1.5, y), QString::fromStdString(name));
    }
}

void DrawFooter(QPainter& painter, const QRectF& page, int pageNumber, int pages, const QDate& date) {
    const QFontMetricsF metrics(painter.font(), painter.device());
    const double y = page.bottom() - metrics.descent();
    painter.drawText(QPointF(page.left(), y), QString::fromStdString(DateText(date)));
    const QString text = QString::fromStdString(PageText(pageNumber, pages));
    painter.drawText(QPointF(page.right() - metrics.horizontalAdvance(text), y), text);
}

void BeginOn(QPainter& painter, QPagedPaintDevice& device) {
    if (!painter.begin(&device)) throw core::TrapError("the printer or file could not be opened");
    painter.setFont(HeaderFont(device));
    painter.setPen(Qt::black);
}

// Column widths (device pixels) of the printed grid: the widest text of
// each column, shrunk together when the page is narrower than their sum.
std::vector<double> ColumnWidths(const PrintContent& content, const QFontMetricsF& metrics, double available) {
    const jobview::GridTable& g = content.grid;
    std::vector<double> widths;
    const double pad = metrics.horizontalAdvance(QStringLiteral("  "));
    for (std::size_t c = 0; c < g.captions.size(); ++c) {
        double w = metrics.horizontalAdvance(QString::fromStdString(g.captions[c]));
        for (const auto& row : g.rows) {
            const std::string cell = jobview::FormatGridCell(g.columns[c], row[c]);
            w = std::max(w, metrics.horizontalAdvance(QString::fromStdString(cell)));
        }
        widths.push_back(w + pad);
    }
    double total = 0;
    for (double w : widths) total += w;
    if (total > available && total > 0) {
        for (double& w : widths) w *= available / total;
    }
    return widths;
}

struct GridPageGeometry {
    QRectF page;
    double top = 0;        // y of the column headings' baseline
    double line = 0;       // row height
    int rowsPerPage = 1;
};

GridPageGeometry GridGeometry(const PrintContent& content, QPagedPaintDevice& device) {
    GridPageGeometry g;
    g.page = QRectF(0, 0, device.width(), device.height());
    const QFontMetricsF metrics(HeaderFont(device), &device);
    g.line = metrics.lineSpacing();
    const double headerBottom = g.page.top() + g.line * static_cast<double>(HeaderLines(content).size());
    g.top = headerBottom + g.line * 1.5;
    const double bottom = g.page.bottom() - g.line * 1.5;
    g.rowsPerPage = std::max(1, static_cast<int>(std::floor((bottom - g.top) / g.line)));
    return g;
}

void DrawGridRow(QPainter& painter, const std::vector<double>& widths, double left, double y,
                 const std::vector<QString>& cells) {
    const QFontMetricsF metrics(painter.font(), painter.device());
    double x = left;
    for (std::size_t c = 0; c < cells.size() && c < widths.size(); ++c) {
        painter.drawText(QPointF(x, y), metrics.elidedText(cells[c], Qt::ElideRight, widths[c]));
        x += widths[c];
    }
}

void PrintGridPages(const PrintContent& content, QPagedPaintDevice& device) {
    QPainter painter;
    BeginOn(painter, device);
    const GridPageGeometry geo = GridGeometry(content, device);
    const QFontMetricsF metrics(painter.font(), &device);
    const std::vector<double> widths = ColumnWidths(content, metrics, geo.page.width());
    const jobview::GridTable& g = content.grid;
    const int pages = GridPageCount(g.rows.size(), geo.rowsPerPage);
    std::vector<QString> captions;
    for (const std::string& c : g.captions) captions.push_back(QString::fromStdString(c));
    std::size_t next = 0;
    for (int page = 1; page <= pages; ++page) {
        if (page > 1 && !device.newPage()) throw core::TrapError("the printer refused a new page");
        DrawHeader(painter, geo.page, HeaderLines(content));
        QFont bold = painter.font();
        bold.setBold(true);
        painter.save();
        painter.setFont(bold);
        DrawGridRow(painter, widths, geo.page.left(), geo.top, captions);
        painter.restore();
        double y = geo.top + geo.line;
        for (int r = 0; r < geo.rowsPerPage && next < g.rows.size(); ++r, ++next) {
            std::vector<QString> cells;
            for (std::size_t c = 0; c < g.columns.size(); ++c) {
                cells.push_back(QString::fromStdString(jobview::FormatGridCell(g.columns[c], g.rows[next][c])));
            }
            DrawGridRow(painter, widths, geo.page.left(), y, cells);
            y += geo.line;
        }
        DrawFooter(painter, geo.page, page, pages, content.date);
    }
    if (!painter.end()) throw core::TrapError("the printout could not be finished");
}

void PrintMapPage(const PrintContent& content, QPagedPaintDevice& device) {
    QPainter painter;
    BeginOn(painter, device);
    const QRectF page(0, 0, device.width(), device.height());
    const double headerBottom = DrawHeader(painter, page, HeaderLines(content));
    DrawKey(painter, page, content.settings.coloring);
    const QFontMetricsF metrics(painter.font(), &device);
    const QRectF area(page.left(), headerBottom + metrics.lineSpacing() * 0.5, page.width(),
                      page.bottom() - metrics.lineSpacing() * 1.5 - (headerBottom + metrics.lineSpacing() * 0.5));
    if (area.height() <= 0) throw core::TrapError("the page is too small for the map");
    painter.save();
    painter.setClipRect(area);
    jobview::MapRenderer renderer;
    renderer.Draw(painter, area, device.logicalDpiX(), content.scene, content.settings);
    painter.restore();
    painter.setPen(Qt::black);
    painter.drawRect(area);
    DrawFooter(painter, page, 1, 1, content.date);
    if (!painter.end()) throw core::TrapError("the printout could not be finished");
}

bool Printed(const char* routine, const std::function<void()>& body) {
    const bool ok = core::TrappedVoid(jobview::kJobDisplayModule, routine, body);
    if (!ok) core::ShowPrompt(kPrintingError, {}, core::PromptButtons::Ok, core::PromptIcon::Critical);
    return ok;
}

// Prints into a PDF under a temporary name beside `pdf`, renamed into place
// when the printout is complete.
bool ToPdf(const fs::path& pdf, const std::string& title, const std::function<bool(QPagedPaintDevice&)>& print) {
    fs::path temp = pdf;
    temp += ".part";
    bool printed = false;
    {
        QPdfWriter writer(QString::fromStdString(temp.string()));
        writer.setResolution(kPdfResolution);
        writer.setCreator(QStringLiteral("Qarvel"));
        writer.setTitle(QString::fromStdString(title));
        writer.setPageLayout(QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Landscape,
                                         QMarginsF(kPdfMarginMm, kPdfMarginMm, kPdfMarginMm, kPdfMarginMm),
                                         QPageLayout::Millimeter));
        printed = print(writer);
    }
    std::error_code ec;
    if (printed && fs::file_size(temp, ec) > 0 && !ec) {
        fs::rename(temp, pdf, ec);
        if (!ec) return true;
        core::ReportError(jobview::kJobDisplayModule, ":PrintToFile:", ec.message());
        core::ShowPrompt(kPrintingError, {}, core::PromptButtons::Ok, core::PromptIcon::Critical);
    }
    fs::remove(temp, ec);
    return false;
}

}  // namespace

std::vector<std::string> HeaderLines(const PrintContent& c) {
    const jobview::StudyFilter& f = c.filter;
    const std::string status = JoinTicked({{f.statusLI, "Licensed"},
                                           {f.statusCP, "Construction Permit"},
                                           {f.statusAP, "Application"},
                                           {f.statusAD, "Addition"},
                                           {f.statusVA, "Vacant/Reserved"},
                                           {f.statusDE, "Deleted"}});
    const std::string channels = JoinTicked({{f.primary, "Primary"},
                                             {f.firstAdjacent, "1st Adj"},
                                             {f.secondAdjacent, "2nd Adj"},
                                             {f.thirdAdjacent, "3rd Adj"},
                                             {f.intermediateFrequency, "IF"},
                                             {f.tv6, "TV6"}});
    std::string description = c.description;
    if (description.empty()) {
        description = c.settings.coloring == jobview::StationColoring::Channel ? "Stations coloured by channel"
                                                                               : "Stations coloured by clearance";
    }
    return {
        "Job: " + c.jobName,
        "Master Database: " + c.masterSource,
        "Lat: " + geodesy::DegToDMS(f.target.lat) + " Lon: " + geodesy::DegToDMS(f.target.lon),
        "Scale: 1:" + jobview::FormatScale(jobview::EffectiveScale(c.settings.scale)),
        "Channel: " + jobview::ChannelText(f.target.channel) + " Class: " + ClassText(f.target.stationClass),
        "Status: " + status,
        "Channels: " + channels,
        "Range: " + jobview::FormatLimit(f.clearanceLimitKm) + " km",
        "Comments: " + c.comments,
        "Description: " + description,
    };
}

std::vector<std::pair<std::string, std::int32_t>> ColourKey(jobview::StationColoring coloring) {
    using jobview::DrawnColor;
    if (coloring == jobview::StationColoring::Channel) {
        return {{"Primary", DrawnColor(jobview::kColorPrimary, true)},
                {"1st Adj", DrawnColor(jobview::kColorFirstAdj, true)},
                {"2nd Adj", DrawnColor(jobview::kColorSecondAdj, true)},
                {"3rd Adj", DrawnColor(jobview::kColorThirdAdj, true)},
                {"IF", DrawnColor(jobview::kColorIF, true)},
                {"TV6", DrawnColor(jobview::kColorTV6, true)}};
    }
    return {{"Short", DrawnColor(jobview::kColorShort, true)},
            {"Close", DrawnColor(jobview::kColorClose, true)},
            {"Clear", DrawnColor(jobview::kColorClear, true)},
            {"Short/Directional", DrawnColor(jobview::kColorShortDirectional, true)}};
}

std::string PageText(int page, int pages) { return "Page " + std::to_string(page) + " of " + std::to_string(pages); }

std::string DateText(const QDate& date) {
    return "Date: " + date.toString(QStringLiteral("yyyy-MM-dd")).toStdString();
}

int GridPageCount(std::size_t rows, int rowsPerPage) {
    if (rowsPerPage <= 0) return 1;
    const auto per = static_cast<std::size_t>(rowsPerPage);
    return std::max(1, static_cast<int>((rows + per - 1) / per));
}

bool PrintMap(const PrintContent& content, QPagedPaintDevice& device) {
    return Printed(":PrintMap:", [&] { PrintMapPage(content, device); });
}

bool PrintGrid(const PrintContent& content, QPagedPaintDevice& device) {
    return Printed(":PrintGrid:", [&] { PrintGridPages(content, device); });
}

bool PrintMapToPdf(const PrintContent& content, const fs::path& pdf) {
    return ToPdf(pdf, content.jobName, [&](QPagedPaintDevice& d) { return PrintMap(content, d); });
}

bool PrintGridToPdf(const PrintContent& content, const fs::path& pdf) {
    return ToPdf(pdf, content.jobName, [&](QPagedPaintDevice& d) { return PrintGrid(content, d); });
}

}  // namespace qarvel::app
