#pragma once

#include "framework/snmp_table_handler.h"
#include "platform/svc_module.h"

#include <list>
#include <string>
#include <utility>

namespace talvik::test {

/// The topology table, which the modules here serve in one wrong way or another.
constexpr const char* kTopologyTable = "1.3.6.1.4.1.99999.2.91.9.1";

/// A module that serves one table with a new `Handler`.
template <typename Handler>
class OneTableModule : public CSNMP_Svc_Module {
public:
    explicit OneTableModule(std::string id = kTopologyTable) : id_(std::move(id)) {}

    std::string getMibFileName() override { return "KEL-TALVIK-MIB.json"; }

    void getSvcHandler(std::list<std::pair<const std::string, CSnmpHandler*>>& handlers) override
    {
        handlers.emplace_back(id_, new Handler);
    }

private:
    std::string id_;
};

/// A table handler whose answer `Answer` gives: a callable of the response package.
template <typename Answer>
class AnsweringHandler : public CSnmpTableHandler {
public:
    int OnQueryTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                     CTLVPackageV3<TLVMsgHeadV3>& rsp) override
    {
        return Answer()(rsp);
    }
};

}  // namespace talvik::test

/// Marks the one function that a module exports.
#define TALVIK_TEST_FACTORY extern "C" __attribute__((visibility("default")))
