#pragma once

#include "backend/file_descriptor.h"

namespace talvik::backend {

/// A descriptor that any thread can make readable.
class WakeSignal {
public:
    /// Throws `StartupError` when the system has no descriptor left.
    WakeSignal();

    int fd() const { return fd_.get(); }

    /// Makes it readable. Cannot fail.
    void raise() const noexcept;

    /// Makes it unreadable until the next `raise`.
    void clear() const noexcept;

private:
    FileDescriptor fd_;
};

}  // namespace talvik::backend
