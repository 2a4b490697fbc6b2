#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace talvik {

/// The identity of the SNMP engine: its ID (13 octets) and how often it was started with it (1 to
/// 2147483647).
struct EngineState {
    std::string id;
    std::uint32_t boots = 0;
};

/// The largest number of boots; a counter that has reached it stays there.
constexpr std::uint32_t kMaxEngineBoots = 2147483647;

/// Two hexadecimal digits an octet.
std::string toHex(const std::string& octets);

/// The octets of hexadecimal text; nothing when it is no such text.
std::optional<std::string> fromHex(const std::string& text);

/// True for an ID of the form that this agent makes: 8001869f05 (the enterprise 99999, format
/// "octets"), then 8 octets.
bool isOwnEngineId(const std::string& id);

/// Keeps the engine's identity on disk, in two copies, `engine.json` and `engine.bak.json`:
///
///     {"engineId": 26 HEX DIGITS, "boots": 1..2147483647}
///
/// A manager that has seen an engine ID refuses its messages once the boots fall back, so an
/// identity is never replaced: a copy that was damaged is set aside as `NAME.damaged-N` and written
/// anew from the other one.
class EngineStateStore {
public:
    /// What net-snmp itself still knows: counts for the boots, and is the last resort when both
    /// copies are damaged. Nothing if it knows no ID of ours.
    using Fallback = std::function<std::optional<EngineState>()>;

    /// `usedMark` is a file that earlier runs leave behind: beside it, missing copies are lost
    /// ones. Empty for none.
    EngineStateStore(std::string directory, Fallback fallback, std::string usedMark = "")
        : directory_(std::move(directory)),
          fallback_(std::move(fallback)),
          usedMark_(std::move(usedMark))
    {
    }

    /// Begins a new run: the stored identity, or a new one in a directory that holds none, with
    /// boots one higher than ever before. Both copies are on disk when it returns. Throws
    /// `StartupError` when an identity was there and is lost, or cannot be stored.
    EngineState begin() const;

    /// What `begin` would return, without a change to any file; a new identity is not the one that
    /// `begin` will make.
    EngineState preview() const;

private:
    struct Copy;

    Copy read(const char* name) const;
    std::optional<EngineState> choose(const Copy& first, const Copy& second) const;
    void setAside(const Copy& copy) const;
    std::string path(const char* name) const;

    std::string directory_;
    Fallback fallback_;
    std::string usedMark_;
};

}  // namespace talvik
