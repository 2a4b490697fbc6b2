#pragma once

#include "framework/kel_exception.h"

#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace talvik {

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
