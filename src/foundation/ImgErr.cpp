#include "tilepress/ImgErr.h"

ImgErr CImgErr::sm_errcode = ImgErrNone;
ImgULong CImgErr::sm_errtotal = 0;

// The two are exported as plain data; atomic access keeps threads that raise at
// once from undefined behaviour, no more.

ImgErr CImgErr::get() { return __atomic_load_n(&sm_errcode, __ATOMIC_RELAXED); }

void CImgErr::set(ImgErr code, char*, int) {
    __atomic_store_n(&sm_errcode, code, __ATOMIC_RELAXED);
    // Kept: success counts too.
    __atomic_fetch_add(&sm_errtotal, 1, __ATOMIC_RELAXED);
}
