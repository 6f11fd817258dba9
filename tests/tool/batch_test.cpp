// One command over many files: what a batch leaves, says and survives.

#include "support.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <thread>

namespace {

using nlohmann::json;
namespace fs = std::filesystem;

std::vector<json> lines(const std::string& text) {
    std::vector<json> all;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) all.push_back(json::parse(line));
    return all;
}

/// Every file under a folder, with its bytes.
std::map<std::string, std::string> filesIn(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) files[entry.path().lexically_relative(folder)] = readFile(entry.path());
    return files;
}

/// A damaged page, a file that is no picture, and one that is not there.
void addBadInputs(const std::string& folder) {
    std::string file = readFile(sample("text.tif"));
    writeFile(folder + "/damaged.tif", file.replace(12000, 8, 8, '\0'));
    writeFile(folder + "/nonsense.tif", "no picture");
}

/// `count` small pages, each with pixels of its own.
void addTinyPages(const std::string& folder, int count) {
    fs::create_directories(folder);
    for (int i = 0; i < count; ++i) {
        const std::string name = folder + "/page" + std::to_string(i);
        writeFile(name + ".pbm", "P4\n16 2\n" + std::string{char(i), char(i >> 3), char(~i), '\x55'});
    }
}

TEST(Pages, AreChosenByListsAndNamedApart) {
    const Folder folder;
    const struct {
        const char* pages;
        const char* output;
        int code;
        std::vector<std::string> names;
    } cases[] = {{"all", "a-%02d.png", 0, {"a-01.png", "a-02.png", "a-03.png", "a-04.png"}},
                 {"3,1-2,2", "{name}.{page}.png", 0, {"pages.1.png", "pages.2.png", "pages.3.png"}},
                 {"last", "{ext}{name}%%.png", 0, {"tifpages%.png"}},
                 {"3-last", "x.png", 1, {}},
                 {"4-5", "%d.png", 1, {}},
                 {"0", "%d.png", 1, {}},
                 {"2-1", "%d.png", 1, {}},
                 {"1,,2", "%d.png", 1, {}}};
    for (const auto& c : cases) {
        const std::string out = folder / "out";
        fs::create_directories(out);
        EXPECT_EQ(
            tool("render " + sample("pages.tif") + " --page " + c.pages + " -o '" + out + "/" + c.output + "'").code,
            c.code)
            << c.pages;
        std::vector<std::string> names;
        for (const auto& [name, bytes] : filesIn(out)) names.push_back(name);
        EXPECT_EQ(names, c.names) << c.pages;
        fs::remove_all(out);
    }
    const std::string repacked = folder / "repacked.tif";
    ASSERT_EQ(tool("repack --page last,1 " + sample("pages.tif") + " -o " + repacked).code, 0);
    EXPECT_EQ(readTiff(repacked, 1), readTiff(sample("pages.tif"), 4));
    EXPECT_EQ(readTiff(repacked, 2), readTiff(sample("pages.tif"), 1));
}

TEST(Batch, MakesWhatTheSingleCommandsMakeAndReportsEachPageOnce) {
    const Folder folder;
    const std::string inputs = sample("text.tif") + " " + sample("pages.tif");
    ASSERT_EQ(tool("batch render --scale 0.1 --format tif --folder " + (folder / "one") + " -j1 " + inputs).code, 0);
    const Outcome run = tool("batch render --scale 0.1 --format tif --folder " + (folder / "two") + " -j3 " + inputs);
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(filesIn(folder / "one"), filesIn(folder / "two"));
    ASSERT_EQ(lines(run.output).size(), 5u);
    for (const json& line : lines(run.output)) {
        const std::string single = folder / "single.tif", input = line["file"];
        ASSERT_EQ(tool("render --scale 0.1 --page " + line["page"].dump() + " " + input + " -o " + single).code, 0);
        EXPECT_EQ(readFile(single), readFile(line["output"])) << line;
        EXPECT_EQ(line["exit"], 0);
        EXPECT_EQ(fs::path(line["output"].get<std::string>()).extension(), ".tif");
    }
    EXPECT_EQ(tool("batch repack --folder " + (folder / "repacked") + " " + inputs).code, 0);
    EXPECT_EQ(readTiff(folder / "repacked/pages.tif", 3), readTiff(sample("pages.tif"), 3));
}

