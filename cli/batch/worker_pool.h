#pragma once

// The worker processes of a batch: started, watched, ended and replaced.

#include "batch/channel.h"
#include "batch/job.h"

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// How a task ended: with a result, or with the worker that was at it.
struct TaskEnd {
    WorkerResult result;
    std::string died;   ///< why the worker is gone, else empty
    bool late = false;  ///< it was ended because the task took too long
};

class WorkerPool {
public:
    using Clock = std::chrono::steady_clock;
    struct Limits {
        std::uint64_t memory = 0;
        std::optional<double> seconds;  ///< of a task
    };

    /// Starts the workers. Throws Failure.
    WorkerPool(unsigned workers, const BatchJob& job, Limits limits);
    /// Ends them; what they had begun they remove.
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    bool isBusy(unsigned worker) const { return workers_[worker].busy; }
    bool isBusy() const;
    void assign(unsigned worker, const WorkerTask& task);
    /// Waits until a task ends, something can be read from `other` (-1: nothing), `wait` has passed or a signal
    /// arrives. `readable` tells whether `other` can be read. Calls ended(worker, how) for each task that did; a worker
    /// that died has been replaced by then.
    void wait(int other, std::chrono::milliseconds wait, bool& readable,
              const std::function<void(unsigned, TaskEnd)>& ended);

private:
    struct Worker {
        pid_t process = -1;
        Channel channel;
        bool busy = false, timed = false;
        Clock::time_point since;
    };
    void start(Worker& worker);
    TaskEnd buried(Worker& worker, bool late);

    const BatchJob& job_;
    const Limits limits_;
    std::vector<Worker> workers_;
};
