#pragma once

// TIFF files of one strip in memory, through libtiff.

#include <sys/mman.h>
#include <tiffio.h>
#include <unistd.h>

#include <cstdint>
#include <vector>

namespace peer {

using Bytes = std::vector<unsigned char>;

class MemoryTiff {
public:
    /// Starts a file of one strip.
    MemoryTiff(std::uint32_t width, std::uint32_t height) {
        open("w");
        TIFFSetField(tiff_, TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(tiff_, TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(tiff_, TIFFTAG_ROWSPERSTRIP, height);
        TIFFSetField(tiff_, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff_, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff_, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
        TIFFSetField(tiff_, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    }
    MemoryTiff(const MemoryTiff&) = delete;
    ~MemoryTiff() {
        TIFFClose(tiff_);
        close(file_);
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
    static void note(const char*, const char*, va_list) { ++notes_; }

    void open(const char* mode) {
        lseek(file_, 0, SEEK_SET);
        tiff_ = TIFFFdOpen(dup(file_), "memory", mode);
    }
    void reopen() {
        TIFFClose(tiff_);
        open("r");
    }

    int file_ = memfd_create("memory", 0);
    TIFF* tiff_ = nullptr;
    static inline int notes_ = 0;
};

}  // namespace peer
