#include "base/failure.h"
#include "picture/picture_formats.h"

#include <fmt/format.h>
#include <png.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstring>

namespace {

// libpng leaves a failing call by longjmp: between setjmp and its calls nothing may need a destructor.
struct Writer {
    explicit Writer(std::FILE* stream) : file(stream) {
        png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
        info = png ? png_create_info_struct(png) : nullptr;
    }
    ~Writer() { png_destroy_write_struct(&png, &info); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    [[noreturn]] static void onError(png_structp png, png_const_charp message) {
        auto& writer = *static_cast<Writer*>(png_get_error_ptr(png));
        writer.systemError = errno;
        std::snprintf(writer.message, sizeof writer.message, "%s", message);
        png_longjmp(png, 1);
    }
    static void onWarning(png_structp, png_const_charp) {}
    static void onWrite(png_structp png, png_bytep data, std::size_t bytes) {
        const auto& writer = *static_cast<Writer*>(png_get_io_ptr(png));
        if (std::fwrite(data, 1, bytes, writer.file) != bytes) png_error(png, std::strerror(errno));
    }
    static void onFlush(png_structp) {}

    png_structp png;
    png_infop info;
    std::FILE* file;
    char message[256] = "not enough memory";
    int systemError = ENOMEM;  ///< when that was said
};

void setPalette(const Writer& writer, const ColorMap& map) {
    std::array<png_color, 256> colours{};
    const int count = std::clamp(map.count, 1, 256);
    for (int i = 0; i < std::min(map.count, count); ++i)
        colours[static_cast<std::size_t>(i)] = {static_cast<png_byte>(map.entries[i].red),
                                                static_cast<png_byte>(map.entries[i].green),
                                                static_cast<png_byte>(map.entries[i].blue)};
    png_set_PLTE(writer.png, writer.info, colours.data(), count);
}

png_uint_32 perMetre(double dpi) { return static_cast<png_uint_32>(std::lround(dpi / 0.0254)); }

int colourType(Pixels pixels) {
    return pixels == Pixels::rgb       ? PNG_COLOR_TYPE_RGB
           : pixels == Pixels::palette ? PNG_COLOR_TYPE_PALETTE
                                       : PNG_COLOR_TYPE_GRAY;
}

bool write(Writer& writer, const Picture& picture, unsigned char* row, Progress& progress) {
    png_structp const png = writer.png;
    errno = 0;
    if (setjmp(png_jmpbuf(png))) return false;
    const Size size = picture.size();
    const Pixels pixels = picture.pixels();
    png_set_write_fn(png, &writer, Writer::onWrite, Writer::onFlush);
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_IHDR(png, writer.info, size.width, size.height, pixels == Pixels::bilevel ? 1 : 8, colourType(pixels),
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (pixels == Pixels::palette) setPalette(writer, *picture.palette().getColorMap());
    if (picture.dpiX > 0)
        png_set_pHYs(png, writer.info, perMetre(picture.dpiX), perMetre(picture.dpiY), PNG_RESOLUTION_METER);
    if (pixels == Pixels::bilevel) {
        // Rows of few long runs: filters only spoil them, and more effort gains little.
        png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
        png_set_compression_level(png, 4);
    }
    png_write_info(png, writer.info);
    if (pixels == Pixels::bilevel) png_set_invert_mono(png);
    for (std::uint32_t y = 0; y < size.height; ++y) {
        picture.copyRow(y, row);
        png_write_row(png, row);
        progress.show("writing", y, size.height);
    }
    png_write_end(png, nullptr);
    return true;
}

}  // namespace

void writePng(const Picture& picture, OutputFile& file, Progress& progress) {
    Writer writer(file.stream());
    const auto row = rowBuffer(picture);
    if (!writer.info || !write(writer, picture, row.get(), progress))
        throw Failure(exitByReason(writer.systemError, Exit::failed),
                      fmt::format("PNG cannot be written: {}", writer.message));
}
