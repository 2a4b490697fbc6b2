# Finds AGENT++: target AgentPP::AgentPP, which brings SnmpPP::SnmpPP.
# Hint: AGENT_PP_ROOT, the folder that holds include/ and lib/.
find_path(AgentPP_INCLUDE_DIR agent_pp/snmp_pp_ext.h HINTS ${AGENT_PP_ROOT} PATH_SUFFIXES include)
find_library(AgentPP_LIBRARY agent++ HINTS ${AGENT_PP_ROOT} PATH_SUFFIXES lib lib64)
mark_as_advanced(AgentPP_INCLUDE_DIR AgentPP_LIBRARY)
find_package(SnmpPP QUIET)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(AgentPP
    REQUIRED_VARS AgentPP_LIBRARY AgentPP_INCLUDE_DIR SnmpPP_FOUND
    REASON_FAILURE_MESSAGE "Set AGENT_PP_ROOT to the folder that AGENT++ is installed in (include/agent_pp/snmp_pp_ext.h and lib/libagent++). It needs SNMP++ too, see SNMP_PP_ROOT.")

if(AgentPP_FOUND AND NOT TARGET AgentPP::AgentPP)
    add_library(AgentPP::AgentPP UNKNOWN IMPORTED)
    set_target_properties(AgentPP::AgentPP PROPERTIES
        IMPORTED_LOCATION "${AgentPP_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${AgentPP_INCLUDE_DIR}"
        INTERFACE_LINK_LIBRARIES SnmpPP::SnmpPP)
endif()
