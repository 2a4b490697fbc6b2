#include "fuzz/properties/trap_list.h"

#include <algorithm>
#include <tuple>

namespace talvik::fuzz {

namespace {

constexpr std::size_t kMostRows = 8;

auto fieldsOf(const tTrapDestInfo& row)
{
    return std::tie(row.index, row.address, row.port, row.version, row.type, row.user);
}

bool same(const tTrapDestInfo& one, const tTrapDestInfo& other)
{
    return fieldsOf(one) == fieldsOf(other);
}

bool same(const TrapChange& one, const TrapChange& other)
{
    return one.call == other.call && one.word3 == other.word3 &&
           same(one.destination, other.destination);
}

}  // namespace

std::vector<tTrapDestInfo>::iterator TrapList::rowOf(const std::string& index)
{
    return std::find_if(rows.begin(), rows.end(),
                        [&index](const auto& row) { return row.index == index; });
}

int TrapList::create(const tTrapDestInfo& destination, unsigned word3)
{
    lastChange = TrapChange{'c', destination, word3};
    if (rows.size() == kMostRows) {
        return 1;
    }
    tTrapDestInfo row = destination;
    row.index = std::to_string(word3);
    if (rowOf(row.index) != rows.end()) {
        return 2;
    }
    rows.push_back(row);
    return 0;
}

int TrapList::modify(const tTrapDestInfo& destination, unsigned word3)
{
    lastChange = TrapChange{'m', destination, word3};
    const auto row = rowOf(destination.index);
    if (row == rows.end()) {
        return 3;
    }
    *row = destination;
    return 0;
}

int TrapList::remove(const tTrapDestInfo& destination, unsigned word3)
{
    lastChange = TrapChange{'d', destination, word3};
    const auto row = rowOf(destination.index);
    if (row == rows.end()) {
        return 3;
    }
    rows.erase(row);
    return 0;
}

bool operator==(const TrapList& one, const TrapList& other)
{
    if (one.lastChange.has_value() != other.lastChange.has_value() ||
        (one.lastChange && !same(*one.lastChange, *other.lastChange))) {
        return false;
    }
    return std::equal(one.rows.begin(), one.rows.end(), other.rows.begin(), other.rows.end(),
                      [](const auto& row, const auto& twin) { return same(row, twin); });
}

bool isAddressAccepted(const std::string& address)
{
    return !address.empty() && address.find('!') == std::string::npos;
}

bool isIndexAccepted(const std::string& index)
{
    return !index.empty() && std::all_of(index.begin(), index.end(), [](char character) {
        return character >= '0' && character <= '9';
    });
}

bool isPortAccepted(unsigned port)
{
    return port != 0 && port < 65536;
}

bool isVersionAccepted(unsigned version)
{
    return version >= 1 && version <= 3;
}

bool isTypeAccepted(unsigned type)
{
    return type >= 1 && type <= 7;
}

bool isUserAccepted(const std::string& user)
{
    return user.size() <= 4;
}

bool isReachable(const std::string& address)
{
    return address.find('?') == std::string::npos;
}

}  // namespace talvik::fuzz