TEST(Batch, NamesWhatFailedAndDoesTheRest) {
    const Folder folder;
    addBadInputs(folder / "");
    const std::string bad = (folder / "damaged.tif") + " " + (folder / "nonsense.tif") + " " + (folder / "missing.tif");
    const struct {
        std::string job;
        int code;
        std::map<std::string, int> exits;  ///< by the input's name
    } cases[] = {
        {"verify " + sample("text.tif") + " " + bad, 2, {{"text", 0}, {"damaged", 2}, {"nonsense", 3}, {"missing", 1}}},
        {"verify " + sample("text.tif") + " " + (folder / "nonsense.tif"), 3, {{"text", 0}, {"nonsense", 3}}},
        {"render -o {dir}/{name}.png --scale 0.1 " + bad, 2, {{"damaged", 2}, {"nonsense", 3}, {"missing", 1}}},
        {"render -o " + (folder / "x.png") + " " + sample("pages.tif"), 1, {{"pages", 1}}},
        {"render -o " + (folder / "{name}%d.png") + " " + sample("text.tif") + " " + sample("../samples/text.tif"),
         1,
         {{"text", 1}}},
        {"render --page 9 -o " + (folder / "%d.png") + " " + sample("text.tif"), 1, {{"text", 1}}},
        {"render --rect 0,0,9999,1 -o " + (folder / "%d.png") + " " + sample("text.tif"), 1, {{"text", 1}}}};
    for (const auto& c : cases) {
        const Outcome run = tool("batch " + c.job);
        EXPECT_EQ(run.code, c.code) << c.job << run.errors;
        std::map<std::string, int> exits;
        for (const json& line : lines(run.output)) {
            int& code = exits[fs::path(line["file"].get<std::string>()).stem()];
            code = std::max(code, line["exit"].get<int>());
            if (line["exit"] != 0 && c.job.find("verify") == std::string::npos) {
                EXPECT_TRUE(line.contains("messages")) << line;
            }
        }
        EXPECT_EQ(exits, c.exits) << c.job;
    }
}

TEST(Batch, ReadsListsOfEveryKind) {
    const Folder folder;
    const std::string odd = folder / "two words\nand\xFF.tif", plain = folder / "two words.tif";
    fs::copy(sample("pages.tif"), odd);
    fs::copy(sample("pages.tif"), plain);
    const struct {
        const char* format;
        std::string list;
        std::size_t pages;
    } cases[] = {
        {"lines", "\n" + plain + "\n\n" + sample("text.tif"), 5},
        {"null", odd + '\0' + plain, 8},
        {"ndjson",
         R"({"file":")" + plain + R"(","page":"2-3"})" + "\n" + R"({"file":")" + sample("text.tif") + R"(","page":1})",
         3}};
    for (const auto& c : cases) {
        writeFile(folder / "list", c.list);
        const Outcome run = tool("batch verify --list " + std::string(c.format) + " <'" + (folder / "list") + "'");
        EXPECT_EQ(run.code, 0) << c.format << run.errors;
        EXPECT_EQ(lines(run.output).size(), c.pages) << c.format;
    }
    for (const char* bad : {"{\"page\":1}", "[1]", "{", "{\"file\":\"a\\u0000b\"}", "{\"file\":3}"}) {
        writeFile(folder / "list", bad);
        EXPECT_EQ(tool("batch verify --list ndjson <'" + (folder / "list") + "'").code, 1) << bad;
    }
}

TEST(Batch, SharesAreDisjointAndTogetherWhole) {
    const Folder folder;
    addTinyPages(folder / "in", 40);
    std::vector<std::string> all;
    for (const char* shard : {"1/3", "2/3", "3/3"}) {
        const Outcome run = tool("batch convert --to rgb --shard " + std::string(shard) + " -o '" +
                                 (folder / "out/{name}.ppm") + "' " + (folder / "in") + "/*");
        ASSERT_EQ(run.code, 0) << run.errors;
        const auto part = lines(run.output);
        EXPECT_GT(part.size(), 3u) << shard;
        for (const json& line : part) all.push_back(line["file"]);
    }
    std::ranges::sort(all);
    EXPECT_EQ(all.size(), 40u);
    EXPECT_EQ(std::ranges::adjacent_find(all), all.end());
    EXPECT_EQ(tool("batch verify --shard 4/3 x").code, 1);
}

/// A batch in the background, its standard output and errors thrown away.
pid_t started(const std::vector<std::string>& arguments) {
    const pid_t process = fork();
    if (process != 0) return process;
    std::vector<char*> words{const_cast<char*>(TILEPRESS_TOOL)};
    for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    freopen("/dev/null", "w", stdout);
    freopen("/dev/null", "w", stderr);
    execv(TILEPRESS_TOOL, words.data());
    _exit(127);
}

