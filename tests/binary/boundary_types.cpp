// Every type and operation that crosses the module's border, named once, so that the debug
// information of this library is the whole of the binary interface. It is compiled, described and
// compared (check_abi.py), never loaded.

#include "framework/kel_exception.h"
#include "framework/notify_msg_handler.h"
#include "framework/snmp_leaf_handler.h"
#include "framework/snmp_table_handler.h"
#include "framework/tlv_package.h"
#include "handlers/snmp_talvik_kel_alarm_handler.h"
#include "handlers/snmp_talvik_kel_clear_alarm_handler.h"
#include "handlers/snmp_topo_handler.h"
#include "module/talvik_mib_module.h"
#include "notify/talvik_oid_based_msg_handler.h"
#include "platform/basic_info.h"
#include "platform/configuration_channel.h"
#include "platform/debug_kit.h"
#include "platform/debug_kit_mgr.h"
#include "platform/device_config.h"
#include "platform/installation_root.h"
#include "platform/memcpy_s.h"
#include "platform/notify_handler.h"
#include "platform/number_text.h"
#include "platform/snmp_table_base.h"
#include "platform/snmp_util.h"
#include "platform/svc_module.h"
#include "platform/time_conversion.h"
#include "platform/trap_api.h"
#include "trap/talvik_trap_addr_handler.h"
#include "trap/trap_dest_info.h"

#include <agent_pp/snmp_pp_ext.h>

#include <list>
#include <map>
#include <string>
#include <utility>

#pragma GCC visibility push(default)

namespace talvik::boundary {

/// A member operation as a free function that takes its object: a description has no pointers to
/// members.
template <typename Result, typename Class, typename... Arguments>
using Member = Result (*)(Class*, Arguments...);

template <typename Result, typename Class, typename... Arguments>
Member<Result, Class, Arguments...> free(Result (Class::*)(Arguments...));

template <typename Result, typename Class, typename... Arguments>
Member<Result, const Class, Arguments...> free(Result (Class::*)(Arguments...) const);

// What messages are made of.
CTLVCell* cell;
CTLVRecordV3* record;
TLVMsgHeadV3* head;
CTLVPackageV3<TLVMsgHeadV3>* package;
CKEL_Exception* exception;
decltype(free(&CTLVCell::setCell)) cellSetCell;
decltype(free(&CTLVCell::set_i)) cellSetI;
decltype(free(&CTLVCell::toString)) cellToString;
decltype(free(&CTLVRecordV3::append)) recordAppend;
decltype(free(&CTLVRecordV3::clear)) recordClear;
decltype(free(&CTLVRecordV3::dump)) recordDump;
decltype(free(&CTLVRecordV3::length)) recordLength;
decltype(free(&CTLVRecordV3::operator[])) recordAt;
decltype(free(&TLVMsgHeadV3::dump)) headDump;
decltype(&memcpy_s) copy;

// What the module gives the host.
decltype(&SNMP_SvcModuleCreator) creator;
SNMP_SvcModuleCreatorType creatorType;
CSNMP_Talvik_Mib_Module* module;
std::list<std::pair<const std::string, CSnmpHandler*>>* handlers;
CSnmpTopoHandler* topology;
CSnmpTalvikKelAlarmHandler* currentAlarms;
CSnmpTalvikKelClearAlarmHandler* clearAlarm;
CTalvikTrapAddrHandler* trapDestinations;
CTalvikNotifyMsgHandler* alarmTraps;
CTalvikOIDBasedMsgHandler* oidTraps;

// What the host gives the module.
CNotifyHandler* dispatcher;
CKELDebugKit* kit;
CKELDebugKitMgr* kits;
CKELXmlConfig* deviceConfig;
CSNMP_Configuration* channel;
CSnmpTableBase* tableEngine;
tTrapDestInfo* destination;
std::list<tTrapDestInfo>* destinations;
std::map<std::string, tTrapDestInfo>* destinationsByIndex;
decltype(&CNotifyHandler::instance) dispatcherInstance;
decltype(free(&CKELDebugKit::trace)) kitTrace;
decltype(free(&CKELDebugKit::debug)) kitDebug;
decltype(free(&CKELDebugKit::warn)) kitWarn;
decltype(free(&CKELDebugKit::error)) kitError;
decltype(free(&CKELDebugKitMgr::find)) kitsFind;
decltype(&CKELXmlConfig::instance) deviceConfigInstance;
decltype(free(&CKELXmlConfig::getDeviceItem)) deviceConfigItem;
decltype(&CSNMP_Configuration::instance) channelInstance;
decltype(free(&CSNMP_Configuration::configure)) channelConfigure;
decltype(&CSNMPBasicImpl::getNodeCode) nodeCode;
decltype(&CSNMPBasicImpl::getNodeType) nodeType;
decltype(&CSNMPBasicImpl::device_type) deviceType;
decltype(&CSNMPBasicImpl::product_sn) productSn;
decltype(&CSNMP_TrapApi::getAllTrapAddr) trapGetAll;
decltype(&CSNMP_TrapApi::createTrapAddr) trapCreate;
decltype(&CSNMP_TrapApi::modifyTrapAddr) trapModify;
decltype(&CSNMP_TrapApi::deleteTrapAddr) trapDelete;
decltype(&SnmpUtil::CheckIPAddrOK) checkAddress;
decltype(&SnmpUtil::CheckTrapIndOK) checkIndex;
decltype(&SnmpUtil::CheckTrapPortOK) checkPort;
decltype(&SnmpUtil::CheckTrapVerOK) checkVersion;
decltype(&SnmpUtil::CheckTrapTypeOK) checkType;
decltype(&SnmpUtil::CheckTrapUserOK) checkUser;
decltype(&SnmpUtil::TestDomainConnectivity) testConnectivity;
decltype(&SnmpUtil::SplitToStr) splitToStr;
decltype(&KEL_Utility::getKELRootEnv) installationRoot;
decltype(&KelUtility::StrToUint) strToUint;
decltype(&KelUtility::UintToStr) uintToStr;
decltype(&CSnmpUtil::convertTime2DateTime) dateTime;
decltype(&CSnmpUtil::convertTime2DateTimeStr) dateTimeText;
decltype(&CSnmpTableBase::INVALID_KEY) invalidKey;

// SNMP values, both ways.
Agentpp::Vbx* binding;
Agentpp::Oidx* oid;
Snmp_pp::OctetStr* octets;
Snmp_pp::SnmpInt32* integer;
Snmp_pp::Gauge32* gauge;
Snmp_pp::Counter64* counter;

}  // namespace talvik::boundary

#pragma GCC visibility pop
