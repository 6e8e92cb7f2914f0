#include "jobview/render/map_export.h"

#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include <algorithm>
#include <cctype>
#include <system_error>

#include "core/error_trap.h"
#include "jobview/render/map_renderer.h"
#include "jobview/where_clause.h"
#include "stationdb/schema.h"

namespace qarvel::jobview {

namespace fs = std::filesystem;

namespace {

std::string LowerExtension(const fs::path& path) {
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext;
}

void SetHints(QPainter& painter, const MapImageOptions& options) {
    painter.setRenderHint(QPainter::Antialiasing, options.antialias);
    painter.setRenderHint(QPainter::TextAntialiasing, options.antialias);
}

void WritePdf(const fs::path& path, const MapScene& scene, const MapSettings& settings,
              const MapImageOptions& options) {
    QPdfWriter writer(QString::fromStdString(path.string()));
    writer.setResolution(static_cast<int>(options.dpi));
    const QSizeF points(options.widthPx * 72.0 / options.dpi, options.heightPx * 72.0 / options.dpi);
    writer.setPageLayout(QPageLayout(QPageSize(points, QPageSize::Point), QPageLayout::Portrait, QMarginsF()));
    QPainter painter;
    if (!painter.begin(&writer)) throw core::TrapError("cannot write " + path.string());
    SetHints(painter, options);
    MapRenderer().Draw(painter, QRectF(0, 0, writer.width(), writer.height()), options.dpi, scene, settings);
    painter.end();
}

}  // namespace

QImage RenderMapImage(const MapScene& scene, const MapSettings& settings, const MapImageOptions& options) {
    QImage image(options.widthPx, options.heightPx, QImage::Format_RGB32);
    const int dotsPerMeter = static_cast<int>(options.dpi / 0.0254 + 0.5);
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    QPainter painter(&image);
    SetHints(painter, options);
    MapRenderer().Draw(painter, QRectF(0, 0, options.widthPx, options.heightPx), options.dpi, scene, settings);
    return image;
}

bool SaveMapImage(const fs::path& out, const MapScene& scene, const MapSettings& settings,
                  const MapImageOptions& options) {
    return core::TrappedVoid(kJobDisplayModule, ":SaveMapImage:", [&] {
        const std::string ext = LowerExtension(out);
        if (ext != ".png" && ext != ".pdf") throw core::TrapError("the map is written as .png or .pdf, not \"" + ext + "\"");
        if (options.widthPx <= 0 || options.heightPx <= 0) throw core::TrapError("the picture has no size");
        const fs::path temp = stationdb::TempPathBeside(out);
        try {
            if (ext == ".png") {
                if (!RenderMapImage(scene, settings, options).save(QString::fromStdString(temp.string()), "PNG")) {
                    throw core::TrapError("cannot write " + temp.string());
                }
            } else {
                WritePdf(temp, scene, settings, options);
            }
            fs::rename(temp, out);
        } catch (...) {
            std::error_code ec;
            fs::remove(temp, ec);
            throw;
        }
    });
}

}  // namespace qarvel::jobview
