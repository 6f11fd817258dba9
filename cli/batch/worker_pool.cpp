#include "batch/worker_pool.h"

#include "base/failure.h"
#include "batch/worker.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

WorkerPool::WorkerPool(unsigned workers, const BatchJob& job, Limits limits)
    : job_(job), limits_(limits), workers_(workers) {
    for (Worker& worker : workers_) start(worker);
}

WorkerPool::~WorkerPool() {
    for (Worker& worker : workers_) {
        if (worker.busy) kill(worker.process, SIGTERM);
        worker.channel.close();
    }
    for (const Worker& worker : workers_)
        while (worker.process > 0 && waitpid(worker.process, nullptr, 0) < 0 && errno == EINTR) {
        }
}

void WorkerPool::start(Worker& worker) {
    auto [ours, theirs] = Channel::pair();
    std::fflush(nullptr);
    const pid_t batch = getpid();
    worker.process = fork();
    if (worker.process < 0) throw Failure(Exit::failed, fmt::format("no worker starts: {}", std::strerror(errno)));
    if (worker.process == 0) {
        for (Worker& other : workers_) other.channel.close();
        ours.close();
        runWorker(theirs, job_, limits_.memory, batch);
    }
    worker.channel = std::move(ours);
    worker.busy = false;
}

bool WorkerPool::isBusy() const {
    return std::ranges::any_of(workers_, [](const Worker& worker) { return worker.busy; });
}

void WorkerPool::assign(unsigned worker, const WorkerTask& task) {
    // A worker that died while it waited is found dead when its answer is waited for.
    workers_[worker].channel.send(task);
    workers_[worker].busy = true;
    workers_[worker].since = Clock::now();
    workers_[worker].timed = task.kind != WorkerTask::Kind::settle;
}

TaskEnd WorkerPool::buried(Worker& worker, bool late) {
    kill(worker.process, SIGKILL);
    int status = 0;
    while (waitpid(worker.process, &status, 0) < 0 && errno == EINTR) {
    }
    TaskEnd end;
    end.late = late;
    end.died = WIFSIGNALED(status) ? fmt::format("the worker was ended by signal {} ({})", WTERMSIG(status),
                                                 strsignal(WTERMSIG(status)))
                                   : fmt::format("the worker ended with status {}", WEXITSTATUS(status));
    worker.channel.close();
    start(worker);
    return end;
}

void WorkerPool::wait(int other, std::chrono::milliseconds wait, bool& readable,
                      const std::function<void(unsigned, TaskEnd)>& ended) {
    std::vector<pollfd> watched;
    for (const Worker& worker : workers_)
        watched.push_back({worker.busy ? worker.channel.descriptor() : -1, POLLIN, 0});
    watched.push_back({other, POLLIN, 0});
    const int ready = poll(watched.data(), watched.size(), static_cast<int>(wait.count()));
    if (ready < 0 && errno != EINTR)
        throw Failure(Exit::failed, fmt::format("waiting for workers: {}", std::strerror(errno)));
    if (ready < 0) return;
    readable = watched.back().revents != 0;
    for (unsigned i = 0; i < workers_.size(); ++i) {
        Worker& worker = workers_[i];
        if (!worker.busy) continue;
        if (watched[i].revents != 0) {
            std::optional<WorkerResult> result = worker.channel.receiveResult();
            worker.busy = false;
            ended(i, result ? TaskEnd{std::move(*result), {}, false} : buried(worker, false));
        } else if (const std::chrono::duration<double> taken = Clock::now() - worker.since;
                   worker.timed && limits_.seconds && taken.count() > *limits_.seconds) {
            ended(i, buried(worker, true));
        }
    }
}
