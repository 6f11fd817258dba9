#pragma once

// A TIFF file under way. libtiff goes back in the file, which standard output cannot: it is written to a file without a
// name, and copied when it is complete.

#include "files/input_file.h"
#include "files/libtiff.h"
#include "files/output_file.h"

#include <cstdio>
#include <memory>

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
    struct FileCloser {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, FileCloser> file_;
    LibtiffMessages messages_;
    TiffHandle tiff_;
};
