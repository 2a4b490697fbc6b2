#pragma once

#include "host/link/backend_link.h"
#include "host/platform/host_log.h"
#include "tests/unit/backend/socket_kit.h"

#include <spdlog/sinks/ostream_sink.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace talvik::test {

/// A request for `command`.
inline void addRecord(Package& package, std::uint64_t command)
{
    auto record = std::make_unique<CTLVRecordV3>(command);
    package.oRecords.push_back(record.get());
    record.release();
}

/// The text of the only cell of tag 1 in the record at `index`.
inline std::string textOf(const Package& package, std::size_t index = 0)
{
    return (*package[index])[1]->toString();
}

/// A back end in the hands of a test: it listens and does nothing by itself.
class FakePeer {
public:
    explicit FakePeer(const std::string& path, int backlog = 16)
        : fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const auto address = backend::unixAddress(path).value();
        if (::bind(fd_.get(), backend::asSocketAddress(address), sizeof address) != 0 ||
            ::listen(fd_.get(), backlog) != 0) {
            throw std::runtime_error("cannot listen on " + path);
        }
    }

    /// The next connection, waited for.
    Stream accept()
    {
        if (!isPending(kWaitMs)) {
            throw std::runtime_error("nobody connected for too long");
        }
        return Stream(
            backend::FileDescriptor(::accept4(fd_.get(), nullptr, nullptr, SOCK_CLOEXEC)));
    }

    /// Whether somebody has connected who was not accepted yet.
    bool hasPending() { return isPending(0); }

private:
    bool isPending(int limitMs)
    {
        pollfd watched{fd_.get(), POLLIN, 0};
        return ::poll(&watched, 1, limitMs) == 1;
    }

    backend::FileDescriptor fd_;
};

/// What the host logs while this object lives.
class LogCapture {
public:
    LogCapture() : sink_(std::make_shared<spdlog::sinks::ostream_sink_mt>(text_))
    {
        hostLog()->sinks().push_back(sink_);
    }

    ~LogCapture()
    {
        auto& sinks = hostLog()->sinks();
        sinks.erase(std::remove(sinks.begin(), sinks.end(), spdlog::sink_ptr(sink_)), sinks.end());
    }

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::string text() const { return text_.str(); }

    /// How many lines hold `part`.
    int linesWith(const std::string& part) const
    {
        std::istringstream lines(text_.str());
        std::string line;
        int count = 0;
        while (std::getline(lines, line)) {
            count += line.find(part) == std::string::npos ? 0 : 1;
        }
        return count;
    }

private:
    std::ostringstream text_;
    std::shared_ptr<spdlog::sinks::ostream_sink_mt> sink_;
};

}  // namespace talvik::test
