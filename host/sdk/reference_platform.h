#pragma once

#include <string>

namespace talvik {

/// The platform symbols that a MIB module needs, as the reference host defines them, set up for a
/// small host: the device configuration from a file, commands answered by an embedded back end that
/// keeps no alarms, and, if asked for, the list of trap destinations. Log lines go to standard
/// error.
///
/// Make it before the module is loaded and destroy it after the module is unloaded; one at a time,
/// on the thread that calls the module.
class ReferencePlatform {
public:
    struct Settings {
        std::string deviceFile;  ///< talvik-device.xml

        /// What the file locations in the device configuration are relative to: it has a folder
        /// etc/ with the alarm catalogue.
        std::string installationRoot;

        /// Folder of the trap destinations, made when it is missing. Empty: there is no list of
        /// them, and the handler of their table answers with a failure.
        std::string stateDirectory;

        std::string logLevel = "warn";  ///< trace, debug, info, warn or error
    };

    /// Throws `std::runtime_error` that names the file and what is wrong with it.
    explicit ReferencePlatform(const Settings& settings);
    ~ReferencePlatform();

    ReferencePlatform(const ReferencePlatform&) = delete;
    ReferencePlatform& operator=(const ReferencePlatform&) = delete;

    /// Deletes the notification handlers that a module has registered. Call it before the module is
    /// unloaded: they are its code.
    void dropNotificationHandlers();
};

}  // namespace talvik
