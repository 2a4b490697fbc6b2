#pragma once

#include <string>

/// Where the product is installed. Callable from any thread.
class KEL_Utility {
public:
    /// The installation root, an absolute path without a trailing slash; configured file locations
    /// are relative to it.
    static std::string getKELRootEnv();
};
