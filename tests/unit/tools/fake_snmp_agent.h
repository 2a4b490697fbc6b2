#pragma once

#include "tools/snmp_request.h"
#include "tools/snmp_status.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace talvik::test {

using ctl::ObjectId;
using ctl::SnmpAnswer;
using ctl::SnmpCell;

inline SnmpCell textCell(const std::string& text)
{
    SnmpCell cell;
    cell.kind = SnmpCell::Kind::Text;
    cell.text = text;
    return cell;
}

inline SnmpCell numberCell(std::int64_t number)
{
    SnmpCell cell;
    cell.kind = SnmpCell::Kind::Integer;
    cell.number = number;
    return cell;
}

/// An agent without a network: it has the cells `shown` and answers each SET as `onSet` does.
class FakeSnmpAgent : public ctl::SnmpRequester {
public:
    std::map<ObjectId, SnmpCell> shown;
    ObjectId shownTable;  ///< a GET below it finds no instance, any other no object
    bool v1 = false;
    std::size_t cellsPerAnswer = 1000;
    std::size_t reads = 0;
    std::vector<std::vector<SnmpCell>> sets;
    std::function<SnmpAnswer(const std::vector<SnmpCell>&)> onSet;

    SnmpAnswer get(const std::vector<ObjectId>& names) override
    {
        ++reads;
        SnmpAnswer answer;
        for (const auto& name : names) {
            const auto found = shown.find(name);
            auto cell = found == shown.end() ? missing(name) : found->second;
            if (v1 && found == shown.end()) {
                return noSuchName(answer.cells.size() + 1);
            }
            cell.oid = name;
            answer.cells.push_back(cell);
        }
        return answer;
    }

    SnmpAnswer getNext(const std::vector<ObjectId>& names) override
    {
        ++reads;
        SnmpAnswer answer;
        for (const auto& name : names) {
            const auto cell = next(name);
            if (v1 && cell.kind == SnmpCell::Kind::EndOfView) {
                return noSuchName(answer.cells.size() + 1);
            }
            answer.cells.push_back(cell);
        }
        return answer;
    }

    SnmpAnswer getBulk(const std::vector<ObjectId>& names, unsigned repetitions) override
    {
        ++reads;
        SnmpAnswer answer;
        auto at = names;
        for (unsigned line = 0; line < repetitions; ++line) {
            for (auto& name : at) {
                if (answer.cells.size() == cellsPerAnswer) {
                    return answer;
                }
                answer.cells.push_back(next(name));
                name = answer.cells.back().oid;
            }
        }
        return answer;
    }

    SnmpAnswer set(const std::vector<SnmpCell>& wanted) override
    {
        sets.push_back(wanted);
        return onSet ? onSet(wanted) : SnmpAnswer{};
    }

    bool isV1() const override { return v1; }
    const std::string& agent() const override { return agent_; }

protected:
    static SnmpAnswer noSuchName(std::size_t index)
    {
        SnmpAnswer answer;
        answer.status = ctl::kStatusNoSuchName;
        answer.errorIndex = index;
        return answer;
    }

private:
    SnmpCell missing(const ObjectId& name) const
    {
        const bool known = !shownTable.empty() && name.size() > shownTable.size() &&
                           std::equal(shownTable.begin(), shownTable.end(), name.begin());
        SnmpCell cell;
        cell.kind = known ? SnmpCell::Kind::NoInstance : SnmpCell::Kind::NoObject;
        return cell;
    }

    SnmpCell next(const ObjectId& name) const
    {
        const auto found = shown.upper_bound(name);
        SnmpCell cell;
        cell.kind = SnmpCell::Kind::EndOfView;
        cell.oid = name;
        if (found != shown.end()) {
            cell = found->second;
            cell.oid = found->first;
        }
        return cell;
    }

    std::string agent_ = "udp:192.0.2.1:1161";
};

/// The answer to a SET whose variable `index`, from 1, is refused with `status`.
inline SnmpAnswer refusedWith(int status, std::size_t index)
{
    SnmpAnswer answer;
    answer.status = status;
    answer.errorIndex = index;
    return answer;
}

}  // namespace talvik::test
