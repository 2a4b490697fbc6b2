# Run by cpack when the packages are made; CPACK_PACKAGE_FILES has their paths.
execute_process(COMMAND bash "${CMAKE_CURRENT_LIST_DIR}/finish-packages.sh" ${CPACK_PACKAGE_FILES}
    COMMAND_ERROR_IS_FATAL ANY)
