#pragma once

#include <functional>

/// Runs a command: its result, or, where it ends with a failure or without memory, a message on standard error and the
/// failure's code.
int guarded(const std::function<int()>& command);
