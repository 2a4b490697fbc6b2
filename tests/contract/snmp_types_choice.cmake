# TALVIK_SNMP_TYPES: both choices build, and what does not work is refused with a message that helps.
#   cmake -DSOURCE_DIR=<tree> -DWORK_DIR=<scratch> [-DGENERATOR=..] [-DCXX=..] -P snmp_types_choice.cmake
# The real libraries are no part of a test machine: their install is imitated by the carried headers and library under the
# real names.
foreach(needed SOURCE_DIR WORK_DIR)
    if(NOT ${needed})
        message(FATAL_ERROR "snmp_types_choice: pass -D${needed}=... (see the head of the script)")
    endif()
endforeach()
set(toolchain "")
if(GENERATOR)
    list(APPEND toolchain -G "${GENERATOR}")
endif()
if(CXX)
    list(APPEND toolchain "-DCMAKE_CXX_COMPILER=${CXX}")
endif()
file(REMOVE_RECURSE "${WORK_DIR}")

function(configure name)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/snmp_types_choice" -B "${WORK_DIR}/${name}"
            "-DSOURCE_DIR=${SOURCE_DIR}" ${toolchain} ${ARGN}
        RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
    # The message is wrapped to the width of a line.
    string(REGEX REPLACE "[ \n]+" " " output "${out} ${err}")
    set(status "${status}" PARENT_SCOPE)
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_refusal name)
    if(status EQUAL 0)
        message(SEND_ERROR "${name}: configured, although it should have been refused")
    endif()
    foreach(text IN LISTS ARGN)
        string(FIND "${output}" "${text}" at)
        if(at EQUAL -1)
            message(SEND_ERROR "${name}: the message does not say \"${text}\":\n${output}")
        endif()
    endforeach()
endfunction()

function(build_and_run name)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${name}: does not configure:\n${output}")
    endif()
    execute_process(COMMAND "${CMAKE_COMMAND}" --build "${WORK_DIR}/${name}"
        RESULT_VARIABLE built OUTPUT_VARIABLE log ERROR_VARIABLE log)
    if(NOT built EQUAL 0)
        message(FATAL_ERROR "${name}: does not build:\n${log}")
    endif()
    execute_process(COMMAND "${WORK_DIR}/${name}/probe" RESULT_VARIABLE ran ERROR_VARIABLE log)
    if(NOT ran EQUAL 0)
        message(FATAL_ERROR "${name}: the program that uses the types failed (${ran}):\n${log}")
    endif()
endfunction()

configure(unknown -DTALVIK_SNMP_TYPES=borrowed)
expect_refusal(unknown "\"borrowed\"" "carried" "agentpp")

configure(no_roots -DTALVIK_SNMP_TYPES=agentpp)
# The carried headers lie in a folder of the same name: they must not pass for the libraries' own.
expect_refusal(no_roots SnmpPP_LIBRARY SnmpPP_INCLUDE_DIR AgentPP_LIBRARY AgentPP_INCLUDE_DIR
    SNMP_PP_ROOT AGENT_PP_ROOT "TALVIK_SNMP_TYPES=carried")

configure(carried -DTALVIK_SNMP_TYPES=carried)
build_and_run(carried)

set(snmp_pp "${WORK_DIR}/install/snmp_pp")
set(agent_pp "${WORK_DIR}/install/agent_pp")
file(COPY "${SOURCE_DIR}/snmp_types/include/snmp_pp" DESTINATION "${snmp_pp}/include")
file(COPY "${SOURCE_DIR}/snmp_types/include/agent_pp" DESTINATION "${agent_pp}/include")
set(library "${WORK_DIR}/carried/snmp_types/libtalvik_snmp_types.a")
file(MAKE_DIRECTORY "${snmp_pp}/lib" "${agent_pp}/lib")
file(COPY_FILE "${library}" "${snmp_pp}/lib/libsnmp++.a")
file(COPY_FILE "${library}" "${agent_pp}/lib/libagent++.a")

configure(one_root -DTALVIK_SNMP_TYPES=agentpp "-DSNMP_PP_ROOT=${snmp_pp}")
expect_refusal(one_root AGENT_PP_ROOT)

configure(real_names -DTALVIK_SNMP_TYPES=agentpp "-DSNMP_PP_ROOT=${snmp_pp}" "-DAGENT_PP_ROOT=${agent_pp}")
build_and_run(real_names)
