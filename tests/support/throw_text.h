#pragma once

#include "framework/kel_exception.h"

#include <string>

namespace talvik::test {

/// The text of the `CKEL_Exception` that `action` throws; "nothing thrown" when it throws none.
template <typename Action>
std::string textOfThrown(Action action)
{
    try {
        action();
    } catch (const CKEL_Exception& error) {
        return error.what();
    }
    return "nothing thrown";
}

}  // namespace talvik::test
