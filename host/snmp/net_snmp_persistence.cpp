#include "host/snmp/net_snmp_persistence.h"

#include "host/platform/host_log.h"
#include "host/snmp/callback_guard.h"
#include "host/snmp/durable_file.h"
#include "host/snmp/net_snmp.h"
#include "host/startup_error.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <sstream>

namespace talvik {

namespace {

constexpr const char* kEndMark = "# talvik-agentd: end of file";
constexpr int kMaxBackups = 10;  ///< as many as the library makes

std::filesystem::path persistentFile(const std::filesystem::path& directory)
{
    return directory / (std::string(kApplicationName) + ".conf");
}

std::filesystem::path backupFile(const std::filesystem::path& directory, int number)
{
    return directory / (std::string(kApplicationName) + "." + std::to_string(number) + ".conf");
}

bool isComplete(const std::optional<std::string>& content)
{
    const std::string end = std::string(kEndMark) + "\n";
    return content && content->size() >= end.size() &&
           content->compare(content->size() - end.size(), end.size(), end) == 0;
}

/// The newest complete backup; numbers grow with age of the incident, so the highest is the newest.
int newestCompleteBackup(const std::filesystem::path& directory)
{
    for (int number = kMaxBackups; number >= 0; --number) {
        if (isComplete(readFile(backupFile(directory, number)))) {
            return number;
        }
    }
    return -1;
}

void removeBackups(const std::filesystem::path& directory)
{
    for (int number = 0; number <= kMaxBackups; ++number) {
        removeDurably(backupFile(directory, number));
    }
}

/// Whole lines only: the last one may have been cut.
void dropCutLine(const std::filesystem::path& file, const std::string& content)
{
    if (!content.empty() && content.back() != '\n') {
        writeDurably(file, content.substr(0, content.rfind('\n') + 1));
    }
}

void repair(const std::filesystem::path& directory)
{
    const auto file = persistentFile(directory);
    const auto content = readFile(file);
    if (!isComplete(content)) {
        const int backup = newestCompleteBackup(directory);
        if (backup >= 0) {
            hostLog()->warn("{} was cut short: restored from {}", file.string(),
                            backupFile(directory, backup).string());
            renameDurably(backupFile(directory, backup), file);
        } else if (content) {
            dropCutLine(file, *content);
        }
    }
    removeBackups(directory);
}

bool tellsTheEngine(const std::string& line)
{
    return line.rfind("engineBoots ", 0) == 0 || line.rfind("oldEngineID ", 0) == 0;
}

/// The library tells of a full disk nowhere, and leaves a file that it cannot replace as it was.
bool isWritten(const std::filesystem::path& file)
{
    try {
        return isComplete(readFile(file));
    } catch (const StartupError&) {
        return false;
    }
}

int writeEndMark(int, int, void*, void*)
{
    return guardCallback("net-snmp's persistent file", SNMPERR_GENERR, [] {
        read_config_store(kApplicationName, kEndMark);
        return SNMPERR_SUCCESS;
    });
}

}  // namespace

std::string persistentDirectory(const std::string& stateDir)
{
    return std::filesystem::absolute(std::filesystem::path(stateDir) / "net-snmp").string();
}

std::string persistentFileIn(const std::string& directory)
{
    return persistentFile(directory).string();
}

void preparePersistentDirectory(const std::string& directory)
{
    makePrivateDirectory(directory);
    repair(directory);
}

std::optional<EngineState> persistentEngineState(const std::string& directory)
{
    const auto content = readFile(persistentFile(directory));
    std::map<std::string, std::string> values;
    std::istringstream lines(content.value_or(""));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string word;
        std::string value;
        if (words >> word >> value) {
            values[word] = value;
        }
    }
    const auto& id = values["oldEngineID"];
    const auto octets = id.rfind("0x", 0) == 0 ? fromHex(id.substr(2)) : std::nullopt;
    const auto& text = values["engineBoots"];
    std::uint32_t boots = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), boots);
    if (!octets || !isOwnEngineId(*octets) || parsed.ec != std::errc() ||
        parsed.ptr != text.data() + text.size() || boots == 0 || boots > kMaxEngineBoots) {
        return std::nullopt;
    }
    return EngineState{*octets, boots};
}

void storeForLibrary(const std::string& directory, const EngineState& engine)
{
    const auto file = persistentFile(directory);
    std::istringstream lines(readFile(file).value_or(""));
    std::string content;
    for (std::string line; std::getline(lines, line);) {
        if (!tellsTheEngine(line) && line != kEndMark) {
            content += line + "\n";
        }
    }
    // The library adds one when it reads the number.
    content += "engineBoots " + std::to_string(engine.boots - 1) + "\n";
    content += "oldEngineID 0x" + toHex(engine.id) + "\n";
    writeDurably(file, content + kEndMark + "\n");
}

std::optional<std::string> storeForNextStart(const std::string& directory)
{
    const auto file = persistentFile(directory);
    const auto former = backupFile(directory, 0);
    std::error_code error;
    if (!isWritten(file) && isWritten(former)) {  // what an earlier failure has left
        std::filesystem::rename(former, file, error);
    }
    std::filesystem::rename(file, former, error);
    if (error && error != std::errc::no_such_file_or_directory) {
        return file.string() + " cannot be written: " + error.message();
    }
    snmp_save_persistent(kApplicationName);
    snmp_call_callbacks(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_STORE_DATA, nullptr);
    if (isWritten(file)) {
        snmp_clean_persistent(kApplicationName);
        return std::nullopt;
    }
    std::filesystem::rename(former, file, error);
    return file.string() + " cannot be written whole; look whether the disk is full" +
           (error ? "; the former one is " + former.string() : "");
}

void markPersistentFileComplete()
{
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_STORE_DATA, &writeEndMark, nullptr);
}

}  // namespace talvik
