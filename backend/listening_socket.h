#pragma once

#include "backend/file_descriptor.h"

#include <sys/types.h>

#include <string>

namespace talvik::backend {

/// A Unix-domain socket file that listens, for this user and group only. Takes the place of one
/// that a back end left behind; its end removes the file.
class ListeningSocket {
public:
    /// Throws `StartupError` when another program listens on `path`, when something other than a
    /// socket is there, or when the system refuses.
    explicit ListeningSocket(const std::string& path);
    ~ListeningSocket();

    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    int fd() const { return socket_.get(); }
    const std::string& path() const { return path_; }

private:
    void bindTo();
    void remember();

    std::string path_;
    FileDescriptor socket_;
    dev_t device_ = 0;  // with `inode_` tells our own file from one that a successor put there
    ino_t inode_ = 0;
};

}  // namespace talvik::backend
