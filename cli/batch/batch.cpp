#include "batch/batch.h"

#include "base/failure.h"
#include "base/output_pattern.h"
#include "base/stable_hash.h"
#include "batch/meter.h"
#include "batch/result_log.h"
#include "batch/worker_pool.h"
#include "files/output_file.h"
#include "files/temporary_file.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iterator>
#include <memory>
#include <sstream>
#include <thread>
#include <unordered_set>
#include <utility>

namespace {

using Clock = WorkerPool::Clock;

volatile std::sig_atomic_t s_signal = 0;

/// Turns signals that end a program into a wish to end, for as long as this lives; ignored ones stay ignored.
class Interruptible {
public:
    Interruptible() {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction action {};
            if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
            action.sa_handler = [](int which) { s_signal = which; };
            sigaction(signal, &action, nullptr);
        }
    }
};

/// An input whose pages are being done.
struct OpenInput {
    std::string path, stamp;
    OutputPattern output{""};
    PageList wanted{"all"};
    unsigned pageCount = 0;
    std::vector<std::string> parts;  ///< what is still to do, last first: page lists
    unsigned underWay = 0;
};
using OpenInputPtr = std::shared_ptr<OpenInput>;

/// What a worker is at, or was.
struct Assignment {
    OpenInputPtr input;
    WorkerTask task;
    std::uint64_t key = 0;
    WorkerResult result;
};

struct WorkerState {
    Assignment now;
    std::vector<Assignment> waiting;  ///< pages whose outputs are not on the disk yet; nothing is said of them before
    Clock::time_point settled = Clock::now();  ///< when that was last so of none

    bool mustSettle() const {
        // As long as single waits are a small part of the time, results are not held back.
        constexpr std::chrono::milliseconds kMostWait(250);
        return waiting.size() >= GatheredOutputs::kMost || (!waiting.empty() && Clock::now() - settled > kMostWait);
    }
};

/// Size and time of an input: another stamp, other outputs.
std::string stampOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return {};
    return fmt::format("{}.{}.{}", status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
}

const char* statusWord(int code) {
    constexpr const char* kWords[] = {"good", "failed", "damaged", "unsupported", "limit"};
    return kWords[std::clamp(code, 0, 4)];
}

/// The inputs: arguments, or what arrives on standard input.
class Inputs {
public:
    explicit Inputs(const BatchOptions& options) : options_(options), parser_(options.list), ended_(!fromList()) {}

    /// What to wait for, -1 when nothing more is wanted now.
    int descriptor() const { return ended_ || parser_.waiting() > kMostWaiting ? -1 : STDIN_FILENO; }
    void read() {
        std::array<char, 65536> block;
        const ssize_t got = ::read(STDIN_FILENO, block.data(), block.size());
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) return;
        if (got < 0) throw Failure(Exit::failed, fmt::format("standard input: {}", std::strerror(errno)));
        ended_ = got == 0;
        if (ended_) parser_.end();
        else parser_.add(block.data(), static_cast<std::size_t>(got));
    }
    std::optional<BatchInput> next() {
        if (fromList()) {
            taken_ += parser_.waiting() > 0;
            return parser_.next();
        }
        if (taken_ == options_.inputs.size()) return std::nullopt;
        return BatchInput{options_.inputs[taken_++], {}, {}};
    }
    bool atEnd() const { return ended_ && taken_ == known(); }
    std::uint64_t taken() const { return taken_; }
    /// How many inputs there are, once that is known; else 0.
    std::uint64_t total() const { return ended_ ? known() : 0; }

private:
    static constexpr std::size_t kMostWaiting = 50'000;
    bool fromList() const { return options_.inputs.empty(); }
    std::uint64_t known() const { return fromList() ? taken_ + parser_.waiting() : options_.inputs.size(); }

    const BatchOptions& options_;
    ListParser parser_;
    bool ended_;
    std::uint64_t taken_ = 0;
};

class Batch {
public:
    Batch(const BatchOptions& options, const BatchJob& job, std::uint64_t maxMemory)
        : options_(options), job_(job), inputs_(options), log_(options.log, options.resume), meter_(options.quiet),
          workers_(options.jobs), pool_(options.jobs, job, {maxMemory, options.pageSeconds}) {}

