#pragma once

#include <memory>
#include <string>
#include <vector>

namespace talvik::ctl {

/// Collects the warnings and errors that the module's own code logs while this object lives. For
/// one thread.
class ModuleLog {
public:
    struct Line {
        bool isError;
        std::string text;
    };

    ModuleLog();
    ~ModuleLog();

    ModuleLog(const ModuleLog&) = delete;
    ModuleLog& operator=(const ModuleLog&) = delete;

    /// The lines since the last call.
    std::vector<Line> take();

private:
    class Sink;
    std::shared_ptr<Sink> sink_;
};

}  // namespace talvik::ctl
