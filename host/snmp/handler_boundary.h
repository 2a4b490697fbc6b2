#pragma once

#include "framework/kel_exception.h"

#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace talvik {

/// What became of a call that changes something.
struct HandlerAnswer {
    int result = 0;
    std::optional<std::string> failure;  ///< what the handler threw; `result` then says nothing

    bool succeeded() const { return !failure && result == 0; }
};

/// Runs `call`, which goes into a module. Returns nothing if it came back, or the text of what it
/// threw: whatever a module throws, it ends here.
template <typename Call>
std::optional<std::string> callHandler(Call&& call)
{
    try {
        std::forward<Call>(call)();
        return std::nullopt;
    } catch (const CKEL_Exception& error) {
        return error.what();
    } catch (const std::exception& error) {
        return std::string("unexpected exception: ") + error.what();
    } catch (...) {
        return "unexpected exception of an unknown type";
    }
}

}  // namespace talvik
