// The command-line tool: which command it is, and what it ends with.

#include "base/console.h"
#include "base/guarded.h"
#include "base/memory_limit.h"
#include "base/nearest_word.h"
#include "batch/command_line.h"
#include "commands/command_line.h"

#include <algorithm>
#include <sstream>

namespace {

/// The word where a command is expected.
std::string commandWord(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        std::string word = argv[i];
        if (word == "--max-memory") ++i;
        else if (word.empty() || word[0] != '-') return word;
    }
    return "";
}

/// Says which command may have been meant; false for one that is known.
bool complainOfCommand(const CLI::App& app, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    if (word.empty() || std::ranges::find(names, word) != names.end()) return false;
    const std::string nearest = nearestWord(word, names);
    complain(fmt::format("'{}' is no command{}; tilepress --help lists them", word,
                         nearest.empty() ? "" : fmt::format(", did you mean '{}'?", nearest)));
    return true;
}

/// Help, the version, or what is wrong with the command line. The result is the exit code.
int printParseResult(const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream out, messages;
    const bool good = app.exit(error, out, messages) == 0;
    std::string text = messages.str();
    if (!text.empty() && text.back() == '\n') text.pop_back();
    if (!text.empty()) remark(text);
    return guarded([&] {
        printText(out.str());
        return static_cast<int>(good ? Exit::good : Exit::failed);
    });
}

int runHelp(const CLI::App& app, const std::string& command) {
    if (complainOfCommand(app, command)) return static_cast<int>(Exit::failed);
    // The program's own help() would be that of the command that was given, which is this one.
    printText(command.empty() ? app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal)
                              : app.get_subcommand(command)->help(app.get_name()));
    return static_cast<int>(Exit::good);
}

/// As long as the commands are many: what they are called, and which one it is.
int run(int argc, char** argv) {
    CLI::App app("Reads bilevel Group 4 TIFF pages without expanding them.", "tilepress");
    app.set_version_flag("-V,--version", TILEPRESS_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    app.footer(kExitCodes);
    InfoOptions info;
    RenderOptions render;
    ConvertOptions convert;
    VerifyOptions verify;
    RepackOptions encode, repack;
    std::uint64_t maxMemory = std::uint64_t{2} << 30;
    addParsed(app, "--max-memory", maxMemory, parseBytes, "Most memory, such as 500M or 8G; 2G otherwise")
        ->type_name("SIZE");
    addInfo(app, info);
    addRender(app, render);
    addConvert(app, convert);
    addVerify(app, verify);
    addPacking(*app.add_subcommand("encode", "Code a bilevel picture, or every page of a TIFF file, as Group 4 TIFF"),
               "A bilevel PBM, PNG or TIFF file; - is standard input", encode);
    addPacking(*app.add_subcommand("repack", "Lay the pages of a TIFF file out anew, in tiles or strips of Group 4"),
               "A black and white TIFF or PDF file; - is standard input", repack);
    std::string helpFor;
    app.add_subcommand("help", "Print this text, or that of a command")->add_option("COMMAND", helpFor)->type_name("");
    BatchCommand batch(app);
    if (complainOfCommand(app, commandWord(argc, argv))) return static_cast<int>(Exit::failed);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return printParseResult(app, error);
    }
    return guarded([&] {
        if (app.got_subcommand("batch")) return batch.run(maxMemory);
        limitMemory(maxMemory);
        if (app.got_subcommand("help")) return runHelp(app, helpFor);
        if (app.got_subcommand("info")) return runInfo(info);
        if (app.got_subcommand("verify")) return runVerify(verify);
        if (app.got_subcommand("encode")) return runEncode(encode);
        if (app.got_subcommand("repack")) return runRepack(repack);
        return app.got_subcommand("convert") ? runConvert(convert) : runRender(render);
    });
}

}  // namespace

int main(int argc, char** argv) {
    prepareConsole();
    return endConsole(run(argc, argv));
}
