# The component dev: headers, static libraries, and how CMake and pkg-config find them.
include(CMakePackageConfigHelpers)

# Those of framework/ that only its own sources include stay here.
install(DIRECTORY framework platform DESTINATION ${TALVIK_INSTALL_INCLUDEDIR} COMPONENT dev
    FILES_MATCHING PATTERN "*.h"
    PATTERN local_address.h EXCLUDE
    PATTERN log_codes.h EXCLUDE
    PATTERN tag_index_pool.h EXCLUDE
    PATTERN tlv_codec_log.h EXCLUDE
    PATTERN tlv_record_scan.h EXCLUDE)
install(FILES trap/trap_dest_info.h DESTINATION ${TALVIK_INSTALL_INCLUDEDIR}/trap COMPONENT dev)
install(FILES host/sdk/reference_platform.h DESTINATION ${TALVIK_INSTALL_INCLUDEDIR}/host/sdk COMPONENT dev)
install(FILES host/snmp/object_id.h host/snmp/request_context.h
    DESTINATION ${TALVIK_INSTALL_INCLUDEDIR}/host/snmp COMPONENT dev)
install(DIRECTORY snmp_types/include/ DESTINATION ${TALVIK_INSTALL_INCLUDEDIR}/snmp_types COMPONENT dev)

# As Debian's static libraries are: without debug symbols.
set(libraries talvik_framework talvik_snmp_types talvik_reference_platform)
install(TARGETS ${libraries} DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT dev)
foreach(library IN LISTS libraries)
    install(CODE "
        execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-debug --enable-deterministic-archives
            \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:${library}>\"
            COMMAND_ERROR_IS_FATAL ANY)" COMPONENT dev)
endforeach()

set(config_dir "${CMAKE_INSTALL_LIBDIR}/cmake/talvik")
configure_package_config_file("${TALVIK_PACKAGING_DIR}/sdk/talvik-config.cmake.in"
    "${TALVIK_PACKAGING_OUT}/talvik-config.cmake"
    INSTALL_DESTINATION "${config_dir}"
    PATH_VARS CMAKE_INSTALL_LIBDIR TALVIK_INSTALL_INCLUDEDIR TALVIK_INSTALL_MODULEDIR TALVIK_INSTALL_DATADIR)
write_basic_package_version_file("${TALVIK_PACKAGING_OUT}/talvik-config-version.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${TALVIK_PACKAGING_OUT}/talvik-config.cmake" "${TALVIK_PACKAGING_OUT}/talvik-config-version.cmake"
    DESTINATION "${config_dir}" COMPONENT dev)

# The files name all else from where they lie themselves, so that an installation can be moved.
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH TALVIK_PREFIX_FROM_PKGCONFIG "/${pkgconfig_dir}" "/")
string(REGEX REPLACE "/$" "" TALVIK_PREFIX_FROM_PKGCONFIG "${TALVIK_PREFIX_FROM_PKGCONFIG}")
foreach(file IN ITEMS talvik.pc talvik-framework.pc)
    configure_file("${TALVIK_PACKAGING_DIR}/sdk/${file}.in" "${TALVIK_PACKAGING_OUT}/${file}" @ONLY)
    install(FILES "${TALVIK_PACKAGING_OUT}/${file}" DESTINATION "${pkgconfig_dir}" COMPONENT dev)
endforeach()

foreach(example IN LISTS TALVIK_EXAMPLES)
    get_filename_component(directory "${example}" DIRECTORY)
    install(FILES "${example}" DESTINATION "share/doc/talvik-dev/${directory}" COMPONENT dev)
endforeach()
talvik_install_documents(dev talvik-dev)
talvik_install_link_to_guide(dev talvik-dev)
