// What the walk is still to bring.

#include "tilepress/page.h"

#include <cstddef>
#include <cstdint>

tp_status TILEPRESS_CALL tp_page_prepare(tp_page* page, tp_options*) { return page ? TP_OK : TP_E_ARGUMENT; }
tp_status TILEPRESS_CALL tp_page_verify(const tp_page*, tp_options*) { return TP_E_ARGUMENT; }
tp_status TILEPRESS_CALL tp_page_render(const tp_page*, const tp_view*, std::size_t, tp_options*) {
    return TP_E_ARGUMENT;
}
tp_status TILEPRESS_CALL tp_reader_open(tp_page*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                        tp_options*, tp_reader**) {
    return TP_E_ARGUMENT;
}
tp_status TILEPRESS_CALL tp_reader_next(tp_reader*, const std::uint32_t**, std::uint32_t*) { return TP_E_ARGUMENT; }
void TILEPRESS_CALL tp_reader_close(tp_reader*) {}