    int run() {
        while (!s_signal) {
            for (unsigned worker = 0; worker < workers_.size(); ++worker)
                while (!pool_.isBusy(worker) && assignNext(worker)) {
                }
            if (!pool_.isBusy() && inputs_.atEnd() && open_.empty()) break;
            bool readable = false;
            pool_.wait(inputs_.descriptor(), std::chrono::milliseconds(200), readable,
                       [this](unsigned worker, TaskEnd end) { finished(worker, std::move(end)); });
            if (readable) inputs_.read();
            meter_.show(share());
        }
        if (!s_signal) log_.finish();
        meter_.sum(s_signal != 0);
        return worst_;
    }

private:
    double share() const {
        if (inputs_.total() == 0) return -1;
        return static_cast<double>(finishedInputs_) / static_cast<double>(inputs_.total());
    }
    /// Gives an idle worker something to do, or finds that it does not need to be done; false: there is nothing.
    bool assignNext(unsigned worker) {
        if (workers_[worker].mustSettle()) {
            settle(worker);
        } else if (!again_.empty()) {
            Assignment lost = std::move(again_.back());
            again_.pop_back();
            assign(worker, std::move(lost));
        } else if (!open_.empty()) {
            assignPart(worker);
        } else if (const std::optional<BatchInput> next = inputs_.next()) {
            openInput(worker, *next);
        } else if (!workers_[worker].waiting.empty()) {
            settle(worker);
        } else {
            return false;
        }
        return true;
    }
    void settle(unsigned worker) { assign(worker, {nullptr, {WorkerTask::Kind::settle, {}, {}, {}, {}}, 0, {}}); }
    void openInput(unsigned worker, const BatchInput& next) {
        const auto input = std::make_shared<OpenInput>();
        input->path = next.path;
        const auto failHere = [&](const std::string& message) {
            ++finishedInputs_;
            report(*input, {}, {}, 0, failure(Exit::failed, message));
        };
        try {
            if (!next.pages.empty()) input->wanted = PageList(next.pages);
            else input->wanted = job_.pages;
        } catch (const Failure& refusal) {
            if (options_.shard.has(next.path)) failHere(refusal.what());
            return;
        }
        const std::string pattern = next.output.empty() ? job_.output.value_or("") : next.output;
        input->output = OutputPattern(placed(pattern));
        // Also inputs of other shards count, which know nothing of ours; so does one and the same input twice.
        const bool taken = job_.output && !names_.insert(stableHash(input->output.expanded(next.path, 0))).second;
        if (!options_.shard.has(next.path)) {
            ++finishedInputs_;
            return;
        }
        if (taken)
            return failHere(
                fmt::format("{} would be written twice: {{dir}} or {{ext}} in the output's name keep inputs apart",
                            input->output.expanded(next.path, 1)));
        input->stamp = stampOf(next.path);
        ++input->underWay;
        assign(worker, {input, {WorkerTask::Kind::open, next.path, {}, {}, {}}, 0, {}});
    }
    std::string placed(const std::string& pattern) const {
        const std::string named = pattern.empty() || pattern.ends_with('/') ? pattern + job_.usualName : pattern;
        return options_.folder.empty() || named.starts_with('/') ? named : options_.folder + "/" + named;
    }
    void assign(unsigned worker, Assignment assignment) {
        pool_.assign(worker, assignment.task);
        workers_[worker].now = std::move(assignment);
    }
    void assignPart(unsigned worker) {
        const OpenInputPtr input = open_.back();
        const std::string pages = input->parts.back();
        input->parts.pop_back();
        if (input->parts.empty()) open_.pop_back();
        const auto page = static_cast<unsigned>(std::strtoul(pages.c_str(), nullptr, 10));
        const std::string output = job_.output ? input->output.expanded(input->path, page) : std::string();
        const std::uint64_t key =
            stableHash(fmt::format("{}\n{}\n{}\n{}\n{}", input->path, pages, output, input->stamp, job_.description));
        const bool writtenBefore =
            job_.output && input->output.namesPages() && !names_.insert(stableHash(output)).second;
        if (writtenBefore) {
            report(*input, pages, output, key, failure(Exit::failed, output + " would be written twice"));
            return closeIfDone(*input);
        }
        ++input->underWay;
        assign(worker, {input, {WorkerTask::Kind::page, input->path, pages, output, log_.made(key)}, key, {}});
    }
    static WorkerResult failure(Exit code, const std::string& message) {
        WorkerResult result;
        result.code = static_cast<int>(code);
        result.messages = fmt::format("tilepress: {}\n", message);
        return result;
    }
    void finished(unsigned worker, TaskEnd end) {
        WorkerState& state = workers_[worker];
        Assignment assignment = std::move(state.now);
        const WorkerTask& task = assignment.task;
        if (task.kind == WorkerTask::Kind::settle) return settled(state, end);
        if (!end.died.empty()) {
            // What the worker had done and not yet told the disk is done again.
            std::ranges::move(state.waiting, std::back_inserter(again_));
            state.waiting.clear();
            if (!task.output.empty()) unlink(TemporaryFile::nameFor(task.output).c_str());
            end.result = end.late ? failure(Exit::tooLarge, fmt::format("{}: took more than {} seconds", task.input,
                                                                        *options_.pageSeconds))
                                  : failure(Exit::failed, fmt::format("{}: {}", task.input, end.died));
        }
        assignment.result = std::move(end.result);
        if (assignment.result.waits) {
            state.waiting.push_back(std::move(assignment));
        } else {
            close(assignment);
        }
    }
    void settled(WorkerState& state, const TaskEnd& end) {
        std::vector<Assignment> ended = std::exchange(state.waiting, {});
        state.settled = Clock::now();
        std::istringstream failures(end.result.messages);
        std::string why;
        for (std::size_t i; failures >> i && std::getline(failures >> std::ws, why) && i < ended.size();)
            ended[i].result = failure(Exit::failed, fmt::format("{}: {}", ended[i].task.output, why));
        for (Assignment& assignment : ended) {
            if (!end.died.empty())
                assignment.result = failure(Exit::failed, fmt::format("{}: {}", assignment.task.output, end.died));
            close(assignment);
        }
    }
    /// Tells how a task ended.
    void close(const Assignment& assignment) {
        const WorkerTask& task = assignment.task;
        OpenInput& input = *assignment.input;
        --input.underWay;
        if (task.kind == WorkerTask::Kind::page)
            report(input, task.pages, task.output, assignment.key, assignment.result);
        else opened(assignment.input, assignment.result);
        closeIfDone(input);
    }
    void closeIfDone(const OpenInput& input) { finishedInputs_ += input.parts.empty() && input.underWay == 0; }
    void opened(const OpenInputPtr& input, const WorkerResult& result) {
        if (result.code != 0) report(*input, {}, {}, 0, result);
        input->pageCount = result.pages;
        if (result.pages == 0) return;
        try {
            const std::vector<unsigned> pages = input->wanted.of(result.pages);
            if (job_.joinsPages && !input->output.namesPages()) {
                input->parts.push_back(input->wanted.text());
            } else if (job_.output && pages.size() > 1 && !input->output.namesPages()) {
                throw Failure(Exit::failed, fmt::format("{}: {} pages for one output: {{page}} or %d in its name keeps "
                                                        "them apart",
                                                        input->path, pages.size()));
            } else {
                for (const unsigned page : pages) input->parts.push_back(std::to_string(page));
                std::ranges::reverse(input->parts);
            }
            if (!input->parts.empty()) open_.push_back(input);
        } catch (const Failure& refusal) {
            report(*input, {}, {}, 0, failure(refusal.code, refusal.what()));
        }
    }
    void report(const OpenInput& input, const std::string& pages, const std::string& output, std::uint64_t key,
                const WorkerResult& result) {
        if (!pages.empty()) ++(result.kept ? meter_.kept : meter_.done);
        if (result.kept) return;
        if (result.code != 0) {
            ++meter_.failed;
            worst_ = static_cast<int>(worse(static_cast<Exit>(worst_), static_cast<Exit>(result.code)));
        }
        if (!result.messages.empty()) meter_.say(result.messages);
        Json line = fileEntry(input.path);
        const bool one = !pages.empty() && pages.find_first_not_of("0123456789") == std::string::npos;
        if (one) line["page"] = std::stoul(pages);
        else if (!pages.empty()) line["page"] = pages;
        if (!output.empty()) line["output"] = output;
        line["status"] = statusWord(result.code);
        line["exit"] = result.code;
        if (!result.messages.empty()) line["messages"] = result.messages;
        if (const Json report = Json::parse(result.report, nullptr, false); !report.is_discarded())
            line["report"] = report;
        line["milliseconds"] = result.milliseconds;
        if (!result.made.empty()) line["made"] = result.made;
        line["key"] = fmt::format("{:016x}", key);
        log_.add(line);
    }

    const BatchOptions& options_;
    const BatchJob& job_;
    Inputs inputs_;
    ResultLog log_;
    Meter meter_;
    std::vector<OpenInputPtr> open_;
    std::vector<Assignment> again_;  ///< what is to be done once more
    std::vector<WorkerState> workers_;
    std::unordered_set<std::uint64_t> names_;  ///< hashes: names of 100 million outputs would fill the memory
    std::uint64_t finishedInputs_ = 0;
    int worst_ = 0;
    WorkerPool pool_;
};

}  // namespace

int runBatch(const BatchOptions& options, const BatchJob& job, std::uint64_t maxMemory) {
    TemporaryFile::setOneWriterAName();
    BatchOptions chosen = options;
    if (chosen.jobs == 0) chosen.jobs = std::max(std::thread::hardware_concurrency(), 1u);
    const Interruptible interruptible;
    int code = 0;
    {
        Batch batch(chosen, job, maxMemory);
        code = batch.run();
    }
    if (s_signal) {
        std::signal(s_signal, SIG_DFL);
        std::raise(s_signal);
    }
    return code;
}
