#pragma once

#include <cstdint>
#include <string>

/// Bytes from a text such as 500M, 2G or 1048576. Throws Failure when it is none.
std::uint64_t parseBytes(const std::string& text);

/// From now on the process gets no more address space than this: what asks for more fails as when memory runs out,
/// wherever the size came from. Builds with sanitizers, which reserve terabytes, only remember the limit.
void limitMemory(std::uint64_t bytes);
