#include "bench/alarm_agents.h"

#include "bench/talvik_arguments.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <system_error>

namespace talvik::bench {

namespace {

constexpr long kRepetitions = 50;
constexpr std::size_t kLocation = 2;  // the column

TableCell cellOf(const netsnmp_variable_list& variable)
{
    return {variable.type,
            std::string(reinterpret_cast<const char*>(variable.val.string), variable.val_len)};
}

}  // namespace

ObjectId alarmTable()
{
    return {1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 1, 1};
}

AlarmAgent::AlarmAgent(const std::string& folder, unsigned port)
    : port_(port),
      process_(programBeside("talvik-agentd"), talvikArguments(folder, port),
               folder + "/talvik-agentd.log"),
      manager_(port, kCommunity)
{
    process_.waitUntil([this] { return manager_.answers(); });
    process_.waitUntilIdle();
}

AlarmAgent::AlarmAgent(const std::string& folder, const std::string& rowsFile, unsigned port)
    : port_(port),
      process_(ownProgram(), {kServeContainer, std::to_string(port), folder, rowsFile},
               folder + "/container.log"),
      manager_(port, kCommunity)
{
    process_.waitUntil([this] { return manager_.answers(); });
    process_.waitUntilIdle();
}

std::size_t AlarmAgent::walk() const
{
    return manager_.walk(alarmTable(), kRepetitions);
}

TableRows AlarmAgent::rows(std::size_t count) const
{
    TableRows all{alarmTable(), ASN_UNSIGNED, {}};
    std::size_t seen = 0;
    manager_.walk(alarmTable(), kRepetitions, [&](const netsnmp_variable_list& variable) {
        const auto index = variable.name[variable.name_length - 1];
        if (seen < count) {
            all.rows.push_back({index, {}});
        }
        if (auto& row = all.rows[seen % count]; row.index == index) {
            row.cells.push_back(cellOf(variable));
        }
        ++seen;
    });
    for (const auto& row : all.rows) {
        if (seen != count * kAlarmColumns || row.cells.size() != kAlarmColumns ||
            row.cells[kLocation - 1].octets.empty()) {
            throw std::runtime_error("the agent shows " + std::to_string(seen) +
                                     " variables of its alarms, or alarms without texts; its "
                                     "installation root must hold etc/ with the catalogue");
        }
    }
    if (all.rows.size() != count) {
        throw std::runtime_error("the agent serves no table of current alarms");
    }
    return all;
}

void walkWithStockManager(unsigned port)
{
    auto root = toText(alarmTable());
    auto peer = "udp:127.0.0.1:" + std::to_string(port);
    std::array<std::string, 5> words = {"snmpbulkwalk", "-v2c", "-c", kCommunity, "-Cr50"};
    std::array<char*, 8> argv = {words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                                 words[4].data(), peer.data(),     root.data(),     nullptr};
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    const int error = posix_spawnp(&pid, argv[0], &files, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), "cannot start snmpbulkwalk");
    }
    int status = 0;
    if (waitpid(pid, &status, 0) != pid || status != 0) {
        throw std::runtime_error("snmpbulkwalk failed; what it said is above");
    }
}

}  // namespace talvik::bench
