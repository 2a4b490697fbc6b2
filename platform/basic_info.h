#pragma once

#include <string>

/// What the host knows of the device. Set before the module is loaded and unchanged afterwards, so
/// any thread may read.
class CSNMPBasicImpl {
public:
    /// The node code, NUL-terminated text owned by the host, valid for the life of the process;
    /// null when the device has none (the module then sends an empty string cell).
    static const char* getNodeCode();

    /// The node type number, as the MIB's topology table shows it.
    static unsigned int getNodeType();

    /// The device type number that alarm traps carry.
    static int device_type;

    /// The product serial number that alarm traps carry.
    static std::string product_sn;
};
