# What is installed, in three components: the module, the agent with its back end and tool, and what hosts
# outside this tree are built with (dev). docs/operations.md has the places; host/installation_paths.h is how programs find them.
#
# With the prefix /usr, units, settings and configuration go to /lib, /etc/default and /etc/talvik too. What is in /etc
# already stays: it is the administrator's. Other prefixes get the configuration as samples in share/talvik/etc.

# Debian's place of an architecture's libraries, whatever the prefix: packages and other installations look alike.
if(CMAKE_LIBRARY_ARCHITECTURE AND EXISTS /etc/debian_version)
    set(CMAKE_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}" CACHE PATH "Place of static libraries")
endif()
include(GNUInstallDirs)

set(TALVIK_INSTALL_MODULEDIR lib/talvik)
set(TALVIK_INSTALL_DATADIR share/talvik)
set(TALVIK_INSTALL_INCLUDEDIR include/talvik)
set(TALVIK_EXAMPLES examples/README.md examples/host/CMakeLists.txt examples/host/Makefile examples/host/main.cpp)
set(TALVIK_PACKAGING_DIR "${PROJECT_SOURCE_DIR}/packaging")
set(TALVIK_PACKAGING_OUT "${PROJECT_BINARY_DIR}/packaging")

# talvik_install_compressed(COMPONENT SOURCE DESTINATION NAME): SOURCE as DESTINATION/NAME.gz, the same bytes each time.
function(talvik_install_compressed component source destination name)
    set(out "${TALVIK_PACKAGING_OUT}/${component}/${name}.gz")
    file(MAKE_DIRECTORY "${TALVIK_PACKAGING_OUT}/${component}")
    execute_process(COMMAND gzip -9 -n -c "${source}" OUTPUT_FILE "${out}" COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${source}")
    install(FILES "${out}" DESTINATION "${destination}" COMPONENT ${component})
endfunction()

# talvik_install_system_file(COMPONENT SOURCE DIRECTORY): SOURCE in DIRECTORY of the system, for the prefix /usr only.
function(talvik_install_system_file component source directory)
    get_filename_component(name "${source}" NAME)
    set(unless_kept "")
    if(directory MATCHES "^/etc/")
        set(unless_kept "AND NOT EXISTS \"\$ENV{DESTDIR}${directory}/${name}\"")
    endif()
    install(CODE "
        if(\"\${CMAKE_INSTALL_PREFIX}\" STREQUAL /usr ${unless_kept})
            file(INSTALL \"${source}\" DESTINATION \"${directory}\"
                PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
        endif()" COMPONENT ${component})
endfunction()

# talvik_install_output(NAME DESTINATION ARGUMENT...): what talvikctl prints when called so, as DESTINATION/NAME; NAME.gz is packed.
# Cross-compiled for a machine that cannot be emulated here it is left out.
set_property(GLOBAL PROPERTY TALVIK_PRINTED_FILES "")
function(talvik_install_output name destination)
    if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
        return()
    endif()
    set(out "${TALVIK_PACKAGING_OUT}/printed/${name}")
    string(REGEX REPLACE "\\.gz$" "" plain "${out}")
    set(pack "")
    if(name MATCHES "\\.gz$")
        set(pack COMMAND gzip -9 -n -c "${plain}" > "${out}")
    endif()
    file(MAKE_DIRECTORY "${TALVIK_PACKAGING_OUT}/printed")
    add_custom_command(OUTPUT "${out}" COMMAND talvikctl ${ARGN} > "${plain}" ${pack} DEPENDS talvikctl VERBATIM)
    set_property(GLOBAL APPEND PROPERTY TALVIK_PRINTED_FILES "${out}")
    install(FILES "${out}" DESTINATION "${destination}" COMPONENT agent)
endfunction()

# talvik_install_documents(COMPONENT PACKAGE): what each package has of its own.
function(talvik_install_documents component package)
    install(FILES "${TALVIK_PACKAGING_DIR}/deb/copyright" DESTINATION "share/doc/${package}" COMPONENT ${component})
    talvik_install_compressed(${component} "${TALVIK_PACKAGING_DIR}/deb/changelog" "share/doc/${package}" changelog)
endfunction()

# talvik_install_guide(): the guide as it lies in the tree, so that its links hold. It is in the package that the others depend on;
# theirs point to it. The rules of the tree stay where the tree is.
set(TALVIK_INSTALL_GUIDEDIR share/doc/talvik-mib-module/guide)
function(talvik_install_guide)
    set(programs contrib/nagios/check_talvik_alarms contrib/snmptrapd/talvik-trap-handler)
    file(GLOB pages CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" docs/*.md docs/pictures/*.svg)
    file(GLOB_RECURSE samples CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" contrib/*)
    list(APPEND pages README.md CHANGELOG.md mibs/README.md ${TALVIK_EXAMPLES} ${samples})
    # Not what interpreters and editors leave there.
    list(FILTER pages EXCLUDE REGEX "(^|/)(__pycache__/|[.#])|~$|[.](bak|orig|pyc|rej|swp)$")
    foreach(page IN LISTS pages)
        get_filename_component(directory "${page}" DIRECTORY)
        set(kind FILES)
        if(page IN_LIST programs)  # the rest is for reading
            set(kind PROGRAMS)
        endif()
        set(file "${PROJECT_SOURCE_DIR}/${page}")
        if(page MATCHES "^(docs/)?README[.]md$")
            file(READ "${file}" text)
            string(REGEX REPLACE "\\[(CONTRIBUTING[.]md)\\]\\([^)]*\\)" "\\1" text "${text}")
            set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
            set(file "${TALVIK_PACKAGING_OUT}/guide/${page}")
            file(WRITE "${file}" "${text}")
        endif()
        install(${kind} "${file}" DESTINATION "${TALVIK_INSTALL_GUIDEDIR}/${directory}" COMPONENT module)
    endforeach()
endfunction()

# talvik_install_link_to_guide(COMPONENT PACKAGE): the guide beside the package's own documents.
function(talvik_install_link_to_guide component package)
    set(link "${TALVIK_PACKAGING_OUT}/${component}/guide")
    file(MAKE_DIRECTORY "${TALVIK_PACKAGING_OUT}/${component}")
    file(CREATE_LINK ../talvik-mib-module/guide "${link}" SYMBOLIC)
    install(FILES "${link}" DESTINATION "share/doc/${package}" COMPONENT ${component})
endfunction()

# --- module ----------------------------------------------------------------------------------------------------------
set(mib "${PROJECT_SOURCE_DIR}/mibs/KEL-TALVIK-MIB.txt")
install(TARGETS SnmpTalvikMibModule DESTINATION ${TALVIK_INSTALL_MODULEDIR} COMPONENT module)
install(FILES mibs/KEL-TALVIK-MIB.json "${mib}" DESTINATION ${TALVIK_INSTALL_DATADIR}/mibs COMPONENT module)
# Where the stock SNMP tools look by themselves.
install(FILES "${mib}" DESTINATION share/snmp/mibs COMPONENT module)
install(FILES etc/alarm-definitions.json etc/alarm-enumerations.json etc/talvik-device.xml
    DESTINATION ${TALVIK_INSTALL_DATADIR}/etc COMPONENT module)
talvik_install_documents(module talvik-mib-module)
talvik_install_guide()

if(TALVIK_PLATFORM_DIR)
    return()  # there is nothing else
endif()

# --- agent -----------------------------------------------------------------------------------------------------------
install(TARGETS talvik-agentd talvik-backendd DESTINATION sbin COMPONENT agent)
install(TARGETS talvikctl DESTINATION bin COMPONENT agent)
install(FILES etc/talvik-agentd.conf etc/talvik-traps.json etc/example-scenario.json
    DESTINATION ${TALVIK_INSTALL_DATADIR}/etc COMPONENT agent)
foreach(directory IN ITEMS ${TALVIK_INSTALL_DATADIR}/mibs share/snmp/mibs)
    install(FILES mibs/TALVIK-AGENT-MIB.txt DESTINATION ${directory} COMPONENT agent)
endforeach()
talvik_install_compressed(agent "${TALVIK_PACKAGING_DIR}/man/talvik-agentd.8" share/man/man8 talvik-agentd.8)
talvik_install_compressed(agent "${TALVIK_PACKAGING_DIR}/man/talvik-backendd.8" share/man/man8 talvik-backendd.8)
talvik_install_output(talvikctl.1.gz share/man/man1 help --format man)
talvik_install_output(talvikctl share/bash-completion/completions completion bash)
talvik_install_output(_talvikctl share/zsh/vendor-completions completion zsh)
talvik_install_output(talvikctl.fish share/fish/vendor_completions.d completion fish)
get_property(printed_files GLOBAL PROPERTY TALVIK_PRINTED_FILES)
add_custom_target(talvik-printed-files ALL DEPENDS ${printed_files})
talvik_install_documents(agent talvik-agent)
talvik_install_link_to_guide(agent talvik-agent)
# The system's agent has SNMP's own port; the sample has one that needs no privilege.
file(READ etc/talvik-agentd.conf sample)
string(REPLACE "1161" "161" system_configuration "${sample}")
if(NOT system_configuration MATCHES "\nagentAddress udp:127.0.0.1:161\n")
    message(FATAL_ERROR "etc/talvik-agentd.conf has no line \"agentAddress udp:127.0.0.1:1161\" any more, "
        "which the configuration of the package is made from; see cmake/TalvikInstall.cmake")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS etc/talvik-agentd.conf)
file(CONFIGURE OUTPUT "${TALVIK_PACKAGING_OUT}/talvik-agentd.conf" CONTENT "${system_configuration}" @ONLY)

talvik_install_system_file(agent "${TALVIK_PACKAGING_OUT}/talvik-agentd.conf" /etc/talvik)
talvik_install_system_file(agent "${PROJECT_SOURCE_DIR}/etc/talvik-device.xml" /etc/talvik)
talvik_install_system_file(agent "${PROJECT_SOURCE_DIR}/etc/talvik-traps.json" /etc/talvik)
foreach(service IN ITEMS talvik-agentd talvik-backendd)
    talvik_install_system_file(agent "${TALVIK_PACKAGING_DIR}/default/${service}" /etc/default)
    talvik_install_system_file(agent "${TALVIK_PACKAGING_DIR}/systemd/${service}.service" /lib/systemd/system)
endforeach()

# --- dev -------------------------------------------------------------------------------------------------------------
if(TALVIK_SNMP_TYPES STREQUAL "carried")
    include(TalvikInstallDevelopment)
else()
    message(STATUS "The development files are installed with TALVIK_SNMP_TYPES=carried only")
endif()

include(TalvikPackages)
