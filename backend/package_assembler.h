#pragma once

#include "backend/protocol.h"

#include <cstddef>
#include <optional>

namespace talvik::backend {

/// Cuts a stream of bytes into packages. It holds what has arrived and no more: what a header
/// promises is never allocated ahead. Used by one thread at a time.
class PackageAssembler {
public:
    /// Refuses packages of more than `limit` bytes.
    explicit PackageAssembler(std::size_t limit = kMaxPackageSize) : limit_(limit) {}

    /// Takes the next bytes of the stream.
    void append(const unsigned char* data, std::size_t size);

    /// The bytes of the next package once they are all there. Throws `ProtocolError` as soon as the
    /// bytes cannot become a package; the stream is of no use from then on.
    std::optional<Bytes> next();

    /// How many bytes are still needed for the header or, once that is there, for the package.
    /// Throws as `next` does.
    std::size_t missing() const;

    /// How many bytes wait for the rest of their package.
    std::size_t held() const { return buffer_.size() - start_; }

private:
    const unsigned char* data() const { return buffer_.data() + start_; }
    std::size_t packageSize() const;

    std::size_t limit_;
    Bytes buffer_;
    std::size_t start_ = 0;  // bytes of `buffer_` that were handed out already
};

}  // namespace talvik::backend
