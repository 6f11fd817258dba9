#pragma once

// A TIFF file under way. libtiff goes back in the file, which standard output cannot: it is written to a file without a
// name, and copied when it is complete.

#include "files/input_file.h"
#include "files/output_file.h"

#include <tiffio.h>

#include <cstdio>
#include <memory>
#include <string>

class UnnamedTiff {
public:
    /// Throws Failure.
    UnnamedTiff();

    TIFF* get() const { return tiff_.get(); }
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
    std::unique_ptr<std::string> message_;  ///< libtiff's first one
    std::unique_ptr<std::FILE, FileCloser> file_;
    std::unique_ptr<TIFF, TiffCloser> tiff_;
};
