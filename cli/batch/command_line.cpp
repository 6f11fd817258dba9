#include "batch/command_line.h"

#include "commands/command_line.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

constexpr const char* kFooter =
    "A name of -o that ends with / is a folder. Each page's result is a line of JSON, on standard output or in --log; "
    "a page that fails, crashes its worker or passes a limit costs no other. --resume passes by pages whose outputs "
    "are "
    "there and whole. The exit code is the worst of all pages.\n";

/// What decides about the outputs: the options that were given, and not the inputs.
std::string describe(const CLI::App& job) {
    std::string text = job.get_name();
    for (const CLI::Option* const option : job.get_options()) {
        constexpr std::string_view kOthers[] = {"INPUT", "--quiet", "--stats", "--force"};
        if (option->count() == 0 || std::ranges::find(kOthers, option->get_name()) != std::end(kOthers)) continue;
        text += ' ' + option->get_name();
        for (const std::string& value : option->results()) text += ' ' + value;
    }
    return text;
}

/// A copy of the options for a page of one input, without progress lines.
template <class Options>
Options forOne(const Options& options, const std::string& input, const PageList& pages, const std::string& output) {
    Options one = options;
    one.input = input;
    one.pages = pages;
    one.output.path = output;
    return one;
}

}  // namespace

BatchCommand::BatchCommand(CLI::App& app)
    : batch_(*app.add_subcommand("batch", "Run render, convert, repack or verify over many files and pages")) {
    batch_.require_subcommand(1);
    batch_.fallthrough();
    addChoice<ListFormat>(batch_, "--list", options_.list,
                          {{"lines", ListFormat::lines}, {"null", ListFormat::nulls}, {"ndjson", ListFormat::ndjson}},
                          "How inputs on standard input are separated: by line ends (the default), by NUL bytes, or "
                          "lines of JSON with \"file\" and, if wanted, \"page\" and \"output\"");
    batch_.add_option("-j,--jobs", options_.jobs, "Worker processes; as many as processors otherwise")
        ->check(CLI::Range(1, 1024))
        ->type_name("N");
    batch_.add_option("--page-timeout", options_.pageSeconds, "Longest that a page may take, in seconds")
        ->check(CLI::Range(0.001, 1e7))
        ->type_name("SECONDS");
    addParsed(batch_, "--shard", options_.shard, parseShard, "Only share K of N of the inputs, chosen by their names")
        ->type_name("K/N");
    batch_.add_option("--folder", options_.folder, "The folder that outputs go into")->type_name("DIR");
    batch_.add_option("--log", options_.log, "The file of results; standard output otherwise")->type_name("FILE");
    batch_.add_flag("--resume", options_.resume, "Go on after an earlier run with the same --log");
    batch_.add_flag("-q,--quiet", options_.quiet, "No progress and no sum");
    batch_.footer(kFooter + std::string(kExitCodes));
    addRender(batch_, render_, &options_.inputs);
    addConvert(batch_, convert_, &options_.inputs);
    addVerify(batch_, verify_, &options_.inputs);
    addPacking(*batch_.add_subcommand("repack", "Lay the pages of files out anew, in tiles or strips of Group 4"), "",
               repack_, &options_.inputs);
}

BatchJob BatchCommand::chosenJob() {
    const CLI::App& chosen = *batch_.get_subcommands().front();
    BatchJob job;
    job.name = chosen.get_name();
    job.description = describe(chosen);
    if (job.name == "verify") {
        verify_.json = true;
        job.pages = verify_.pages;
        job.run = [this](const std::string& input, const PageList& pages, const std::string&) {
            VerifyOptions one = verify_;
            one.files = {input};
            one.pages = pages;
            return runVerify(one);
        };
        return job;
    }
    const auto setJob = [&](const auto& options, auto command) {
        if (options.output.path.empty() && options_.folder.empty())
            throw Failure(Exit::failed, "where do the outputs go? --folder DIR or -o NAME says it");
        job.output = options.output.path;
        if constexpr (requires { options.format; })
            job.usualName = "{name}-{page}." + (options.format.empty() ? "png" : options.format);
        job.pages = chosen.count("--page") > 0 ? options.pages : PageList("all");
        job.run = [&options, command](const std::string& input, const PageList& pages, const std::string& output) {
            return command(forOne(options, input, pages, output));
        };
    };
    if (job.name == "render") setJob(render_, runRender);
    else if (job.name == "convert") setJob(convert_, runConvert);
    else setJob(repack_, runRepack);
    if (job.name == "repack") {
        job.joinsPages = true;
        job.usualName = "{name}.tif";
    }
    return job;
}

int BatchCommand::run(std::uint64_t maxMemory) {
    options_.quiet = options_.quiet || render_.quiet || convert_.quiet || repack_.quiet;
    return runBatch(options_, chosenJob(), maxMemory);
}
