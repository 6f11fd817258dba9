#pragma once

// The inputs of a batch, as they come.

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

/// One input, and what a list can say about it.
struct BatchInput {
    std::string path;
    std::string pages;   ///< a page list; empty: as the command line says
    std::string output;  ///< a pattern; empty: likewise
};

/// How inputs stand in a list.
enum class ListFormat { lines, nulls, ndjson };

/// Splits a list into inputs while it arrives. Empty lines are passed over. Throws Failure for what is no input.
class ListParser {
public:
    explicit ListParser(ListFormat format) : format_(format) {}

    void add(const char* bytes, std::size_t count);
    /// The list has ended; its last input needs no end of line.
    void end();
    std::optional<BatchInput> next();
    std::size_t waiting() const { return ready_.size(); }

private:
    void addItem(std::string item);

    ListFormat format_;
    std::string partial_;
    std::deque<BatchInput> ready_;
    std::uint64_t items_ = 0;
};

/// Which inputs are ours when several runs share a list: number K of N, chosen by a hash of the path that never
/// changes.
struct Shard {
    std::uint32_t number = 1, of = 1;

    bool has(const std::string& path) const;
};
/// K/N. Throws Failure.
Shard parseShard(const std::string& text);