int statusOf(pid_t process) {
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Every page of the samples turned by an angle takes a while.
constexpr const char* kSlow = "batch render --size 20000x20000 --rotate 33 --mode copy -j1 ";

TEST(Batch, EndsAPageThatTakesTooLong) {
    const Folder folder;
    const Outcome run =
        tool(kSlow + std::string("--page-timeout 0.05 --folder ") + (folder / "out") + " " + sample("pages.tif"));
    EXPECT_EQ(run.code, 4) << run.errors;
    for (const json& line : lines(run.output)) EXPECT_EQ(line["status"], "limit") << line;
    EXPECT_EQ(lines(run.output).size(), 4u);
    EXPECT_TRUE(filesIn(folder / "").contains("out/pages-1.png") == false);
}

TEST(Batch, ReplacesAWorkerThatDies) {
    const Folder folder;
    const std::string log = folder / "log";
    const pid_t batch = started({"batch", "render", "--size", "6000x6000", "--rotate", "33", "-j1", "--log", log,
                                 "--folder", folder / "out", sample("pages.tif")});
    pid_t worker = 0;
    for (int i = 0; i < 500 && worker == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::ifstream("/proc/" + std::to_string(batch) + "/task/" + std::to_string(batch) + "/children") >> worker;
    }
    // The page's file is there as soon as it is worked on.
    while (worker != 0 && !fs::exists(folder / "out") && kill(batch, 0) == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_GT(worker, 0);
    kill(worker, SIGSEGV);
    EXPECT_EQ(statusOf(batch), 1);
    const auto results = lines(readFile(log));
    ASSERT_EQ(results.size(), 4u);
    EXPECT_EQ(std::ranges::count(results, 0, [](const json& line) { return line["exit"].get<int>(); }), 3);
    EXPECT_EQ(filesIn(folder / "out").size(), 3u);
}

TEST(Batch, LimitsTheMemoryOfWorkers) {
    const Outcome run = tool("--max-memory 30M batch render --size 16000x16000 --mode copy --format png -o /dev/null " +
                             sample("text.tif"));
#ifndef __SANITIZE_ADDRESS__
    EXPECT_EQ(run.code, 4) << run.errors;
#endif
    EXPECT_EQ(lines(run.output).size(), 1u);
}

TEST(Batch, KeepsFewFilesOpen) {
    const Folder folder;
    addTinyPages(folder / "in", 300);
    const Outcome run = tool("true; ulimit -n 24; '" TILEPRESS_TOOL "' batch convert --to rgb -j3 --folder " +
                             (folder / "out") + " -o '{name}.ppm' " + (folder / "in") + "/*");
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(filesIn(folder / "out").size(), 300u);
}

TEST(Resume, RepeatsWhatIsNotWhole) {
    const Folder folder;
    addTinyPages(folder / "in", 6);
    const std::string log = folder / "log", out = folder / "out/";
    const std::string command =
        "batch convert --to rgb -o '" + out + "{name}.ppm' --log " + log + " " + (folder / "in") + "/*";
    ASSERT_EQ(tool(command).code, 0);
    const auto whole = filesIn(out);
    writeFile(out + "page1.ppm", "other");
    fs::remove(out + "page2.ppm");
    writeFile(log, readFile(log) + "{\"file\":\"half a li");
    writeFile(folder / "in/page3.pbm", "P4\n8 1\n\x0F");
    const Outcome run = tool(command + " --resume --stats");
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_NE(run.errors.find("3 done, 0 failed, 3 there already"), std::string::npos) << run.errors;
    EXPECT_EQ(lines(readFile(log)).size(), 6u);
    auto now = filesIn(out);
    EXPECT_NE(now["page3.ppm"], whole.at("page3.ppm"));
    now["page3.ppm"] = whole.at("page3.ppm");
    EXPECT_EQ(now, whole);
    // Other options, other outputs.
    EXPECT_NE(tool("batch convert --to bilevel -o '" + out + "{name}.ppm' --log " + log + " --resume " +
                   (folder / "in") + "/*")
                  .errors.find("6 done"),
              std::string::npos);
    EXPECT_EQ(tool("batch verify --resume " + (folder / "in") + "/*").code, 1);
}

TEST(Resume, EndsWithTheSameFilesAfter200KillsAtRandomMoments) {
    // In memory, where there is no disk to wait for.
    const char* const usual = getenv("TMPDIR");
    if (fs::exists("/dev/shm")) setenv("TMPDIR", "/dev/shm", 1);
    const Folder folder;
    if (usual) setenv("TMPDIR", usual, 1);
    else unsetenv("TMPDIR");
    addTinyPages(folder / "in", 60);
    const auto arguments = [&](const std::string& place) {
        std::vector<std::string> words{
            "batch",    "convert",      "--to", "rgb",        "-j2",     "--log", folder / (place + ".log"),
            "--folder", folder / place, "-o",   "{name}.ppm", "--resume"};
        for (const auto& entry : fs::directory_iterator(folder / "in")) words.push_back(entry.path());
        return words;
    };
    const auto begun = std::chrono::steady_clock::now();
    ASSERT_EQ(statusOf(started(arguments("whole"))), 0);
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begun);
    const auto wanted = filesIn(folder / "whole");
    ASSERT_EQ(wanted.size(), 60u);
    std::mt19937 random(2);
    for (int kills = 0, runs = 1; kills < 200; ++runs) {
        const pid_t batch = started(arguments("killed"));
        std::this_thread::sleep_for(whole * static_cast<int>(random() % 1000) / 1000);
        kill(batch, SIGKILL);
        const bool ended = statusOf(batch) == 0;
        kills += !ended;
        if (!ended && runs % 8 != 0) continue;
        if (!ended) {
            ASSERT_EQ(statusOf(started(arguments("killed"))), 0);
        }
        ASSERT_EQ(filesIn(folder / "killed"), wanted) << "after " << kills << " kills";
        ASSERT_EQ(lines(readFile(folder / "killed.log")).size(), 60u);
        fs::remove_all(folder / "killed");
    }
}

}  // namespace
