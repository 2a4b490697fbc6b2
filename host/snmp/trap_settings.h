#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace talvik {

/// A user that notifications are sent as.
struct TrapUser {
    std::string name;
    std::string auth;  ///< "SHA-256", as the SNMP library spells it
    std::string authPassphrase;
    std::string privacy;  ///< "AES"
    std::string privacyPassphrase;
};

/// Refines the rows of the trap destination table that have this address (and port).
struct ReceiverSettings {
    std::string address;
    std::optional<unsigned int> port;
    std::string place;  ///< in the file, for messages: "receivers[0]"
    bool inform = false;
    std::chrono::milliseconds timeout{1000};  ///< of one inform
    int retries = 3;
    std::optional<std::string> community;
    std::string source;  ///< numeric address to send from; empty: the system chooses
};

/// What the trap settings file says; without one, the defaults.
///
/// JSON, no comments, no other members than these, all of them optional but those marked:
///
///     settings  ::= {"community": TEXT, "users": [0..64 users], "receivers": [receiver...],
///                    "v1AgentAddress": IPV4}
///     user      ::= {"name"!: TEXT, "auth"!: AUTH, "authPassphrase"!: TEXT, "privacy"!: PRIVACY,
///                    "privacyPassphrase"!: TEXT}
///     receiver  ::= {"address"!: TEXT, "port": 1..65535, "inform": BOOLEAN,
///                    "timeoutMs": 100..60000, "retries": 0..10, "community": TEXT,
///                    "source": IPV4 or IPV6}
///     AUTH      ::= "SHA" | "SHA-224" | "SHA-256" | "SHA-384" | "SHA-512"
///     PRIVACY   ::= "AES" | "AES-192" | "AES-256"
///
/// docs/trap-settings.md has the long version.
struct TrapSettings {
    std::string community = "public";
    std::vector<TrapUser> users;
    std::vector<ReceiverSettings> receivers;
    std::optional<std::array<unsigned char, 4>> v1AgentAddress;

    /// What is said of a receiver; an entry with the port precedes one without. Null for nothing.
    const ReceiverSettings* find(const std::string& address, unsigned int port) const;
};

/// The settings in `text`, the content of `file`. Throws `StartupError` that names the file, the
/// place within it and the reason.
TrapSettings parseTrapSettings(const std::string& text, const std::string& file);

/// Overwrites `secret` before it is given back to the system, and empties it.
void wipe(std::string& secret);

}  // namespace talvik
