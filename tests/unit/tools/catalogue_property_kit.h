#pragma once

#include "host/platform/host_log.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/tools/catalogue_findings.h"
#include "tests/unit/tools/small_catalogue.h"
#include "tools/catalogue/expansion.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace talvik::test {

/// The module's log prints nothing while this lives.
class SilentModule {
public:
    SilentModule() : logger_(makeLogger("module-4")) { logger_->sinks().swap(sinks_); }
    ~SilentModule() { logger_->sinks().swap(sinks_); }

    SilentModule(const SilentModule&) = delete;
    SilentModule& operator=(const SilentModule&) = delete;

private:
    std::shared_ptr<spdlog::logger> logger_;
    std::vector<spdlog::sink_ptr> sinks_;
};

/// Base of the tests that make catalogues at random.
class CatalogueProperty : public testing::Test {
protected:
    template <std::size_t Count>
    const char* pick(const std::array<const char*, Count>& choices)
    {
        return choices[random_() % Count];
    }

    template <std::size_t Count>
    std::string pieces(const std::array<const char*, Count>& choices, unsigned most)
    {
        std::string text;
        for (auto left = random_() % (most + 1); left > 0; --left) {
            text += pick(choices);
        }
        return text;
    }

    bool oneIn(unsigned count) { return random_() % count == 0; }

    ctl::Expansion expand(const std::string& definitionFile, const std::string& enumerationFile,
                          std::uint64_t id, const std::string& params)
    {
        if (definitionFile != written_.first || enumerationFile != written_.second) {
            folder_.write("alarms.json", definitionFile);
            folder_.write("enums.json", enumerationFile);
            written_ = {definitionFile, enumerationFile};
        }
        return ctl::expandAlarm(folder_.path("alarms.json"), folder_.path("enums.json"), id,
                                params);
    }

private:
    std::pair<std::string, std::string> written_;
    std::mt19937 random_{20261121};  // fixed, so that a failure can be seen again
    TempDir folder_;
    SilentModule silence_;
};

inline bool has(const ctl::Finding& finding, std::string_view code)
{
    return finding.kind.code == code;
}

inline bool says(const ctl::Finding& finding, const std::string& words)
{
    return finding.message.find(words) != std::string::npos;
}

}  // namespace talvik::test
