#pragma once

#include <ace/Log_Msg.h>
#include <ace/Log_Msg_Callback.h>
#include <ace/Log_Record.h>

#include <cstddef>
#include <string>
#include <vector>

namespace talvik::test {

/// What ACE knows of one line besides its text.
struct AceLogFacts {
    u_long priority;
    const char* file;  ///< the place that was recorded before the line
    int line;
    int error;  ///< the error number recorded with it
};

/// Takes what the current thread logs through ACE while it lives, instead of standard error.
class AceLogCapture : public ACE_Log_Msg_Callback {
public:
    AceLogCapture()
        : log_(ACE_Log_Msg::instance()),
          flags_(log_->flags()),
          former_(log_->msg_callback(this))
    {
        log_->clr_flags(ACE_Log_Msg::STDERR);
        log_->set_flags(ACE_Log_Msg::MSG_CALLBACK);
    }

    ~AceLogCapture() override
    {
        log_->msg_callback(former_);
        log_->clr_flags(~0UL);
        log_->set_flags(flags_);
    }

    AceLogCapture(const AceLogCapture&) = delete;
    AceLogCapture& operator=(const AceLogCapture&) = delete;

    void log(ACE_Log_Record& record) override
    {
        lines.emplace_back(record.msg_data());
        facts.push_back({record.type(), log_->file(), log_->linenum(), log_->errnum()});
    }

    /// Makes room, so that the next `count` lines allocate only texts.
    void reserve(std::size_t count)
    {
        lines.reserve(count);
        facts.reserve(count);
    }

    std::vector<std::string> lines;  ///< formatted, their newline included
    std::vector<AceLogFacts> facts;  ///< one for each of `lines`

private:
    ACE_Log_Msg* log_;
    u_long flags_;
    ACE_Log_Msg_Callback* former_;
};

}  // namespace talvik::test
