# Finds SNMP++: target SnmpPP::SnmpPP. Hint: SNMP_PP_ROOT, the folder that holds include/ and lib/.
find_path(SnmpPP_INCLUDE_DIR snmp_pp/snmp_pp.h HINTS ${SNMP_PP_ROOT} PATH_SUFFIXES include)
find_library(SnmpPP_LIBRARY snmp++ HINTS ${SNMP_PP_ROOT} PATH_SUFFIXES lib lib64)
mark_as_advanced(SnmpPP_INCLUDE_DIR SnmpPP_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(SnmpPP
    REQUIRED_VARS SnmpPP_LIBRARY SnmpPP_INCLUDE_DIR
    REASON_FAILURE_MESSAGE "Set SNMP_PP_ROOT to the folder that SNMP++ is installed in (include/snmp_pp/snmp_pp.h and lib/libsnmp++).")

if(SnmpPP_FOUND AND NOT TARGET SnmpPP::SnmpPP)
    add_library(SnmpPP::SnmpPP UNKNOWN IMPORTED)
    set_target_properties(SnmpPP::SnmpPP PROPERTIES
        IMPORTED_LOCATION "${SnmpPP_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${SnmpPP_INCLUDE_DIR}")
endif()
