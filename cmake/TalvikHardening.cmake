# What shipped binaries are hardened with; tests/binary/ has the reviewed facts of each. The sanitizers bring their own.
# Not set: marks of control-flow protection, which the linker drops because Debian's start files have none, and
# _GLIBCXX_ASSERTIONS, since the module never aborts its host.

# talvik_harden_code(TARGET): how its units are compiled.
function(talvik_harden_code target)
    if(NOT TALVIK_SANITIZE)
        target_compile_options(${target} PRIVATE -fstack-protector-strong -fstack-clash-protection)
        # Needs an optimising build.
        target_compile_options(${target} PRIVATE
            "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
    endif()
endfunction()

# talvik_harden_image(TARGET): a program or the module, its own units included. The build id is what debuggers and packages
# find its debug information by, and is made of the contents alone.
function(talvik_harden_image target)
    talvik_harden_code(${target})
    target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack -Wl,--build-id=sha1)
endfunction()
