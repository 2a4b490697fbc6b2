# TALVIK_PLATFORM_DIR: a folder that holds platform/, a vendor's own headers in place of those of this tree. Only the module is
# built then: its host is the vendor's, and the reference host and the tests define what this tree's headers declare.
set(TALVIK_PLATFORM_DIR "" CACHE PATH "Folder that holds platform/ with a vendor's own headers (empty: those of this tree)")

if(TALVIK_PLATFORM_DIR)
    get_filename_component(talvik_platform_dir "${TALVIK_PLATFORM_DIR}" ABSOLUTE BASE_DIR "${PROJECT_SOURCE_DIR}")
    if(NOT IS_DIRECTORY "${talvik_platform_dir}/platform")
        message(FATAL_ERROR "TALVIK_PLATFORM_DIR is \"${talvik_platform_dir}\", which holds no folder platform/. "
            "Name the folder above the headers: they are included as \"platform/debug_kit.h\".")
    endif()
    file(GLOB needed RELATIVE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/platform/*.h")
    set(missing "")
    foreach(header IN LISTS needed)
        if(NOT EXISTS "${talvik_platform_dir}/${header}")
            list(APPEND missing "${header}")
        endif()
    endforeach()
    if(missing)
        list(JOIN missing ", " missing)
        message(FATAL_ERROR "TALVIK_PLATFORM_DIR is \"${talvik_platform_dir}\", which lacks ${missing}. "
            "A set has all headers of this tree's platform/; copy those that are to stay as they are.")
    endif()
    message(STATUS "Platform headers: ${talvik_platform_dir}/platform; only the module is built, without host, tools and tests")
    # In front of the tree's own folder, which holds platform/ too.
    include_directories(BEFORE "${talvik_platform_dir}")
endif()
