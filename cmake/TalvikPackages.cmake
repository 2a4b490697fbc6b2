# Debian packages of the three components, by cpack: `./dev package`. Debug symbols are packages of their own.
# SOURCE_DATE_EPOCH in the environment makes the same sources the same packages, octet by octet.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME talvik)
set(CPACK_PACKAGE_VENDOR "Talvik developers")
set(CPACK_PACKAGE_CONTACT "Talvik developers <talvik@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each component has its own
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL module agent)
if(TALVIK_SNMP_TYPES STREQUAL "carried")
    list(APPEND CPACK_COMPONENTS_ALL dev)
endif()

# What lies outside the prefix, such as /etc, takes a destination folder rather than another prefix.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE none)  # finish-packages.sh compresses
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_MODULE_PACKAGE_NAME talvik-mib-module)
set(CPACK_DEBIAN_MODULE_PACKAGE_SECTION net)
set(CPACK_DEBIAN_MODULE_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_AGENT_PACKAGE_NAME talvik-agent)
set(CPACK_DEBIAN_AGENT_PACKAGE_SECTION net)
set(CPACK_DEBIAN_AGENT_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_AGENT_PACKAGE_CONTROL_EXTRA
    "${TALVIK_PACKAGING_DIR}/deb/conffiles" "${TALVIK_PACKAGING_DIR}/deb/postinst"
    "${TALVIK_PACKAGING_DIR}/deb/prerm" "${TALVIK_PACKAGING_DIR}/deb/postrm")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME talvik-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)

set(CPACK_COMPONENT_MODULE_DESCRIPTION "SNMP MIB module of a storage controller
The plug-in that serves the private MIB 1.3.6.1.4.1.99999 in an SNMP agent:
topology, active alarms, trap receivers. With the MIB for managers and the
alarm catalogue.")
set(CPACK_COMPONENT_AGENT_DESCRIPTION "SNMP agent and tools of a storage controller
talvik-agentd loads the MIB module and serves it over SNMP v1, v2c and v3,
talvik-backendd keeps the alarms in a process of its own, and talvikctl asks
and manages both. The agent listens on the loopback, port 161, until its
configuration says otherwise.")
set(CPACK_COMPONENT_DEV_DESCRIPTION "headers and libraries for hosts of the Talvik MIB module
What a program takes that loads the module: headers of the contract, package
codec, SNMP value types and the platform of the reference agent as static
libraries, files for CMake and pkg-config, and an example.")

# What cpack leaves to be done.
set(CPACK_POST_BUILD_SCRIPTS "${TALVIK_PACKAGING_DIR}/deb/finish-packages.cmake")

# The processor of the target, not of the machine that builds.
set(architecture_of_x86_64 amd64)
set(architecture_of_aarch64 arm64)
if(DEFINED architecture_of_${CMAKE_SYSTEM_PROCESSOR})
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${architecture_of_${CMAKE_SYSTEM_PROCESSOR}}")
endif()
set(CPACK_OBJCOPY_EXECUTABLE "${CMAKE_OBJCOPY}")
set(CPACK_OBJDUMP_EXECUTABLE "${CMAKE_OBJDUMP}")
set(CPACK_READELF_EXECUTABLE "${CMAKE_READELF}")

# dpkg-shlibdeps knows the packages of this machine only, so a cross build goes by the list that it made; a test of the
# native build holds the two together.
set(TALVIK_SHARED_LIBRARIES "${TALVIK_PACKAGING_DIR}/deb/shared-libraries.txt")
if(CMAKE_CROSSCOMPILING)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
else()
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
function(talvik_shared_libraries component result)
    file(STRINGS "${TALVIK_SHARED_LIBRARIES}" lines REGEX "^${component}: ")
    string(REGEX REPLACE "^${component}: " "" needed "${lines}")
    set(${result} "${needed}" PARENT_SCOPE)
endfunction()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${TALVIK_SHARED_LIBRARIES}")

# The packages of one version belong together. cpack reads this file when it runs, with the version it was given.
talvik_shared_libraries(module module_libraries)
talvik_shared_libraries(agent agent_libraries)
set(CPACK_PROJECT_CONFIG_FILE "${TALVIK_PACKAGING_OUT}/cpack-project.cmake")
set(TALVIK_DEPENDS_MODULE "")
set(TALVIK_DEPENDS_AGENT "adduser, ")
if(CMAKE_CROSSCOMPILING)
    set(TALVIK_DEPENDS_MODULE "${module_libraries}")
    string(APPEND TALVIK_DEPENDS_AGENT "${agent_libraries}, ")
endif()
configure_file("${TALVIK_PACKAGING_DIR}/deb/cpack-project.cmake.in" "${CPACK_PROJECT_CONFIG_FILE}" @ONLY)

include(CPack)
