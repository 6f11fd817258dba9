#ifndef TILEPRESS_IMGERR_H
#define TILEPRESS_IMGERR_H

/// \file
/// Result codes of the class interface and the process-wide last-error cell.

#include "tilepress/api.h"

/// Result code of the class interface.
enum ImgErr : int32_t {
    ImgErrNone = 0,         ///< success
    ImgErrBadArgument = 3,  ///< an argument is out of range or of the wrong kind
    ImgErrDecode = 5,       ///< the compressed data are corrupt
    ImgErrCreate = 6        ///< no memory, no result image, or a wrong byte count
};

/// The last error of the process, of whatever image and thread raised it.
///
/// Safe from several threads, without a lock: a code read here is whatever was stored
/// last, by any of them.
class TILEPRESS_API CImgErr {
public:
    static ImgErr sm_errcode;     ///< the code stored last
    static ImgULong sm_errtotal;  ///< calls of set() since load, successes included

    /// The code stored last.
    static ImgErr get();
    /// Stores `code` and counts the call; `file` and `line` are not kept.
    static void set(ImgErr code, char* file, int line);
};

/// The one place that raises: every operation of the library reports through it.
inline ImgErr imgRaise(ImgErr code) {
    char file[] = "ImgErr";
    CImgErr::set(code, file, 28);
    return code;
}

#endif
