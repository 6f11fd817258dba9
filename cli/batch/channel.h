#pragma once

// Messages between a batch and its workers: a few texts without NUL, as one packet.

#include <optional>
#include <string>
#include <vector>

/// What a worker is to do.
struct WorkerTask {
    enum class Kind { open, page, settle } kind = Kind::open;  ///< settle: what pages left waiting
    std::string input;
    std::string pages;   ///< a page list
    std::string output;  ///< empty: none
    /// Size and checksum of an output that an earlier run made: where they are right, the page is done.
    std::string expected;
};

/// How it went.
struct WorkerResult {
    int code = 0;
    bool kept = false;     ///< the output of an earlier run is whole
    bool waits = false;    ///< the output is not on the disk yet
    unsigned pages = 0;    ///< that the input has; of Kind::open
    std::string messages;  ///< what the command wrote on standard error; of Kind::settle, a line for each failure,
                           ///< which begins with the number of the output that waited
    std::string report;    ///< and on standard output
    std::string made;      ///< size and checksum of the output
    unsigned long milliseconds = 0;
};

/// One end of a pair of sockets that keep packets apart.
class Channel {
public:
    explicit Channel(int descriptor = -1) : descriptor_(descriptor) {}
    ~Channel() { close(); }
    Channel(Channel&& other) noexcept;
    Channel& operator=(Channel&& other) noexcept;

    /// Both ends. Throws Failure.
    static std::pair<Channel, Channel> pair();
    int descriptor() const { return descriptor_; }
    void close();

    // False, or nothing, when the other end has gone.
    bool send(const WorkerTask& task) const;
    bool send(const WorkerResult& result) const;
    std::optional<WorkerTask> receiveTask() const;
    std::optional<WorkerResult> receiveResult() const;

private:
    bool sendFields(const std::vector<std::string>& fields) const;
    std::vector<std::string> receiveFields(std::size_t count) const;

    int descriptor_;
};

/// Longest text that a worker sends back; the rest is cut.
constexpr std::size_t kMostMessageBytes = 32 << 10;
