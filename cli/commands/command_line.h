#pragma once

// The commands' options, as CLI11 reads and explains them.

#include "base/failure.h"
#include "commands/convert.h"
#include "commands/info.h"
#include "commands/render.h"
#include "commands/repack.h"
#include "commands/verify.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

/// What ends every help text.
extern const char* const kExitCodes;

/// Adds an option whose text `parse` turns into a value.
template <class Value, class Parse>
CLI::Option* addParsed(CLI::App& app, const char* name, Value& value, Parse parse, const char* what) {
    const auto set = [&value, parse](const std::string& text) {
        try {
            value = parse(text);
        } catch (const Failure& failure) {
            throw CLI::ValidationError(failure.what());
        }
    };
    return app.add_option_function<std::string>(name, set, what);
}

/// Adds an option that is one of a few words.
template <class Value>
CLI::Option* addChoice(CLI::App& app, const char* name, Value& value,
                       std::initializer_list<std::pair<const char*, Value>> words, const char* what) {
    std::string list;
    for (const auto& [word, meaning] : words) list += (list.empty() ? "" : "|") + std::string(word);
    const auto parse = [words = std::vector(words), list](const std::string& text) {
        for (const auto& [word, meaning] : words)
            if (text == word) return meaning;
        throw Failure(Exit::failed, fmt::format("'{}' is none of {}", text, list));
    };
    return addParsed(app, name, value, parse, what)->type_name(list);
}

// Each adds a command. The options must live as long as it. With `inputs` it is the command of a batch: it takes any
// number of inputs, which go there.
void addInfo(CLI::App& app, InfoOptions& options);
void addRender(CLI::App& app, RenderOptions& options, std::vector<std::string>* inputs = nullptr);
void addConvert(CLI::App& app, ConvertOptions& options, std::vector<std::string>* inputs = nullptr);
void addVerify(CLI::App& app, VerifyOptions& options, std::vector<std::string>* inputs = nullptr);
/// encode and repack.
void addPacking(CLI::App& packing, const char* input, RepackOptions& options,
                std::vector<std::string>* inputs = nullptr);
