#include "base/failure.h"
#include "picture/picture_reader.h"

#include <fmt/format.h>
#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>

namespace {

// libpng leaves a failing call by longjmp: between setjmp and its calls nothing may need a destructor.
class PngReader : public PictureReader {
public:
    explicit PngReader(InputFile input) : name_(input.name()), file_(fdopen(input.release(), "rb")) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        const bool good = file_ && info_ && readHeader();
        if (!good) {
            close();
            fail();
        }
        if (interlaced_) {
            close();
            throw Failure(Exit::unsupported, name_ + ": interlaced PNG is not supported");
        }
    }
    ~PngReader() override { close(); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    void nextRow(unsigned char* row) override {
        if (!readRow(row)) fail();
    }

private:
    [[noreturn]] static void onError(png_structp png, png_const_charp text) {
        auto& reader = *static_cast<PngReader*>(png_get_error_ptr(png));
        reader.systemError_ = errno;
        std::snprintf(reader.message_, sizeof reader.message_, "%s", text);
        png_longjmp(png, 1);
    }
    static void onWarning(png_structp, png_const_charp) {}
    [[noreturn]] void fail() const {
        throw Failure(exitByReason(systemError_, Exit::failed), fmt::format("{}: {}", name_, message_));
    }

    void close() {
        png_destroy_read_struct(&png_, &info_, nullptr);
        if (file_) std::fclose(file_);
        file_ = nullptr;
    }

    bool readRow(unsigned char* row) {
        errno = 0;
        if (setjmp(png_jmpbuf(png_))) return false;
        png_read_row(png_, row, nullptr);
        return true;
    }

    bool readHeader() {
        errno = 0;
        if (setjmp(png_jmpbuf(png_))) return false;
        png_init_io(png_, file_);
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_read_info(png_, info_);
        size = {png_get_image_width(png_, info_), png_get_image_height(png_, info_)};
        interlaced_ = png_get_interlace_type(png_, info_) != PNG_INTERLACE_NONE;
        chooseTransforms(png_get_color_type(png_, info_), png_get_bit_depth(png_, info_));
        dpiX = png_get_x_pixels_per_meter(png_, info_) * 0.0254;
        dpiY = png_get_y_pixels_per_meter(png_, info_) * 0.0254;
        png_read_update_info(png_, info_);
        return true;
    }

    void chooseTransforms(int type, int depth) {
        png_set_scale_16(png_);
        if (type == PNG_COLOR_TYPE_PALETTE) {
            pixels = Pixels::palette;
            png_set_packing(png_);
            readPalette();
            return;
        }
        // What shines through is paper.
        if (type & PNG_COLOR_MASK_ALPHA) {
            png_color_16 white{0, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
            if (depth <= 8) white = {0, 255, 255, 255, 255};
            png_set_background(png_, &white, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1.0);
        }
        if (type & PNG_COLOR_MASK_COLOR) {
            pixels = Pixels::rgb;
        } else if (depth == 1) {
            pixels = Pixels::bilevel;
            png_set_invert_mono(png_);
        } else {
            pixels = Pixels::grey;
            png_set_expand_gray_1_2_4_to_8(png_);
        }
    }

    void readPalette() {
        png_colorp entries = nullptr;
        int count = 0;
        if (!png_get_PLTE(png_, info_, &entries, &count)) png_error(png_, "no palette");
        colours.reset(new ColorMap(count, 255));
        for (int i = 0; i < colours->count; ++i)
            colours->entries[i] = {entries[i].red, entries[i].green, entries[i].blue};
    }

    const std::string name_;
    std::FILE* file_;
    png_structp png_;
    png_infop info_;
    bool interlaced_ = false;
    char message_[256] = "cannot be read";
    int systemError_ = 0;  ///< when that was said
};

}  // namespace

std::unique_ptr<PictureReader> openPng(InputFile input) { return std::make_unique<PngReader>(std::move(input)); }
