#include "studies/png_writer.h"

#include <zlib.h>
#include <fstream>
#include <stdexcept>

#include "stationdb/schema.h"  // TempPathBeside

namespace qarvel::studies {

namespace {

void PutU32(std::string& out, std::uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<char>((v >> shift) & 0xFF));
}

// Length, type, data, then the CRC-32 of type and data.
void PutChunk(std::string& out, const char type[5], const std::string& data) {
    PutU32(out, static_cast<std::uint32_t>(data.size()));
    const std::size_t typeAt = out.size();
    out.append(type, 4);
    out += data;
    const auto* bytes = reinterpret_cast<const Bytef*>(out.data() + typeAt);
    PutU32(out, static_cast<std::uint32_t>(crc32(0L, bytes, static_cast<uInt>(4 + data.size()))));
}

}  // namespace

void RgbImage::Set(int x, int y, std::uint32_t rgb) {
    if (x < 0 || y < 0 || x >= width || y >= height) return;
    const std::size_t at = (static_cast<std::size_t>(y) * width + x) * 3;
    pixels[at] = static_cast<std::uint8_t>(rgb >> 16);
    pixels[at + 1] = static_cast<std::uint8_t>(rgb >> 8);
    pixels[at + 2] = static_cast<std::uint8_t>(rgb);
}

std::uint32_t RgbImage::Get(int x, int y) const {
    const std::size_t at = (static_cast<std::size_t>(y) * width + x) * 3;
    return (std::uint32_t{pixels[at]} << 16) | (std::uint32_t{pixels[at + 1]} << 8) |
           pixels[at + 2];
}

std::string EncodePng(const RgbImage& image) {
    if (image.width <= 0 || image.height <= 0 ||
        image.pixels.size() != static_cast<std::size_t>(image.width) * image.height * 3) {
        throw std::runtime_error("PNG: the image has no pixels or the wrong number of bytes");
    }
    // Each scanline gets filter type 0 (none) in front.
    const std::size_t rowBytes = static_cast<std::size_t>(image.width) * 3;
    std::string raw;
    raw.reserve((rowBytes + 1) * static_cast<std::size_t>(image.height));
    for (int y = 0; y < image.height; ++y) {
        raw.push_back('\0');
        raw.append(reinterpret_cast<const char*>(image.pixels.data()) + y * rowBytes, rowBytes);
    }
    uLongf packedSize = compressBound(static_cast<uLong>(raw.size()));
    std::string packed(packedSize, '\0');
    if (compress2(reinterpret_cast<Bytef*>(packed.data()), &packedSize,
                  reinterpret_cast<const Bytef*>(raw.data()), static_cast<uLong>(raw.size()),
                  9) != Z_OK) {
        throw std::runtime_error("PNG: zlib could not compress the image");
    }
    packed.resize(packedSize);

    std::string header;
    PutU32(header, static_cast<std::uint32_t>(image.width));
    PutU32(header, static_cast<std::uint32_t>(image.height));
    header +=
        std::string("\x08\x02\x00\x00\x00", 5);  // 8 bits, RGB, deflate, filter 0, no interlace

    std::string out("\x89PNG\r\n\x1a\n", 8);
    PutChunk(out, "IHDR", header);
    PutChunk(out, "IDAT", packed);
    PutChunk(out, "IEND", {});
    return out;
}

bool WritePng(const std::filesystem::path& path, const RgbImage& image, std::string* error) {
    namespace fs = std::filesystem;
    const fs::path temp = stationdb::TempPathBeside(path);
    try {
        const std::string bytes = EncodePng(image);
        {
            std::ofstream out(temp, std::ios::binary | std::ios::trunc);
            out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
            out.close();
            if (!out) throw std::runtime_error("cannot write " + temp.string());
        }
        fs::rename(temp, path);
        return true;
    } catch (const std::exception& e) {
        std::error_code ec;
        fs::remove(temp, ec);
        if (error) *error = e.what();
        return false;
    }
}

}  // namespace qarvel::studies
