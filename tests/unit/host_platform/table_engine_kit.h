#pragma once

#include "framework/kel_exception.h"
#include "host/link/configuration_link.h"
#include "host/platform/table_batch.h"
#include "host/snmp/request_context.h"
#include "platform/snmp_table_base.h"
#include "tests/support/throw_text.h"
#include "tests/unit/host_snmp/table_kit.h"

#include <agent_pp/snmp_pp_ext.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace talvik::test {

using TablePackage = CTLVPackageV3<TLVMsgHeadV3>;

constexpr int kGet = 160;
constexpr int kGetNext = 161;
constexpr int kGetBulk = 165;

constexpr unsigned short kKeyTag = 3;
constexpr unsigned short kNoMark = 0;
constexpr unsigned short kNoRowTag = 5;
constexpr unsigned short kHiddenTag = 6;
constexpr unsigned short kBrokenTag = 8;

/// Makes its requests as the handler of the active alarms does, and its rows of the key alone.
class KeyedTable : public CSnmpTableBase {
public:
    int preGetRspCell(const CTLVRecordV3&) override { return before; }
    int postGetRspCell(const CTLVRecordV3&) override { return behind; }

    void fillReqRecord(CTLVRecordV3* record) override
    {
        kinds.push_back(m_iRequestKind);
        keys.push_back(m_sCurrentKey);
        record->ullRecordId = 77;
        auto start = m_sCurrentKey == INVALID_KEY ? 0 : std::stoull(m_sCurrentKey);
        if (m_iRequestKind == kGet && start != 0) {
            --start;
        }
        add(*record, 3, static_cast<std::uint32_t>(start));
        add(*record, 9, m_iRequestKind == kGetBulk ? 50U : 1U);
    }

    void fillRspRecord(const CTLVRecordV3& record, CTLVRecordV3* row) override
    {
        if (record.find(kBrokenTag) != record.pCells->end()) {
            throw CKEL_Exception("broken record");
        }
        if (record.find(kNoRowTag) == record.pCells->end()) {
            add(*row, 1, CTLVCell::ValueCast<unsigned int>()(record[kKeyTag]));
        }
    }

    std::string getIndexOfRecord(const CTLVRecordV3& record) override
    {
        return record[kKeyTag]->toString();
    }

    std::string getMibKey(const Agentpp::Oidx& oid) override
    {
        return oid.len() == 7 ? std::to_string(oid[6]) : INVALID_KEY;
    }

    bool queryRecordValidation(const CTLVRecordV3& record) override
    {
        return CSnmpTableBase::queryRecordValidation(record) &&
               record.find(kHiddenTag) == record.pCells->end();
    }

    bool checkOKBeforeQueryTable(const CKEL_SnmpContext&) override { return allowed; }

    using CSnmpTableBase::m_bWholeTable;

    std::vector<int> kinds;
    std::vector<std::string> keys;
    int before = 0;
    int behind = 0;
    bool allowed = true;

private:
    static void add(CTLVRecordV3& record, unsigned short tag, std::uint32_t number)
    {
        auto made = cell(CTLVCell::TLV_UINT, tag, bytesOf(number));
        record.append(made.get());
        made.release();
    }
};

/// A back end: what it was asked, as "start count", and what it answers.
struct BackEnd {
    using Answering =
        std::function<int(std::uint32_t start, std::uint32_t count, TablePackage& answer)>;

    std::vector<std::string> asked;
    std::vector<std::uint64_t> commands;
    Answering answering;
};

class ScriptedBackEnd : public BackendLink {
public:
    explicit ScriptedBackEnd(BackEnd& script) : script_(script) {}

    int exchange(TablePackage& request, TablePackage& answer) override
    {
        const auto& record = *request[0];
        const auto start = CTLVCell::ValueCast<unsigned int>()(record[3]);
        const auto count = CTLVCell::ValueCast<unsigned int>()(record[9]);
        script_.commands.push_back(record.ullRecordId);
        script_.asked.push_back(std::to_string(start) + " " + std::to_string(count));
        if (script_.asked.size() > kTooManyQuestions) {
            return kProtocolError;  // so that a query without an end fails its test
        }
        return script_.answering(start, count, answer);
    }

    std::string name() const override { return "scripted"; }

private:
    static constexpr std::size_t kTooManyQuestions = 1000;

    BackEnd& script_;
};

inline void addRecord(TablePackage& answer, std::uint32_t key, unsigned short mark = kNoMark)
{
    RowBuilder record;
    record.add(cell(CTLVCell::TLV_UINT, kKeyTag, bytesOf(key)));
    if (mark != kNoMark) {
        record.number(mark, 1);
    }
    record.into(answer);
}

class TableEngine : public testing::Test {
protected:
    TableEngine()
    {
        installBackendLink(std::make_unique<ScriptedBackEnd>(backEnd));
        limitTableQueries(std::chrono::milliseconds(2000), [this] { return now; });
    }

    ~TableEngine() override
    {
        installBackendLink(nullptr);
        limitTableQueries(std::chrono::milliseconds(2000));
    }

    /// The back end has records with these keys; those that `mark` tells of have a cell with that
    /// tag too. Behind the last there is an end mark.
    void serve(
        const std::vector<std::uint32_t>& keys,
        const std::function<unsigned short(std::uint32_t)>& mark = [](std::uint32_t) {
            return kNoMark;
        })
    {
        backEnd.answering = [=](std::uint32_t start, std::uint32_t count, TablePackage& answer) {
            for (const auto key : keys) {
                if (key <= start) {
                    continue;
                }
                if (count-- == 0) {
                    return 0;
                }
                addRecord(answer, key, mark(key));
            }
            appendEndMark(answer);
            return 0;
        };
    }

    /// The back end answers so, whatever it is asked.
    void answerWith(const std::function<void(TablePackage& answer)>& fill)
    {
        backEnd.answering = [fill](std::uint32_t, std::uint32_t, TablePackage& answer) {
            fill(answer);
            return 0;
        };
    }

    int query(int kind, std::uint64_t key = kNoKey)
    {
        CKEL_SnmpContext context;
        context.pduType = kind;
        context.oid = {7, 1, 2, 3, 1, 1};
        if (key != kNoKey) {
            context.oid.push_back(key);
        }
        response.clear();
        return table.OnQueryTable(context, TablePackage(), response);
    }

    /// What a query throws.
    std::string failureOf(int kind, std::uint64_t key = kNoKey)
    {
        return textOfThrown([&] { query(kind, key); });
    }

    /// The rows that came, by key; "end" for an end mark.
    std::vector<std::string> rows() const
    {
        std::vector<std::string> texts;
        for (const auto* record : response.oRecords) {
            texts.push_back(isEndMark(*record) ? "end" : (*record)[1]->toString());
        }
        return texts;
    }

    static constexpr std::uint64_t kNoKey = std::numeric_limits<std::uint64_t>::max();

    BackEnd backEnd;
    std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
    KeyedTable table;
    TablePackage response;
};

}  // namespace talvik::test
