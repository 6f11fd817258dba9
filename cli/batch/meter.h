#pragma once

#include <chrono>
#include <cstdint>
#include <string>

/// How far a batch is: a bar on a terminal, a plain line now and then elsewhere.
class Meter {
public:
    explicit Meter(bool quiet);
    ~Meter() { clear(); }
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;

    std::uint64_t done = 0, failed = 0, kept = 0;

    /// Shows the state when it is time to. `share` of the inputs is finished; negative: nobody knows how many there
    /// are.
    void show(double share);
    /// A line that stays.
    void say(const std::string& line);
    /// What has become of all.
    void sum(bool interrupted);

private:
    using Clock = std::chrono::steady_clock;
    void clear();
    double seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
    std::string state(double share) const;

    const bool quiet_, terminal_;
    const Clock::time_point start_ = Clock::now();
    double next_;  ///< seconds after the start
    bool shown_ = false;
};
