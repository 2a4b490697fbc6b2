#include "tests/contract/modules/faulty_module.h"

namespace {

struct Answer {
    int operator()(CTLVPackageV3<TLVMsgHeadV3>&) const { return 0; }
};

class NamesAPath : public talvik::test::OneTableModule<talvik::test::AnsweringHandler<Answer>> {
public:
    std::string getMibFileName() override { return "../KEL-TALVIK-MIB.json"; }
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return new NamesAPath;
}
