#pragma once

#include "host/platform/sqlite_database.h"
#include "host/platform/trap_store.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <csignal>
#include <functional>
#include <list>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace talvik::test {

/// Index, address, port, version, type and user.
using TrapRow = std::tuple<std::string, std::string, unsigned, unsigned, unsigned, std::string>;

inline TrapRow rowOf(const tTrapDestInfo& destination)
{
    return {destination.index,   destination.address, destination.port,
            destination.version, destination.type,    destination.user};
}

inline std::vector<TrapRow> rowsOf(const TrapStore& store)
{
    std::vector<TrapRow> rows;
    for (const auto& destination : store.all()) {
        rows.push_back(rowOf(destination));
    }
    return rows;
}

inline std::vector<std::string> indexesOf(const TrapStore& store)
{
    std::vector<std::string> indexes;
    for (const auto& destination : store.all()) {
        indexes.push_back(destination.index);
    }
    return indexes;
}

inline tTrapDestInfo destinationTo(const std::string& address, unsigned port = 162,
                                   const std::string& index = "")
{
    tTrapDestInfo destination;
    destination.index = index;
    destination.address = address;
    destination.port = port;
    return destination;
}

/// A folder with the store's file in it.
class StoreFolder : public TempDir {
public:
    static constexpr const char* kFile = "trap-destinations.db";

    std::string file() const { return path(kFile); }

    /// Changes the file behind the store's back; nobody may have it open.
    void sql(const std::string& text) const
    {
        SqliteDatabase database(file(), 1000);
        database.run(text.c_str());
    }

    /// Adds rows `first` to `last`, one to each address.
    void addRows(int first, int last) const
    {
        sql("WITH RECURSIVE n(i) AS (SELECT " + std::to_string(first) +
            " UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(last) +
            ") INSERT INTO destination SELECT i, '2001:db8::' || printf('%x', i), 162, 2, 1, "
            "'a user name of thirty-two octets' FROM n");
    }
};

/// Another process that does `work` and ends without tidying up; it goes with this process.
class OtherProcess {
public:
    explicit OtherProcess(const std::function<void()>& work) : pid_(fork())
    {
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            try {
                work();
                _exit(0);
            } catch (...) {
                _exit(1);
            }
        }
    }

    ~OtherProcess() { kill(); }

    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    /// Its wait status, once it ended.
    int wait()
    {
        if (pid_ > 0) {
            waitpid(pid_, &status_, 0);
            pid_ = -1;
        }
        return status_;
    }

    int kill()
    {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
        }
        return wait();
    }

private:
    pid_t pid_;
    int status_ = -1;
};

/// A pipe between this process and another one.
class Pipe {
public:
    Pipe()
    {
        if (pipe(ends_) != 0) {
            throw std::runtime_error("no pipe");
        }
    }

    ~Pipe()
    {
        close(ends_[0]);
        closeWriter();
    }

    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void write(const std::string& text) const
    {
        if (::write(ends_[1], text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            throw std::runtime_error("the pipe is broken");
        }
    }

    /// What is there, waiting for it; empty at the end of the pipe.
    std::string read() const
    {
        char buffer[4096];
        const auto count = ::read(ends_[0], buffer, sizeof(buffer));
        return {buffer, count > 0 ? static_cast<std::size_t>(count) : 0};
    }

    std::string readToEnd()
    {
        closeWriter();
        std::string all;
        for (auto more = read(); !more.empty(); more = read()) {
            all += more;
        }
        return all;
    }

    void closeWriter()
    {
        if (ends_[1] >= 0) {
            close(ends_[1]);
            ends_[1] = -1;
        }
    }

private:
    int ends_[2] = {-1, -1};
};

}  // namespace talvik::test
