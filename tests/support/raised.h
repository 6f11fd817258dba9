#pragma once

#include "tilepress/ImgErr.h"

namespace support {

/// How often a code has been recorded since this was made, the last one first put to a value no operation records.
class Raised {
public:
    static constexpr ImgErr kNothing = static_cast<ImgErr>(-1);

    Raised() {
        char file[] = "";
        CImgErr::set(kNothing, file, 0);
        start_ = CImgErr::sm_errtotal;
    }
    ImgULong times() const { return CImgErr::sm_errtotal - start_; }
    ImgErr last() const { return CImgErr::get(); }

private:
    ImgULong start_;
};

}  // namespace support
