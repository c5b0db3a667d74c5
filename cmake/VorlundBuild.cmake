# What every target of the project shares: language level, floating-point rules, warnings, output folders.

if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
    if(NOT CMAKE_BUILD_TYPE)
        set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
        # As in the presets.
        set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG" CACHE STRING "" FORCE)
    endif()
    # One folder for programs and shared libraries: Windows programs find their DLLs beside themselves, and on
    # ELF a run path of $ORIGIN does the same.
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
    set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
    set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
    set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
    set(CMAKE_CXX_EXTENSIONS OFF)
    # Another compiler or level of optimisation warns of other things: a stranger's build goes on.
    set(CMAKE_COMPILE_WARNING_AS_ERROR ${VORLUND_WARNINGS_AS_ERRORS})
endif()

if(VORLUND_PACKAGING)
    # Stripped by the linker: `strip` writes the time into files for Windows.
    add_link_options(-s)
    if(NOT WIN32)
        # As Debian's own packages are linked.
        add_link_options(LINKER:-z,relro,-z,now)
    endif()
endif()

# Interface target with the language level and the arithmetic rules. Results of float arithmetic are part of the
# behaviour and equal on every target, so contraction to fused operations is off everywhere.
add_library(vorlund_build INTERFACE)
target_compile_features(vorlund_build INTERFACE cxx_std_20)
target_compile_options(vorlund_build INTERFACE -ffp-contract=off)
set(VORLUND_IS_X86 FALSE)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86_64|AMD64)$")
    set(VORLUND_IS_X86 TRUE)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND VORLUND_IS_X86)
    # The x87 unit would keep more digits than float and double have.
    target_compile_options(vorlund_build INTERFACE -msse2 -mfpmath=sse)
    if(WIN32)
        # Threads that the system enters keep only 4-byte stack alignment, and SSE code needs 16.
        target_compile_options(vorlund_build INTERFACE -mstackrealign)
    endif()
endif()

# Interface targets with the warnings of our own code; they are errors with the presets. Tests, whose tables are
# full of numbers, take the basic set.
add_library(vorlund_basic_warnings INTERFACE)
target_compile_options(vorlund_basic_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wundef -Wextra-semi -Wcast-qual -Woverloaded-virtual -Wformat=2
    -Wredundant-decls -Wimplicit-fallthrough -Wvla)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(vorlund_basic_warnings INTERFACE -Wlogical-op -Wduplicated-cond)
endif()
add_library(vorlund_warnings INTERFACE)
target_link_libraries(vorlund_warnings INTERFACE vorlund_basic_warnings)
target_compile_options(vorlund_warnings INTERFACE -Wconversion -Wno-sign-conversion)

# vorlund_precompile(<target>): with VORLUND_PRECOMPILE, reads once what nearly every file of a target includes; each
# includes it all the same.
function(vorlund_precompile target)
    if(VORLUND_PRECOMPILE)
        target_precompile_headers(${target} PRIVATE
            <algorithm> <cstdint> <cstring> <memory> <optional> <string> <string_view> <utility> <vector>)
    endif()
endfunction()
