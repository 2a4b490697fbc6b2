#include "tests/contract/modules/faulty_module.h"

#include <stdexcept>

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    throw std::runtime_error("the factory is out of order");
}
