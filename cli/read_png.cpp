#include <fmt/format.h>
#include <png.h>

#include <csetjmp>
#include <cstdio>

#include "failure.h"
#include "picture_reader.h"

namespace {

// libpng leaves a failing call by longjmp: between setjmp and its calls nothing may need a destructor.
class PngReader : public PictureReader {
public:
    explicit PngReader(InputFile input) : name(input.name()), file(fdopen(input.release(), "rb")) {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
        info = png ? png_create_info_struct(png) : nullptr;
        const bool good = file && info && readHeader();
        if (!good) {
            close();
            throw Failure(Exit::failed, fmt::format("{}: {}", name, message));
        }
        if (interlaced) {
            close();
            throw Failure(Exit::unsupported, name + ": interlaced PNG is not supported");
        }
    }
    ~PngReader() override { close(); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    void nextRow(unsigned char* row) override {
        if (!readRow(row)) throw Failure(Exit::failed, fmt::format("{}: {}", name, message));
    }

private:
    [[noreturn]] static void onError(png_structp png, png_const_charp text) {
        auto& reader = *static_cast<PngReader*>(png_get_error_ptr(png));
        std::snprintf(reader.message, sizeof reader.message, "%s", text);
        png_longjmp(png, 1);
    }
    static void onWarning(png_structp, png_const_charp) {}

    void close() {
        png_destroy_read_struct(&png, &info, nullptr);
        if (file) std::fclose(file);
        file = nullptr;
    }

    bool readRow(unsigned char* row) {
        if (setjmp(png_jmpbuf(png))) return false;
        png_read_row(png, row, nullptr);
        return true;
    }

    bool readHeader() {
        if (setjmp(png_jmpbuf(png))) return false;
        png_init_io(png, file);
        png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_read_info(png, info);
        size = {png_get_image_width(png, info), png_get_image_height(png, info)};
        interlaced = png_get_interlace_type(png, info) != PNG_INTERLACE_NONE;
        chooseTransforms(png_get_color_type(png, info), png_get_bit_depth(png, info));
        dpiX = png_get_x_pixels_per_meter(png, info) * 0.0254;
        dpiY = png_get_y_pixels_per_meter(png, info) * 0.0254;
        png_read_update_info(png, info);
        return true;
    }

    void chooseTransforms(int type, int depth) {
        png_set_scale_16(png);
        if (type == PNG_COLOR_TYPE_PALETTE) {
            pixels = Pixels::palette;
            png_set_packing(png);
            readPalette();
            return;
        }
        // What shines through is paper.
        if (type & PNG_COLOR_MASK_ALPHA) {
            png_color_16 white{0, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
            if (depth <= 8) white = {0, 255, 255, 255, 255};
            png_set_background(png, &white, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1.0);
        }
        if (type & PNG_COLOR_MASK_COLOR) {
            pixels = Pixels::rgb;
        } else if (depth == 1) {
            pixels = Pixels::bilevel;
            png_set_invert_mono(png);
        } else {
            pixels = Pixels::grey;
            png_set_expand_gray_1_2_4_to_8(png);
        }
    }

    void readPalette() {
        png_colorp entries = nullptr;
        int count = 0;
        if (!png_get_PLTE(png, info, &entries, &count)) png_error(png, "no palette");
        colours.reset(new ColorMap(count, 255));
        for (int i = 0; i < colours->count; ++i)
            colours->entries[i] = {entries[i].red, entries[i].green, entries[i].blue};
    }

    const std::string name;
    std::FILE* file;
    png_structp png;
    png_infop info;
    bool interlaced = false;
    char message[256] = "cannot be read";
};

}  // namespace

std::unique_ptr<PictureReader> openPng(InputFile input) { return std::make_unique<PngReader>(std::move(input)); }
