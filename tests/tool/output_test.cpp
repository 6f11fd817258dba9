// What becomes of outputs and reports when something goes wrong, and of files that are there already.

#include "support.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

namespace {

// A sanitizer's run-time library would want to be the first that is loaded.
const std::string kFaults =
    "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0 LD_PRELOAD='" TILEPRESS_FAULTS "' TILEPRESS_FAULT=";

std::string render(const std::string& output) { return "render --scale 0.1 " + sample("text.tif -o ") + output; }

TEST(Output, AFaultLeavesWhatWasThere) {
    const Folder folder;
    const std::string out = folder / "out.png";
    const struct {
        std::string before;
        const char* message;
    } faults[] = {{kFaults + "fwrite", "No space left"},
                  {kFaults + "fsync", "Input/output error"},
                  {kFaults + "fclose", "quota"},
                  {kFaults + "rename", "Permission denied"},
                  {"ulimit -f 1;", "File too large"}};
    for (const auto& fault : faults) {
        writeFile(out, "before");
        for (const std::string& command : {render(out), "repack " + sample("text.tif -o ") + out}) {
            const Outcome run = tool(command, fault.before);
            EXPECT_EQ(run.code, 1) << fault.message;
            EXPECT_NE(run.errors.find(fault.message), std::string::npos) << run.errors;
            EXPECT_EQ(readFile(out), "before") << fault.message;
            EXPECT_EQ(folder.names(), std::vector<std::string>{"out.png"}) << fault.message;
        }
    }
    EXPECT_EQ(tool("render --format png " + sample("text.tif -o /dev/full")).code, 1);
}

TEST(Output, EndingSignalsLeaveNothingAndIgnoredOnesDoNotEnd) {
    const Folder folder;
    const std::string out = folder / "out.png";
#ifdef __SANITIZE_ADDRESS__
    const int fault = SIGTERM;  // the sanitizer takes faults itself
#else
    const int fault = SIGSEGV;
#endif
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGALRM, SIGTERM, SIGUSR1, SIGXCPU, fault, SIGRTMIN + 1}) {
        const std::string number = std::to_string(signal);
        EXPECT_EQ(tool(render(out), "TILEPRESS_SIGNAL=" + number + " " + kFaults + "fsync").code, 128 + signal);
        EXPECT_TRUE(folder.names().empty()) << signal;
    }
    EXPECT_EQ(tool(render(out), "trap '' HUP; TILEPRESS_SIGNAL=1 " + kFaults + "fsync").code, 0);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"out.png"});
}

TEST(Output, ModesAndLinksStay) {
    const Folder folder;
    const std::string out = folder / "out.png", link = folder / "link.png", fresh = folder / "fresh.png";
    writeFile(out, "before");
    chmod(out.c_str(), 0604);
    ASSERT_EQ(symlink("out.png", link.c_str()), 0);
    EXPECT_EQ(tool(render(link), "umask 077;").code, 0);
    ASSERT_EQ(tool(render(fresh), "umask 027;").code, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(readFile(out), readFile(fresh));
    struct stat status {};
    stat(out.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0604u);
    stat(fresh.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    std::filesystem::remove(out);
    EXPECT_EQ(tool(render(link)).code, 0) << "a link to what is to come";
    EXPECT_EQ(readFile(out), readFile(fresh));
    writeFile(out, "before");
    chmod(out.c_str(), 0444);
    EXPECT_EQ(tool(render(link)).code, 1);
    EXPECT_EQ(tool("-V").code, 0);
    EXPECT_EQ(readFile(out), "before");
}

TEST(Output, TheInputAndWhatIsToBeKeptAreNotReplaced) {
    const Folder folder;
    const std::string page = folder / "page.tif", link = folder / "link.tif", hard = folder / "hard.tif";
    const std::string before = readFile(sample("text.tif"));
    writeFile(page, before);
    ASSERT_EQ(symlink("page.tif", link.c_str()), 0);
    ASSERT_EQ(::link(page.c_str(), hard.c_str()), 0);
    for (const std::string& output : {page, link, hard, (folder / ".") + "/page.tif"})
        for (const std::string& command :
             {"render --scale 0.1 " + page, "convert --to rgb " + page, "repack " + page, "encode - <" + page}) {
            EXPECT_EQ(tool(command + " -o " + output).code, 1) << command << output;
            EXPECT_EQ(tool(command + " -n -o " + output).code, 0) << command << output;
            ASSERT_EQ(readFile(page), before) << command << output;
        }
    EXPECT_EQ(tool("repack --force " + page + " -o " + page).code, 0);
    EXPECT_NE(readFile(page), before);
    EXPECT_EQ(readTiff(page), readTiff(sample("text.tif")));
}

TEST(Reports, ThatCannotBeWrittenAreFailures) {
    const std::string endedPipe = "trap '' PIPE; while echo x; do :; done 2>/dev/null; trap - PIPE;";
    const Folder folder;
    for (const std::string& command : {"info " + sample("text.tif"), "verify --json " + sample("text.tif"),
                                       std::string("--help"), std::string("help info"), std::string("--version")}) {
        for (const char* where : {" >/dev/full", " >&-"}) {
            const Outcome run = tool(command + where);
            EXPECT_EQ(run.code, 1) << command << where;
            EXPECT_NE(run.errors.find("standard output: "), std::string::npos) << command << where;
        }
        tool(command + " 2>" + (folder / "errors") + "; echo $? >" + (folder / "code") + "; } | { :", endedPipe);
        EXPECT_EQ(readFile(folder / "code"), "1\n") << command;
        EXPECT_EQ(readFile(folder / "errors"), "tilepress: standard output: Broken pipe\n") << command;
    }
    for (const char* where : {" 2>/dev/full", " 2>&-"}) {
        EXPECT_EQ(tool("info /no/such/file" + std::string(where)).code, 1);
        EXPECT_EQ(tool("render --stats -o /dev/null --format png " + sample("text.tif") + where).code, 1) << where;
        EXPECT_EQ(tool("render -o /dev/null --format png " + sample("text.tif") + where).code, 0) << "nothing to say";
    }
}

TEST(Input, PipesAreReadOrRefusedAtOnce) {
    const Folder folder;
    const std::string pipe = folder / "pipe", in = pipe + " -o " + (folder / "out.pbm"), limit = "timeout 20";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(tool("info " + pipe, limit).code, 3) << "nobody writes";
    EXPECT_EQ(tool("info /dev/zero", limit).code, 1);
    EXPECT_EQ(tool("render " + in, "cat " + sample("text.tif >") + pipe + " & " + limit).code, 0);
    EXPECT_EQ(parsePnm(readFile(folder / "out.pbm")), readTiff(sample("text.tif")));
    EXPECT_EQ(tool("verify --reference " + pipe, "cat " + sample("text.tif >") + pipe + " & " + limit).code, 0);
}

}  // namespace
