// A list of inputs gives the same inputs in whatever pieces it arrives, each with a path, and ends in a message at
// worst; so do lists of pages, which name pages that are there, and patterns.

#include "base/failure.h"
#include "base/output_pattern.h"
#include "base/page_list.h"
#include "batch/input_list.h"
#include "input.h"

#include <algorithm>

namespace {

/// All inputs, a line each; pieces of no bytes: all at once.
std::string parsed(ListFormat format, const std::vector<unsigned char>& list, std::size_t piece) {
    std::string all;
    try {
        ListParser parser(format);
        for (std::size_t at = 0; at < list.size(); at += piece)
            parser.add(reinterpret_cast<const char*>(list.data()) + at, std::min(piece, list.size() - at));
        parser.end();
        while (const std::optional<BatchInput> input = parser.next()) {
            PROMISE(!input->path.empty() && input->path.find('\0') == std::string::npos);
            all += input->path + '\0' + input->pages + '\0' + input->output + '\n';
        }
    } catch (const Failure& failure) {
        all += failure.what();
    }
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const auto format = static_cast<ListFormat>(input.below(3));
    const std::size_t piece = input.upTo(9);
    const std::vector<unsigned char> list = input.rest();
    PROMISE(parsed(format, list, piece) == parsed(format, list, list.size()));
    const std::string text(list.begin(), list.end());
    OutputPattern(text).expanded(text, 7);
    try {
        const std::vector<unsigned> pages = PageList(text).of(9);
        PROMISE(std::ranges::all_of(pages, [](unsigned page) { return page >= 1 && page <= 9; }) && pages.size() <= 9);
    } catch (const Failure&) {
    }
    try {
        const Shard shard = parseShard(text);
        PROMISE(shard.number >= 1 && shard.number <= shard.of);
    } catch (const Failure&) {
    }
    return 0;
}
