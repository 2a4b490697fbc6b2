find_package(CLI11 REQUIRED)

add_executable(talvik-agentd
    agent_options.cpp
    agent_program.cpp
    chosen_module.cpp
    counted_link.cpp
    descriptor_limit.cpp
    health_source.cpp
    installation_paths.cpp
    loop_calls.cpp
    main.cpp
    module_file.cpp
    module_loader.cpp
    notification_service.cpp
    receiver_commands.cpp
    reload.cpp
    served_module.cpp
    start_files.cpp
    state_directory.cpp
    stop_signals.cpp
    table_keeper.cpp)
target_link_libraries(talvik-agentd PRIVATE
    talvik_warnings
    talvik_host_platform
    talvik_host_link
    talvik::host_snmp
    CLI11::CLI11
    ${CMAKE_DL_LIBS})
target_compile_definitions(talvik-agentd PRIVATE "TALVIK_VERSION=\"${PROJECT_VERSION}\"")
# A module resolves the symbols of these rooms from this process, whether the agent itself uses them or not.
set_target_properties(talvik-agentd PROPERTIES ENABLE_EXPORTS ON)
foreach(room IN ITEMS talvik_host_platform talvik_host_link)
    target_link_options(talvik-agentd PRIVATE
        "LINKER:--whole-archive,$<TARGET_FILE:${room}>,--no-whole-archive")
endforeach()
