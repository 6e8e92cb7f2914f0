#pragma once
// A small PNG encoder for 8-bit RGB images (heat maps of AutoScan grids):
// signature, IHDR, one IDAT compressed by zlib at level 9, IEND, each chunk
// with its CRC-32. Keeps the studies module free of any GUI library.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace qarvel::studies {

// width x height pixels, row by row from the top, 3 bytes (R, G, B) each.
struct RgbImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    RgbImage() = default;
    RgbImage(int w, int h) : width(w), height(h), pixels(static_cast<std::size_t>(w) * h * 3, 0) {}
    void Set(int x, int y, std::uint32_t rgb);  // ignores points outside
    std::uint32_t Get(int x, int y) const;      // 0xRRGGBB
};

// The bytes of a PNG file holding `image`. Throws std::runtime_error for an
// empty or inconsistent image or when zlib fails.
std::string EncodePng(const RgbImage& image);

// Writes the PNG to `path` under a temporary name beside it and renames it
// into place. False (with *error set when given) on failure; a previous file
// at `path` is then left as it was.
bool WritePng(const std::filesystem::path& path, const RgbImage& image,
              std::string* error = nullptr);

}  // namespace qarvel::studies
