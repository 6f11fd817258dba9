#pragma once

// TIFF files of one strip in memory, through libtiff.

#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace peer {

using Bytes = std::vector<unsigned char>;

class MemoryTiff {
public:
    /// Starts a file of one strip.
    MemoryTiff(std::uint32_t width, std::uint32_t height) {
        open("wm");
        TIFFSetField(tiff_, TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(tiff_, TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(tiff_, TIFFTAG_ROWSPERSTRIP, height);
        TIFFSetField(tiff_, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff_, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff_, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
        TIFFSetField(tiff_, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    }
    MemoryTiff(const MemoryTiff&) = delete;
    ~MemoryTiff() { TIFFClose(tiff_); }

    /// Codes the pixels, and gives the strip as it stands in the file.
    Bytes codedFrom(Bytes pixels) {
        TIFFWriteEncodedStrip(tiff_, 0, pixels.data(), static_cast<tmsize_t>(pixels.size()));
        reopen();
        Bytes strip(TIFFRawStripSize64(tiff_, 0));
        TIFFReadRawStrip(tiff_, 0, strip.data(), static_cast<tmsize_t>(strip.size()));
        return strip;
    }
    /// Stores a coded strip, and gives the pixels; none when libtiff finds a fault in it.
    Bytes pixelsFrom(Bytes strip, std::size_t size) {
        TIFFWriteRawStrip(tiff_, 0, strip.data(), static_cast<tmsize_t>(strip.size()));
        reopen();
        Bytes pixels(size);
        TIFFErrorHandler warn = TIFFSetWarningHandler(&MemoryTiff::note), fail = TIFFSetErrorHandler(&MemoryTiff::note);
        notes_ = 0;
        const tmsize_t read = TIFFReadEncodedStrip(tiff_, 0, pixels.data(), static_cast<tmsize_t>(size));
        TIFFSetWarningHandler(warn);
        TIFFSetErrorHandler(fail);
        return notes_ == 0 && read == static_cast<tmsize_t>(size) ? pixels : Bytes();
    }

private:
    static MemoryTiff& self(thandle_t h) { return *static_cast<MemoryTiff*>(h); }
    static void note(const char*, const char*, va_list) { ++notes_; }
    static tmsize_t read(thandle_t h, void* to, tmsize_t size) {
        MemoryTiff& f = self(h);
        const std::size_t n = f.at_ < f.file_.size() ? std::min<std::size_t>(size, f.file_.size() - f.at_) : 0;
        std::copy_n(f.file_.begin() + f.at_, n, static_cast<unsigned char*>(to));
        f.at_ += n;
        return n;
    }
    static tmsize_t write(thandle_t h, void* from, tmsize_t size) {
        MemoryTiff& f = self(h);
        f.file_.resize(std::max<std::size_t>(f.file_.size(), f.at_ + size));
        std::copy_n(static_cast<unsigned char*>(from), size, f.file_.begin() + f.at_);
        f.at_ += size;
        return size;
    }
    static toff_t seek(thandle_t h, toff_t offset, int whence) {
        MemoryTiff& f = self(h);
        return f.at_ = offset + (whence == SEEK_SET ? 0 : whence == SEEK_CUR ? f.at_ : f.file_.size());
    }
    static toff_t size(thandle_t h) { return self(h).file_.size(); }
    static int close(thandle_t) { return 0; }

    void open(const char* mode) {
        at_ = 0;
        tiff_ = TIFFClientOpen("memory", mode, this, read, write, seek, close, size, nullptr, nullptr);
    }
    void reopen() {
        TIFFClose(tiff_);
        open("rm");
    }

    Bytes file_;
    std::size_t at_ = 0;
    TIFF* tiff_ = nullptr;
    static inline int notes_ = 0;
};

}  // namespace peer
