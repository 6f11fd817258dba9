#pragma once

#include "tilepress/ImgErr.h"

#include <ostream>

namespace support {

/// The codes that a call recorded: how many, and the last one.
struct Raised {
    static constexpr ImgErr kNothing = static_cast<ImgErr>(-1);  // a value that no operation records

    ImgULong times;
    ImgErr last;

    bool operator==(const Raised&) const = default;
};

inline const Raised kQuiet{0, Raised::kNothing};

inline std::ostream& operator<<(std::ostream& out, const Raised& raised) {
    return out << raised.times << " codes, the last " << static_cast<int>(raised.last);
}

template <class Call>
Raised raisedBy(Call call) {
    char file[] = "";
    CImgErr::set(Raised::kNothing, file, 0);
    const ImgULong before = CImgErr::sm_errtotal;
    call();
    return {CImgErr::sm_errtotal - before, CImgErr::get()};
}

}  // namespace support
