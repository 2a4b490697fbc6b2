// A shared object without the factory.
extern "C" __attribute__((visibility("default"))) int SNMP_NothingCreator()
{
    return 0;
}
