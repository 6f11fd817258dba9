#include "base/failure.h"
#include "picture/component_rows.h"
#include "picture/picture_formats.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

#include <jerror.h>

namespace {

constexpr int kUsualQuality = 85;

// libjpeg leaves a failing call by longjmp: between setjmp and its calls nothing may need a destructor.
struct Writer {
    Writer() {
        jpeg.err = jpeg_std_error(&errors);
        jpeg.client_data = this;
        errors.error_exit = onError;
        errors.emit_message = onMessage;
    }
    ~Writer() { jpeg_destroy_compress(&jpeg); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    [[noreturn]] static void onError(j_common_ptr jpeg) {
        auto& writer = *static_cast<Writer*>(jpeg->client_data);
        writer.systemError = errno;
        writer.errors.format_message(jpeg, writer.message);
        std::longjmp(writer.leave, 1);
    }
    static void onMessage(j_common_ptr, int) {}

    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    std::jmp_buf leave{};
    char message[JMSG_LENGTH_MAX] = "";
    int systemError = 0;  ///< when that was said
};

UINT16 density(double dpi) { return static_cast<UINT16>(std::clamp(std::round(dpi), 1.0, 65535.0)); }

void start(jpeg_compress_struct& jpeg, const Picture& picture, int quality, std::FILE* file) {
    const Pixels pixels = picture.pixels();
    const bool grey = pixels == Pixels::bilevel || pixels == Pixels::grey;
    jpeg_create_compress(&jpeg);
    jpeg_stdio_dest(&jpeg, file);
    jpeg.image_width = picture.size().width;
    jpeg.image_height = picture.size().height;
    jpeg.input_components = grey ? 1 : 3;
    jpeg.in_color_space = grey ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, quality, TRUE);
    jpeg.optimize_coding = TRUE;
    if (picture.dpiX > 0 && picture.dpiY > 0) {
        jpeg.density_unit = 1;  // to the inch
        jpeg.X_density = density(picture.dpiX);
        jpeg.Y_density = density(picture.dpiY);
    }
    jpeg_start_compress(&jpeg, TRUE);
}

bool write(Writer& writer, const Picture& picture, ComponentRows& rows, int quality, std::FILE* file,
           Progress& progress) {
    errno = 0;
    if (setjmp(writer.leave)) return false;
    start(writer.jpeg, picture, quality, file);
    const std::uint32_t height = picture.size().height;
    for (std::uint32_t y = 0; y < height; ++y) {
        auto* row = const_cast<JSAMPROW>(rows.row(y));  // only read
        jpeg_write_scanlines(&writer.jpeg, &row, 1);
        progress.show("writing", y, height);
    }
    jpeg_finish_compress(&writer.jpeg);
    return true;
}

}  // namespace

void writeJpeg(const Picture& picture, OutputFile& file, std::optional<int> quality, Progress& progress) {
    const Pixels pixels = picture.pixels();
    ComponentRows rows(picture, pixels == Pixels::bilevel || pixels == Pixels::grey ? 1 : 3);
    Writer writer;
    if (write(writer, picture, rows, quality.value_or(kUsualQuality), file.stream(), progress)) return;
    if (writer.errors.msg_code == JERR_FILE_WRITE) {
        errno = writer.systemError;
        file.fail();
    }
    if (writer.errors.msg_code == JERR_OUT_OF_MEMORY) throw Failure(Exit::tooLarge, kMemoryMessage);
    throw Failure(exitByReason(writer.systemError, Exit::failed),
                  fmt::format("JPEG cannot be written: {}", writer.message));
}
