#pragma once

// libtiff's files, and what it says about them.

#include "base/failure.h"
#include "files/input_file.h"

#include <tiffio.h>

#include <cstdarg>
#include <memory>
#include <string>

struct TiffCloser {
    void operator()(TIFF* file) const { TIFFClose(file); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCloser>;

/// Keeps the first complaint about a file; outlives it, and stays where it is.
class LibtiffMessages {
public:
    LibtiffMessages() = default;
    LibtiffMessages(const LibtiffMessages&) = delete;
    LibtiffMessages& operator=(const LibtiffMessages&) = delete;

    /// Opens a file, whose descriptor ends with it. With `faxWarnings` a row of fax codes that libtiff had to cut or
    /// fill up is a complaint; other warnings never are. Null: it cannot be opened, and the descriptor is closed.
    TiffHandle open(int descriptor, const std::string& name, const char* mode, bool faxWarnings = false);

    /// Forgets; before calls whose complaints are wanted.
    void clear();
    bool empty() const { return first_.empty(); }
    /// ": " and the complaint, or nothing.
    std::string reason() const { return first_.empty() ? "" : ": " + first_; }
    /// The failure's code: a limit where libtiff had no memory.
    Exit code(Exit otherwise) const { return exitByReason(systemError_, otherwise); }
    /// What the system had against it, as errno has it; 0 for nothing.
    int systemError() const { return systemError_; }

private:
    static int onError(TIFF*, void* self, const char*, const char* format, va_list arguments);
    static int onWarning(TIFF* file, void* self, const char* module, const char* format, va_list arguments);

    std::string first_;
    int systemError_ = 0;
    bool faxWarnings_ = false;
};

/// The pages of a file that is read.
class TiffPages {
public:
    /// `mode` and `faxWarnings` are those of LibtiffMessages::open. A file that cannot be opened has no pages.
    TiffPages(InputFile input, const char* mode, bool faxWarnings = false);

    /// Null: it could not be opened.
    TIFF* get() const { return file_.get(); }
    LibtiffMessages& messages() { return messages_; }
    const LibtiffMessages& messages() const { return messages_; }
    /// Makes a page, from 1, the current one; false when it cannot be read.
    bool goTo(unsigned number);

private:
    bool read(unsigned number) const;

    LibtiffMessages messages_;
    TiffHandle file_;
    unsigned current_ = 0;  ///< the page; 0: not known
};
