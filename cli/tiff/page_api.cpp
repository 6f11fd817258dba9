#include "tiff/page_api.h"

namespace {

Exit exitOf(tp_status status) {
    switch (status) {
    case TP_E_MEMORY:
    case TP_E_LIMIT:
    case TP_E_TOO_LARGE: return Exit::tooLarge;
    case TP_E_DAMAGED: return Exit::damaged;
    default: return Exit::failed;
    }
}

}  // namespace

void requireDone(tp_status status, const std::string& what) {
    if (status < 0) throw Failure(exitOf(status), what + ": " + tp_status_text(status));
}
