#include "batch/channel.h"

#include "base/failure.h"

#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {

// Two cut texts and the rest.
constexpr std::size_t kMostPacketBytes = 3 * kMostMessageBytes + (8 << 10);

unsigned long number(const std::string& text) { return std::strtoul(text.c_str(), nullptr, 10); }

}  // namespace

Channel::Channel(Channel&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

Channel& Channel::operator=(Channel&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

std::pair<Channel, Channel> Channel::pair() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        throw Failure(Exit::failed, fmt::format("a worker cannot be reached: {}", std::strerror(errno)));
    return {Channel(ends[0]), Channel(ends[1])};
}

void Channel::close() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
}

bool Channel::sendFields(const std::vector<std::string>& fields) const {
    std::string packet;
    for (const std::string& field : fields) {
        packet += field;
        packet += '\0';
    }
    ssize_t sent;
    do sent = ::send(descriptor_, packet.data(), packet.size(), MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(packet.size());
}

std::vector<std::string> Channel::receiveFields(std::size_t count) const {
    std::string packet(kMostPacketBytes, '\0');
    ssize_t got;
    do got = recv(descriptor_, packet.data(), packet.size(), 0);
    while (got < 0 && errno == EINTR);
    std::vector<std::string> fields;
    for (std::size_t at = 0; got > 0 && at < static_cast<std::size_t>(got);) {
        const std::size_t end = std::min(packet.find('\0', at), static_cast<std::size_t>(got));
        fields.push_back(packet.substr(at, end - at));
        at = end + 1;
    }
    if (fields.size() != count) fields.clear();
    return fields;
}

bool Channel::send(const WorkerTask& task) const {
    return sendFields(
        {std::to_string(static_cast<int>(task.kind)), task.input, task.pages, task.output, task.expected});
}

std::optional<WorkerTask> Channel::receiveTask() const {
    std::vector<std::string> f = receiveFields(5);
    if (f.empty()) return std::nullopt;
    return WorkerTask{static_cast<WorkerTask::Kind>(number(f[0])), f[1], f[2], f[3], f[4]};
}

bool Channel::send(const WorkerResult& result) const {
    return sendFields({std::to_string(result.code), result.kept ? "1" : "0", result.waits ? "1" : "0",
                       std::to_string(result.pages), result.messages, result.report, result.made,
                       std::to_string(result.milliseconds)});
}

std::optional<WorkerResult> Channel::receiveResult() const {
    std::vector<std::string> f = receiveFields(8);
    if (f.empty()) return std::nullopt;
    WorkerResult result;
    result.code = static_cast<int>(number(f[0]));
    result.kept = f[1] == "1";
    result.waits = f[2] == "1";
    result.pages = static_cast<unsigned>(number(f[3]));
    result.messages = std::move(f[4]);
    result.report = std::move(f[5]);
    result.made = std::move(f[6]);
    result.milliseconds = number(f[7]);
    return result;
}
