# What every room's target shares: language, output folders, warnings, sanitizers, third-party libraries.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

# No path of the building machine in any binary. Through ccache the compiler meets relative paths, see below.
macro(talvik_hide_path folder name)
    file(RELATIVE_PATH relative "${PROJECT_BINARY_DIR}" "${folder}/.")
    string(REGEX REPLACE "/$" "" relative "${relative}")
    add_compile_options("-ffile-prefix-map=${folder}/=${name}" "-ffile-prefix-map=${relative}/=${name}")
endmacro()
talvik_hide_path("${PROJECT_SOURCE_DIR}" "")
if(CMAKE_SYSROOT)
    talvik_hide_path("${CMAKE_SYSROOT}" "/")
endif()
add_compile_options("-ffile-prefix-map=${PROJECT_BINARY_DIR}=.")

# Unique symbols would pin the module in memory: a host could never unload it.
add_compile_options($<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)

find_program(TALVIK_CCACHE ccache)
mark_as_advanced(TALVIK_CCACHE)
if(TALVIK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Relative paths of source and build folder: what one clone compiled, another finds.
    set(CMAKE_CXX_COMPILER_LAUNCHER env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1 "${TALVIK_CCACHE}")
endif()

if(TALVIK_SANITIZE)
    add_compile_options("-fsanitize=${TALVIK_SANITIZE}" -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    add_link_options("-fsanitize=${TALVIK_SANITIZE}")
endif()

add_library(talvik_warnings INTERFACE)
target_compile_options(talvik_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2 -Wundef
    $<$<BOOL:${TALVIK_WERROR}>:-Werror>)

if(TALVIK_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # With sanitizers g++ reports the standard library's own templates.
    target_compile_options(talvik_warnings INTERFACE -Wno-maybe-uninitialized)
endif()

include(TalvikHardening)

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(ACE REQUIRED IMPORTED_TARGET ACE)

# One room is one static library talvik_<room>, alias talvik::<room>.
function(talvik_add_room room)
    add_library(talvik_${room} STATIC ${ARGN})
    add_library(talvik::${room} ALIAS talvik_${room})
    target_include_directories(talvik_${room} PUBLIC "${PROJECT_SOURCE_DIR}")
    target_link_libraries(talvik_${room} PRIVATE talvik_warnings)
    talvik_harden_code(talvik_${room})
endfunction()
