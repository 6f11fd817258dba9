#pragma once

// The batch command's options.

#include "batch/batch.h"
#include "commands/convert.h"
#include "commands/render.h"
#include "commands/repack.h"
#include "commands/verify.h"

#include <CLI/CLI.hpp>

/// `tilepress batch` with its commands; lives as long as the application.
class BatchCommand {
public:
    explicit BatchCommand(CLI::App& app);
    /// Runs the command that was chosen. The result is the exit code; throws Failure.
    int run(std::uint64_t maxMemory);

private:
    BatchJob chosenJob();

    CLI::App& batch_;
    BatchOptions options_;
    RenderOptions render_;
    ConvertOptions convert_;
    RepackOptions repack_;
    VerifyOptions verify_;
};
