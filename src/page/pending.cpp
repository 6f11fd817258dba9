// What is still to come.

#include "tilepress/page.h"

tp_status TILEPRESS_CALL tp_page_prepare(tp_page* page, tp_options*) { return page ? TP_OK : TP_E_ARGUMENT; }
