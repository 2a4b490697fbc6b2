#include "tests/support/fake_trap_host.h"

#include "platform/snmp_util.h"
#include "platform/trap_api.h"
#include "tests/support/fake_host.h"

namespace talvik::test {

TrapFields fieldsOf(const tTrapDestInfo& destination)
{
    return {destination.index,   destination.address, destination.port,
            destination.version, destination.type,    destination.user};
}

tTrapDestInfo destinationOf(const TrapFields& fields)
{
    tTrapDestInfo destination;
    std::tie(destination.index, destination.address, destination.port, destination.version,
             destination.type, destination.user) = fields;
    return destination;
}

bool TrapChange::operator==(const TrapChange& other) const
{
    return call == other.call && destination == other.destination && word3 == other.word3;
}

std::ostream& operator<<(std::ostream& os, const TrapChange& change)
{
    const tTrapDestInfo info = destinationOf(change.destination);
    return os << change.call << " index \"" << info.index << "\" address \"" << info.address
              << "\" port " << info.port << " version " << info.version << " type " << info.type
              << " user \"" << info.user << "\" word3 " << change.word3;
}

void FakeTrapHost::reset()
{
    *this = FakeTrapHost();
}

FakeTrapHost& fakeTrapHost()
{
    static FakeTrapHost host;
    return host;
}

namespace {

int change(const char* call, const tTrapDestInfo& destination, unsigned word3)
{
    fakeHost().enter(call);
    if (fakeHost().recording) {
        fakeTrapHost().changes.push_back({call, fieldsOf(destination), word3});
    }
    return fakeTrapHost().changeResult;
}

template <typename Value>
bool check(const char* call, const tTrapDestInfo& destination, const std::set<Value>& refused,
           const Value& value)
{
    fakeHost().enter(call);
    if (fakeHost().recording) {
        fakeTrapHost().checks.emplace_back(call, fieldsOf(destination));
    }
    return refused.count(value) == 0;
}

}  // namespace

}  // namespace talvik::test

using talvik::test::fakeHost;
using talvik::test::fakeTrapHost;

int CSNMP_TrapApi::getAllTrapAddr(std::list<tTrapDestInfo>& destinations)
{
    fakeHost().enter("getAllTrapAddr");
    const auto& all = fakeTrapHost().destinations;
    destinations.insert(destinations.end(), all.begin(), all.end());
    return fakeTrapHost().listResult;
}

int CSNMP_TrapApi::createTrapAddr(const tTrapDestInfo& destination, unsigned int uiWord3)
{
    return talvik::test::change("createTrapAddr", destination, uiWord3);
}

int CSNMP_TrapApi::modifyTrapAddr(const tTrapDestInfo& destination, unsigned int uiWord3)
{
    return talvik::test::change("modifyTrapAddr", destination, uiWord3);
}

int CSNMP_TrapApi::deleteTrapAddr(const tTrapDestInfo& destination, unsigned int uiWord3)
{
    return talvik::test::change("deleteTrapAddr", destination, uiWord3);
}

bool SnmpUtil::CheckIPAddrOK(std::string address)
{
    fakeHost().enter("CheckIPAddrOK");
    if (fakeHost().recording) {
        fakeTrapHost().addressesChecked.push_back(address);
    }
    return fakeTrapHost().refusedAddresses.count(address) == 0;
}

bool SnmpUtil::CheckTrapIndOK(tTrapDestInfo& destination)
{
    return talvik::test::check("CheckTrapIndOK", destination, fakeTrapHost().refusedIndexes,
                               destination.index);
}

bool SnmpUtil::CheckTrapPortOK(tTrapDestInfo& destination)
{
    return talvik::test::check("CheckTrapPortOK", destination, fakeTrapHost().refusedPorts,
                               destination.port);
}

bool SnmpUtil::CheckTrapVerOK(tTrapDestInfo& destination)
{
    return talvik::test::check("CheckTrapVerOK", destination, fakeTrapHost().refusedVersions,
                               destination.version);
}

bool SnmpUtil::CheckTrapTypeOK(tTrapDestInfo& destination)
{
    return talvik::test::check("CheckTrapTypeOK", destination, fakeTrapHost().refusedTypes,
                               destination.type);
}

bool SnmpUtil::CheckTrapUserOK(tTrapDestInfo& destination)
{
    return talvik::test::check("CheckTrapUserOK", destination, fakeTrapHost().refusedUsers,
                               destination.user);
}

bool SnmpUtil::TestDomainConnectivity(const char* address)
{
    fakeHost().enter("TestDomainConnectivity");
    if (fakeHost().recording) {
        fakeTrapHost().addressesTried.emplace_back(address);
    }
    return fakeTrapHost().unreachable.count(address) == 0;
}

void SnmpUtil::SplitToStr(std::string text, char separator, std::vector<std::string>& fields)
{
    fakeHost().enter("SplitToStr");
    std::size_t begin = 0;
    for (auto end = text.find(separator); end != std::string::npos;
         end = text.find(separator, begin)) {
        fields.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    fields.push_back(text.substr(begin));
}
