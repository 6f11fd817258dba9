#include "base/failure.h"
#include "picture/component_rows.h"
#include "picture/picture_formats.h"

#include <fmt/format.h>
#include <webp/encode.h>

#include <cerrno>
#include <cstdio>

namespace {

constexpr int kLosslessEffort = 4;  // of 9; more takes much longer and gains little

struct Target {
    std::FILE* file;
    int systemError;  ///< of the write that failed
};

int onWrite(const std::uint8_t* data, std::size_t bytes, const WebPPicture* webp) {
    auto& target = *static_cast<Target*>(webp->custom_ptr);
    if (std::fwrite(data, 1, bytes, target.file) == bytes) return 1;
    target.systemError = errno;
    return 0;
}

int onProgress(int percent, const WebPPicture* webp) {
    static_cast<Progress*>(webp->user_data)->show("writing", static_cast<std::uint64_t>(percent), 100);
    return 1;
}

struct Pixmap {
    Pixmap() { good = WebPPictureInit(&webp) != 0; }
    ~Pixmap() { WebPPictureFree(&webp); }
    Pixmap(const Pixmap&) = delete;
    Pixmap& operator=(const Pixmap&) = delete;

    WebPPicture webp{};
    bool good;
};

void copyPixels(const Picture& picture, const WebPPicture& webp) {
    ComponentRows rows(picture, 3);
    for (std::uint32_t y = 0; y < picture.size().height; ++y) {
        const unsigned char* from = rows.row(y);
        std::uint32_t* to = webp.argb + std::size_t{y} * static_cast<std::size_t>(webp.argb_stride);
        for (std::uint32_t x = 0; x < picture.size().width; ++x, from += 3)
            to[x] = 0xFF000000u | std::uint32_t{from[0]} << 16 | std::uint32_t{from[1]} << 8 | from[2];
    }
}

bool configure(WebPConfig& config, std::optional<int> quality) {
    if (!WebPConfigInit(&config)) return false;
    if (!quality) return WebPConfigLosslessPreset(&config, kLosslessEffort) != 0;
    config.quality = static_cast<float>(*quality);
    return true;
}

}  // namespace

void writeWebp(const Picture& picture, OutputFile& file, std::optional<int> quality, Progress& progress) {
    Pixmap pixmap;
    WebPPicture& webp = pixmap.webp;
    WebPConfig config;
    if (!pixmap.good || !configure(config, quality)) throw Failure(Exit::failed, "libwebp is of another version");
    Target target{file.stream(), 0};
    webp.use_argb = 1;
    webp.width = static_cast<int>(picture.size().width);
    webp.height = static_cast<int>(picture.size().height);
    webp.writer = onWrite;
    webp.custom_ptr = &target;
    webp.progress_hook = onProgress;
    webp.user_data = &progress;
    if (!WebPPictureAlloc(&webp)) throw Failure(Exit::tooLarge, kMemoryMessage);
    copyPixels(picture, webp);
    if (WebPEncode(&config, &webp)) return;
    if (webp.error_code == VP8_ENC_ERROR_BAD_WRITE) {
        errno = target.systemError;
        file.fail();
    }
    if (webp.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY || webp.error_code == VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY)
        throw Failure(Exit::tooLarge, kMemoryMessage);
    throw Failure(Exit::failed, fmt::format("WebP cannot be written: error {}", static_cast<int>(webp.error_code)));
}
