// A library that `missing_library` was linked with and that is nowhere to be found when that is
// loaded.
extern "C" __attribute__((visibility("default"))) int SNMP_AbsentLibrary()
{
    return 0;
}
