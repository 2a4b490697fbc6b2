#pragma once

namespace talvik {

/// The signals that end or poke the agent, as a file descriptor. Make it before the first thread:
/// threads inherit that these signals are blocked.
class StopSignals {
public:
    /// Blocks SIGTERM, SIGINT and SIGHUP, and ignores SIGPIPE and SIGXFSZ: a connection that is
    /// gone and a file at its limit are errors of the write that meets them. Throws
    /// `std::system_error`.
    StopSignals();
    ~StopSignals();

    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Can be read once a signal has come.
    int descriptor() const { return descriptor_; }

    /// Takes the signal that has come: its number, or 0 when there is none.
    int take() const;

private:
    int descriptor_;
};

}  // namespace talvik
