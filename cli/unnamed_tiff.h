#pragma once

// A TIFF file under way. libtiff goes back in the file, which standard output cannot: it is written to a file without a
// name, and copied when it is complete.

#include <tiffio.h>

#include <cstdio>
#include <memory>
#include <string>

#include "input_file.h"
#include "output_file.h"

class UnnamedTiff {
public:
    /// Throws Failure.
    UnnamedTiff();

    TIFF* get() const { return tiff.get(); }
    /// Throws Failure with libtiff's message when `good` is false.
    void require(bool good) const;
    /// What has been flushed, to be read while this lives.
    InputFile reopened() const;
    void copyTo(OutputFile& output);

private:
    static int onError(TIFF*, void* message, const char*, const char* format, va_list arguments);

    struct FileCloser {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    struct TiffCloser {
        void operator()(TIFF* tiff) const { TIFFCleanup(tiff); }
    };
    std::unique_ptr<std::string> message;  ///< libtiff's first one
    std::unique_ptr<std::FILE, FileCloser> file;
    std::unique_ptr<TIFF, TiffCloser> tiff;
};
