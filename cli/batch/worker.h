#pragma once

#include "batch/channel.h"
#include "batch/job.h"

#include <sys/types.h>

#include <cstdint>

/// What a worker process does: tasks from the channel, one after another, until the other end closes. What commands
/// print is caught and sent back. Never returns.
[[noreturn]] void runWorker(const Channel& channel, const BatchJob& job, std::uint64_t maxMemory, pid_t batch);

/// Size and checksum of a file, as text; empty when it cannot be read.
std::string fingerprint(const std::string& path);
