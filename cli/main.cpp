// The command-line tool: options, and what a command ends with.

#include "base/console.h"
#include "base/failure.h"
#include "base/guarded.h"
#include "base/memory_limit.h"
#include "base/nearest_word.h"
#include "commands/convert.h"
#include "commands/info.h"
#include "commands/render.h"
#include "commands/repack.h"
#include "commands/verify.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <initializer_list>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr const char* kFooter =
    "Exit codes: 0 good; 1 usage or file error; 2 damaged Group 4 data (what could be decoded is written);\n"
    "3 not a bilevel Group 4 TIFF, or not supported; 4 a limit of size or memory. Of several files the most serious: "
    "2, 1, "
    "4, 3.";

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

void addPage(CLI::App& app, unsigned& page, const char* what) {
    const auto parse = [](const std::string& text) {
        unsigned number = 0;
        const char* const end = text.data() + text.size();
        const auto [last, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || last != end || number == 0)
            throw Failure(Exit::failed, fmt::format("'{}' is no page: pages are counted from 1", text));
        return number;
    };
    addParsed(app, "--page", page, parse, what)->type_name("N");
}

void addOutput(CLI::App& app, OutputOptions& output, const char* what) {
    app.add_option("-o,--output", output.path, what)->required()->type_name("OUT");
    app.add_flag("-f,--force", output.force, "Replace the input, should the output be the same file");
    app.add_flag("-n,--no-clobber", output.keepExisting, "Leave an output that exists already, and do nothing");
}

void addInfo(CLI::App& app, InfoOptions& options) {
    CLI::App& info = *app.add_subcommand("info", "Tell what TIFF files hold; decodes nothing");
    info.add_option("FILE", options.files, "TIFF files; - is standard input")->required()->type_name("");
    addPage(info, options.page, "This page only, from 1");
    info.add_flag("--json", options.json, "Print JSON: a list of files, each with a list of pages");
    info.footer(kFooter);
}

/// The options that render and convert share.
template <class Options>
void addCommon(CLI::App& app, Options& options) {
    app.add_option("IN", options.input, "A Group 4 TIFF, PNG, or raw PBM, PGM or PPM file; - is standard input")
        ->required()
        ->type_name("");
    addOutput(app, options.output, "The picture: .png, .pbm, .pgm, .ppm, .pnm or .tif; - is standard output");
    app.add_option("--format", options.format, "The picture's format, whatever the ending of its name; PNG for -")
        ->type_name("FORMAT");
    addPage(app, options.page, "The page of a TIFF file, from 1");
    app.add_option("--max-pixels", options.maxPixels, "Most pixels of the picture")
        ->capture_default_str()
        ->type_name("N");
    app.add_flag("!--no-orient", options.show.orient,
                 "Leave pixels as they are stored, whatever the orientation tag says");
    app.add_flag("--square", options.show.square,
                 "Make pixels square: where resolutions differ, the side of the lower one grows");
    app.add_flag("-q,--quiet", options.quiet, "No progress line");
    app.add_flag("--stats", options.stats, "Print time, peak memory and sizes on standard error");
}

void addRender(CLI::App& app, RenderOptions& options) {
    CLI::App& render = *app.add_subcommand("render", "Draw a page or picture into a picture file");
    addCommon(render, options);
    addParsed(render, "--rect", options.rect, parseRect, "Only this part of the page as it is shown, in pixels")
        ->type_name("X,Y,W,H");
    CLI::Option* const scale =
        addParsed(render, "--scale", options.factor, parseFactor, "Factor, such as 0.1, 1/10 or 10%")->type_name("F");
    CLI::Option* const size =
        addParsed(render, "--size", options.size, parseSize, "Exactly this size")->type_name("WxH");
    addParsed(render, "--fit", options.fit, parseSize, "The largest size of the same shape within this one")
        ->type_name("WxH")
        ->excludes(scale)
        ->excludes(size);
    size->excludes(scale);
    addChoice<Mode>(render, "--mode", options.mode, {{"grey", Mode::grey}, {"ink", Mode::ink}, {"copy", Mode::copy}},
                    "How to reduce black and white: to greys (the default), to black and white without losing "
                    "foreground, or not at all");
    addChoice<ImgMirT>(render, "--mirror", options.mirror, {{"x", ImgMirX}, {"y", ImgMirY}},
                       "x: top and bottom change places; y: left and right");
    render.add_option("--rotate", options.angle, "Turn counter-clockwise; the corners that leave the picture are cut")
        ->type_name("DEG")
        ->check(CLI::Range(-1e6, 1e6));
    addChoice<Background>(render, "--background", options.background,
                          {{"auto", Background::automatic}, {"white", Background::white}, {"black", Background::black}},
                          "Which colour is the page's ground, the other being foreground; auto (the default) counts "
                          "pixels. Corners that a turn uncovers are white, or black with black");
    addChoice<bool>(render, "--on-error", options.salvage, {{"fail", false}, {"salvage", true}},
                    "Damaged data: end the picture there (the default), or decode every tile on its own and leave "
                    "damaged ones blank from the bad row on");
    render.add_option("--max-input-pixels", options.maxInputPixels, "Most pixels of the page")
        ->capture_default_str()
        ->type_name("N");
    render.footer("The page is set upright; the part is cut, scaled, mirrored and turned, in this order.\n" +
                  std::string(kFooter));
}

