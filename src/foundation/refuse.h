#pragma once

#include "tilepress/ImgErr.h"

namespace tilepress {

/// What an operation that was refused gives: null or false.
struct Refused {
    template <class T>
    operator T*() const {
        return nullptr;
    }
    operator bool() const { return false; }
};

/// Records why: `return refuse(code)`.
inline Refused refuse(ImgErr code) {
    imgRaise(code);
    return {};
}

}  // namespace tilepress
