#pragma once

#include "base/page_list.h"

#include <functional>
#include <optional>
#include <string>

/// What a batch does with each page or file, whatever the command.
struct BatchJob {
    std::string name;         ///< the command's
    std::string description;  ///< of everything that decides about the outputs; other descriptions, other outputs
    /// The pattern of the outputs' names; none: there are no outputs.
    std::optional<std::string> output;
    /// What name a folder alone stands for.
    std::string usualName;
    PageList pages{"all"};
    bool joinsPages = false;  ///< the pages of an input may share an output; if their name says so, they do
    /// Runs the command for pages of an input; prints and returns what the command itself does. May throw Failure.
    std::function<int(const std::string& input, const PageList& pages, const std::string& output)> run;
};
