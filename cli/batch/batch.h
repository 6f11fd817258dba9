#pragma once

// One command over many files and pages, by worker processes.

#include "batch/input_list.h"
#include "batch/job.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct BatchOptions {
    std::vector<std::string> inputs;  ///< none: a list on standard input
    ListFormat list = ListFormat::lines;
    unsigned jobs = 0;  ///< 0: as many as there are processors
    std::optional<double> pageSeconds;
    Shard shard;
    std::string folder;  ///< that outputs are put into, unless their names begin at the root
    std::string log;
    bool resume = false, quiet = false;
};

/// Runs the job. A page that fails, crashes its worker or takes too long is reported and costs no other. The result is
/// the worst of the exit codes; throws Failure for what ends all of it.
int runBatch(const BatchOptions& options, const BatchJob& job, std::uint64_t maxMemory);
