#pragma once

#include "handlers/snmp_talvik_kel_alarm_handler.h"
#include "tests/support/alarm_cells.h"
#include "tests/support/cell_bytes.h"
#include "tests/support/fake_notify_host.h"
#include "tests/support/throw_text.h"
#include "tests/unit/alarmconfig/alarm_catalogue_kit.h"

#include <string>
#include <vector>

namespace talvik::test {

/// The handler as the host's table engine sees it: with the members of the query being answered.
class OpenAlarmTable : public CSnmpTalvikKelAlarmHandler {
public:
    using CSnmpTalvikKelAlarmHandler::m_bWholeTable;
    using CSnmpTalvikKelAlarmHandler::m_iRequestKind;
    using CSnmpTalvikKelAlarmHandler::m_sCurrentKey;
};

/// As the handler, with times as display text.
class AlarmTableWithTimesAsText : public CSnmpTalvikKelAlarmHandler {
public:
    bool useDateAndTime() override { return false; }
};

/// An active fault of the known alarm, as the back end tells of it.
inline AlarmCells activeAlarm()
{
    return AlarmCells().without(5).without(6).cell(0, CTLVCell::TLV_UINT, "\x01");
}

/// Base of the tests of rows: a catalogue with the known alarm, alarms at the edges of the five
/// events, and one whose text cannot be filled.
class AlarmRowTest : public AlarmCatalogueTest {
protected:
    AlarmRowTest()
    {
        defineAlarms(R"({"eventID":"64437682177","name":"Disk failed","detail":"Disk ##00 failed.",
            "location":"Enclosure ##01","suggestion":"Replace ##00."},
            {"eventID":"507010005"},{"eventID":"507010006"},{"eventID":"507010007"},
            {"eventID":"507010008"},{"eventID":"507010009"},{"eventID":"507010010"},
            {"eventID":"507010011"},{"eventID":"4801977302"},{"eventID":"4801977307"},
            {"eventID":"3","detail":"x","location":"##"})");
        parser();
        host.log.clear();  // of the lines about loading
    }

    /// The row of an alarm with these cells.
    std::vector<CellBytes> rowOf(const AlarmCells& cells)
    {
        CTLVRecordV3 row;
        handler.fillRspRecord(*cells.record(), &row);
        return cellsOf(row);
    }

    /// The value of one cell of that row.
    std::string valueOf(const AlarmCells& cells, unsigned tag)
    {
        for (const auto& cell : rowOf(cells)) {
            if (cell.tag == tag) {
                return cell.bytes;
            }
        }
        return "no such cell";
    }

    OpenAlarmTable handler;
};

}  // namespace talvik::test