void addConvert(CLI::App& app, ConvertOptions& options) {
    CLI::App& convert = *app.add_subcommand("convert", "Convert a page or picture to another kind of pixel");
    addCommon(convert, options);
    addChoice<Pixels>(convert, "--to", options.to,
                      {{"bilevel", Pixels::bilevel}, {"palette", Pixels::palette}, {"rgb", Pixels::rgb}},
                      "The kind: black and white by error diffusion, palette, or colour")
        ->required();
    convert.footer(kFooter);
}

/// encode and repack.
void addPacking(CLI::App& packing, const char* input, RepackOptions& options) {
    packing.add_option("IN", options.input, input)->required()->type_name("");
    addOutput(packing, options.output, "The TIFF file; - is standard output");
    CLI::Option* const tile =
        packing.add_option("--tile", options.layout.tile, "Square tiles of this side, a multiple of 16; 512 otherwise")
            ->type_name("N")
            ->check([](const std::string& text) {
                const unsigned long side = std::strtoul(text.c_str(), nullptr, 10);
                return side > 0 && side % 16 == 0 && side <= 65536
                           ? ""
                           : "the side of a tile is a multiple of 16, at most 65536";
            });
    CLI::Option* const rows = packing.add_option("--strip-rows", options.layout.stripRows, "Strips of so many rows")
                                  ->type_name("N")
                                  ->check(CLI::PositiveNumber)
                                  ->excludes(tile);
    packing.add_flag("--single-strip", options.layout.singleStrip, "One strip a page")->excludes(tile)->excludes(rows);
    packing.add_flag("--check,!--no-check", options.check,
                     "Decode the result and compare every row (the default), or do not");
    packing.add_option("--max-input-pixels", options.maxInputPixels, "Most pixels of a page")
        ->capture_default_str()
        ->type_name("N");
    packing.add_flag("-q,--quiet", options.quiet, "No progress line");
    packing.footer(kFooter);
}

void addVerify(CLI::App& app, VerifyOptions& options) {
    CLI::App& verify = *app.add_subcommand("verify", "Decode every row of every page and name what is damaged");
    verify.add_option("FILE", options.files, "Group 4 TIFF files; - is standard input")->required()->type_name("");
    verify.add_flag("--json", options.json, "Print JSON: a list of files, each with a list of pages");
    verify.add_flag("--reference", options.reference, "Compare every pixel with libtiff's decode too");
    verify.add_option("--max-input-pixels", options.maxInputPixels, "Most pixels of a page")
        ->capture_default_str()
        ->type_name("N");
    verify.footer(kFooter);
}

/// The word where a command is expected.
std::string commandWord(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
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
    printText(command.empty() ? app.help() : app.get_subcommand(command)->help());
    return static_cast<int>(Exit::good);
}

int run(int argc, char** argv) {
    CLI::App app("Reads bilevel Group 4 TIFF pages without expanding them.", "tilepress");
    app.set_version_flag("-V,--version", TILEPRESS_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    app.footer(kFooter);
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
               "A bilevel TIFF file; - is standard input", repack);
    std::string helpFor;
    app.add_subcommand("help", "Print this text, or that of a command")->add_option("COMMAND", helpFor)->type_name("");
    if (complainOfCommand(app, commandWord(argc, argv))) return static_cast<int>(Exit::failed);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return printParseResult(app, error);
    }
    return guarded([&] {
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
