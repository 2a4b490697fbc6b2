#pragma once

#include "platform/snmp_table_base.h"

#include <string>

/// The current alarm table, 1.3.6.1.4.1.99999.2.91.10.1.1: the alarms that are active now, one row
/// each. The host's table engine asks the back end and calls these hooks; the order of members and
/// of virtual operations is binary contract.
class CSnmpTalvikKelAlarmHandler : public CSnmpTableBase {
public:
    /// Reads the number of the command that reads the current alarms from the device configuration.
    CSnmpTalvikKelAlarmHandler();

    /// Both do nothing and return 0.
    int preGetRspCell(const CTLVRecordV3& record) override;
    int postGetRspCell(const CTLVRecordV3& record) override;

    /// Asks for the next alarms by kind and key of the query being answered: one for a Get or
    /// GetNext, 50 for a GetBulk.
    void fillReqRecord(CTLVRecordV3* record) override;

    /// Appends the twelve cells of an alarm's row. Appends nothing for a record that is no alarm,
    /// a clear, an event or an alarm without a definition, and when reading the alarm fails: a cell
    /// that is missing or of the wrong kind is a `CKEL_Exception`. When it throws while it appends,
    /// the cells appended before are the row's.
    void fillRspRecord(const CTLVRecordV3& record, CTLVRecordV3* row) override;

    /// The alarm's serial number as text.
    std::string getIndexOfRecord(const CTLVRecordV3& record) override;

    /// The last of exactly seven sub-identifiers as text; `INVALID_KEY` for any other OID.
    std::string getMibKey(const Agentpp::Oidx& oid) override;

    /// Whether the time of an alarm goes out as DateAndTime: true. Otherwise as display text.
    virtual bool useDateAndTime();

private:
    long long commandCode;
};
