#pragma once

#include "framework/snmp_table_handler.h"
#include "framework/tlv_package.h"

#include <string>

class CTLVRecordV3;

namespace Agentpp {
class Oidx;
}

/// The host's engine for large tables: it turns one SNMP query into batched back-end requests and
/// asks a derived handler, through the hooks, for request cells, row keys and response cells. The
/// order of members and of virtual operations is binary contract. Like every handler it serves one
/// request at a time.
///
/// Operations with a body here are compiled into the module. The host supplies all others, and with
/// them the class's vtable and type information and `INVALID_KEY`, and must export these too.
class CSnmpTableBase : public CSnmpTableHandler {
public:
    CSnmpTableBase() = default;
    ~CSnmpTableBase() override = default;

    /// Answers a table query and fills `rsp`; 0 on success. The only caller of the hooks of a
    /// derived handler.
    int OnQueryTable(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>& req,
                     CTLVPackageV3<TLVMsgHeadV3>& rsp) override;

    /// The whole-table flag: false unless a derived handler sets it, so the table is driven batch
    /// by batch.
    bool isWholeTable() override { return m_bWholeTable; }

    /// Hooks called before and after the response cells of a back-end record are asked for; 0 on
    /// success.
    virtual int preGetRspCell(const CTLVRecordV3& record) = 0;
    virtual int postGetRspCell(const CTLVRecordV3& record) = 0;

    /// Fetches the table from the back end into `pkg`; 0 on success.
    virtual int GetTableInfo(std::string key, CTLVPackageV3<TLVMsgHeadV3>& pkg);

    /// Fetches up to `count` rows after `key` into `pkg`; 0 on success.
    virtual int GetBatchTableInfo(std::string key, unsigned int count,
                                  CTLVPackageV3<TLVMsgHeadV3>& pkg);

    /// One step of the above: sends one request and reports the next key, the number of rows and a
    /// result code through its reference arguments. What `key` and `recordId` carry is the host's.
    virtual int GetBatchTableInfo_i(CTLVPackageV3<TLVMsgHeadV3>& req, std::string& key,
                                    std::string& nextKey, unsigned long long& recordId,
                                    unsigned int& count, int& result,
                                    CTLVPackageV3<TLVMsgHeadV3>& rsp);

    /// Hook: fills the request record for the next batch.
    virtual void fillReqRecord(CTLVRecordV3* record) = 0;

    /// Hook: turns one back-end record into a row's cells; appends nothing for a record that is no
    /// row.
    virtual void fillRspRecord(const CTLVRecordV3& record, CTLVRecordV3* row) = 0;

    /// Hook: the row key of a back-end record.
    virtual std::string getIndexOfRecord(const CTLVRecordV3& record) = 0;

    /// Hook: the key that a request's OID, relative to 1.3.6.1.4.1.99999.2, asks for, or
    /// `INVALID_KEY`.
    virtual std::string getMibKey(const Agentpp::Oidx& oid) = 0;

    /// Tells whether a back-end record may be shown.
    virtual bool queryRecordValidation(const CTLVRecordV3& record);

    /// Asked once before each query; false refuses it.
    virtual bool checkOKBeforeQueryTable(const CKEL_SnmpContext&) { return true; }

    /// Sends `req` to the back end and decodes the answer into `rsp`; 0 on success.
    virtual int SendBatchPackage(CTLVPackageV3<TLVMsgHeadV3>& req,
                                 CTLVPackageV3<TLVMsgHeadV3>& rsp);

    /// Looks for the row after `key` in `req`; by default there is none to find: 0, nothing
    /// touched.
    virtual int GetNextRspInfo(const std::string&, const CTLVPackageV3<TLVMsgHeadV3>&,
                               CTLVPackageV3<TLVMsgHeadV3>&)
    {
        return 0;
    }

    /// The key value that means that no key has been set yet.
    static const std::string INVALID_KEY;

protected:
    /// PDU type of the query being answered: 160 GetRequest, 165 GetBulkRequest, anything else
    /// GetNext.
    int m_iRequestKind = 0;
    /// The key of the query being answered.
    std::string m_sCurrentKey = INVALID_KEY;
    /// The host's own.
    unsigned int m_uiBatch = 0;
    bool m_bWholeTable = false;
    /// Rows that the engine keeps between batches.
    CTLVPackageV3<TLVMsgHeadV3> m_oRows;
};
