#include "tilepress/page.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

std::uint32_t TILEPRESS_CALL tp_version() { return TP_VERSION; }

const char* TILEPRESS_CALL tp_status_text(tp_status status) {
    switch (status) {
    case TP_OK: return "done";
    case TP_DAMAGED: return "done, but parts of the page could not be decoded";
    case TP_E_ARGUMENT: return "an argument is out of its range";
    case TP_E_MEMORY: return "memory ran out";
    case TP_E_LIMIT: return "a limit set by the caller would be passed";
    case TP_E_DAMAGED: return "ended at a damaged tile";
    case TP_E_CANCELLED: return "ended by the progress callback";
    case TP_E_TOO_LARGE: return "larger than the codec holds";
    default: return "unknown status";
    }
}

void* TILEPRESS_CALL tp_alloc(std::size_t size) { return std::malloc(std::max<std::size_t>(size, 1)); }
void TILEPRESS_CALL tp_free(void* block) { std::free(block); }
