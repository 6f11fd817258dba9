#pragma once

// The library's pages, held by objects, and its results as failures.

#include "base/failure.h"
#include "tilepress/page.h"

#include <memory>
#include <string>

struct PageEnder {
    void operator()(tp_page* page) const { tp_page_release(page); }
    void operator()(tp_reader* reader) const { tp_reader_close(reader); }
    void operator()(tp_encoder* encoder) const { tp_encoder_close(encoder); }
};
using PageHandle = std::unique_ptr<tp_page, PageEnder>;
using ReaderHandle = std::unique_ptr<tp_reader, PageEnder>;
using EncoderHandle = std::unique_ptr<tp_encoder, PageEnder>;

/// A record of the interface, cleared, that knows its size.
template <class Record>
Record sized() {
    Record record{};
    record.size = sizeof record;
    return record;
}

/// Throws Failure when a call was not finished; `what` begins the message.
void requireDone(tp_status status, const std::string& what);
