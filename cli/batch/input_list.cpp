#include "batch/input_list.h"

#include "base/failure.h"
#include "base/stable_hash.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <utility>

namespace {

// Longer than any path that a system takes, with room for the rest of an NDJSON line.
constexpr std::size_t kMostItemBytes = 64 << 10;

using nlohmann::json;

/// A text, or, for pages, a number.
std::string textOf(const json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return {};
    if (found->is_number_unsigned()) return std::to_string(found->get<std::uint64_t>());
    return found->is_string() ? found->get<std::string>() : throw std::string("not a text");
}

BatchInput parsedJson(const std::string& line, std::uint64_t number) {
    const json object = json::parse(line, nullptr, false);
    try {
        if (!object.is_object()) throw std::string("no JSON object");
        BatchInput input{textOf(object, "file"), textOf(object, "page"), textOf(object, "output")};
        if (input.path.empty()) throw std::string("without \"file\"");
        if ((input.path + input.pages + input.output).find('\0') != std::string::npos)
            throw std::string("not for files");
        return input;
    } catch (const std::string& why) {
        throw Failure(Exit::failed, fmt::format("the list of inputs: line {} is {}", number, why));
    }
}

}  // namespace

void ListParser::add(const char* bytes, std::size_t count) {
    const char separator = format_ == ListFormat::nulls ? '\0' : '\n';
    const char* const end = bytes + count;
    while (bytes < end) {
        const char* const stop = std::find(bytes, end, separator);
        partial_.append(bytes, stop);
        if (partial_.size() > kMostItemBytes)
            throw Failure(Exit::failed, fmt::format("the list of inputs: item {} is too long; is it separated by {}?",
                                                    items_ + 1, separator == '\0' ? "NUL" : "line ends"));
        if (stop == end) return;
        addItem(std::exchange(partial_, {}));
        bytes = stop + 1;
    }
}

void ListParser::end() { addItem(std::exchange(partial_, {})); }

void ListParser::addItem(std::string item) {
    ++items_;
    if (item.empty()) return;
    if (format_ == ListFormat::ndjson) return ready_.push_back(parsedJson(item, items_));
    if (item.find('\0') != std::string::npos)
        throw Failure(Exit::failed, "the list of inputs has NUL bytes: --list null says that they separate its items");
    ready_.push_back({std::move(item), {}, {}});
}

std::optional<BatchInput> ListParser::next() {
    if (ready_.empty()) return std::nullopt;
    BatchInput input = std::move(ready_.front());
    ready_.pop_front();
    return input;
}

// The high bits: the low ones of this hash depend on the low bits of the bytes alone.
bool Shard::has(const std::string& path) const { return (stableHash(path) >> 32) % of == number - 1; }

Shard parseShard(const std::string& text) {
    Shard shard;
    const char* const end = text.data() + text.size();
    const auto number = std::from_chars(text.data(), end, shard.number);
    const auto of = number.ptr < end ? std::from_chars(number.ptr + 1, end, shard.of) : number;
    if (number.ec != std::errc() || of.ec != std::errc() || *number.ptr != '/' || of.ptr != end || shard.number == 0 ||
        shard.number > shard.of)
        throw Failure(Exit::failed, fmt::format("'{}' is no share such as 3/10", text));
    return shard;
}
