#include "tilepress/ImgErr.h"

#include <atomic>

ImgErr CImgErr::sm_errcode = ImgErrNone;
ImgULong CImgErr::sm_errtotal = 0;

// The two are exported as plain data; atomic access keeps threads that raise at
// once from undefined behaviour, no more.

ImgErr CImgErr::get() { return std::atomic_ref<ImgErr>(sm_errcode).load(std::memory_order_relaxed); }

void CImgErr::set(ImgErr code, char*, int) {
    std::atomic_ref<ImgErr>(sm_errcode).store(code, std::memory_order_relaxed);
    // Kept: success counts too.
    std::atomic_ref<ImgULong>(sm_errtotal).fetch_add(1, std::memory_order_relaxed);
}
