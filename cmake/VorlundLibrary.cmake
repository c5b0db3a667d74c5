# The library twice from one list of sources:
#   vorlund           the shared library that users link, as Vorlund::vorlund
#   vorlund_internal  a static library for tests that look inside; never installed
#
# Both are made from the same objects, to which vorlund_sources() adds files. On Windows the export mark is part of the
# declaration, and so the programs of those tests export what they are linked with, which nobody minds.

add_library(vorlund SHARED)
add_library(Vorlund::vorlund ALIAS vorlund)
add_library(vorlund_internal STATIC EXCLUDE_FROM_ALL)

add_library(vorlund_objects OBJECT)
target_sources(vorlund PRIVATE $<TARGET_OBJECTS:vorlund_objects>)
target_sources(vorlund_internal PRIVATE $<TARGET_OBJECTS:vorlund_objects>)
if(WIN32)
    set(VORLUND_PLATFORM Win32)
else()
    set(VORLUND_PLATFORM Posix)
endif()
if(VORLUND_DEBUG_INFO)
    target_compile_options(vorlund_objects PRIVATE -g)
endif()

# The shared library has a file of its own on Windows, its entry point.
foreach(target vorlund_objects vorlund)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:vorlund_build> $<BUILD_INTERFACE:vorlund_warnings>)
    target_include_directories(${target} PRIVATE ${VORLUND_INCLUDE_DIRS} ${PROJECT_SOURCE_DIR}/src)
    target_compile_definitions(${target} PRIVATE VORLUND_BUILDING)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
endforeach()

vorlund_precompile(vorlund_objects)

if(VORLUND_COVERAGE)
    # Unoptimised, so that the branches are those of the source; counted in one step, because threads count too. What
    # uses the static library also compiles the library's headers, and the linker may take its copy of a function.
    set(coverage_options -O0 --coverage -fprofile-update=atomic)
    target_compile_options(vorlund_objects PRIVATE ${coverage_options})
    target_compile_options(vorlund_internal INTERFACE ${coverage_options})
    target_link_options(vorlund PRIVATE --coverage)
    target_link_options(vorlund_internal INTERFACE --coverage)
endif()

target_include_directories(vorlund PUBLIC
    "$<BUILD_INTERFACE:${VORLUND_INCLUDE_DIRS}>"
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_compile_features(vorlund PUBLIC cxx_std_20)
set_target_properties(vorlund PROPERTIES
    OUTPUT_NAME vorlund
    VERSION ${PROJECT_VERSION}
    SOVERSION ${VORLUND_SOVERSION}
    LINKER_LANGUAGE CXX)

target_include_directories(vorlund_internal PUBLIC ${VORLUND_INCLUDE_DIRS} ${PROJECT_SOURCE_DIR}/src)
target_compile_features(vorlund_internal PUBLIC cxx_std_20)
target_compile_definitions(vorlund_internal PUBLIC VORLUND_STATIC)
set_target_properties(vorlund_internal PROPERTIES LINKER_LANGUAGE CXX)

if(WIN32)
    set_target_properties(vorlund PROPERTIES PREFIX "")
    set(system_libraries user32 winmm)
    include(VorlundMingwRuntime)
else()
    find_package(Threads REQUIRED)
    set(system_libraries Threads::Threads ${CMAKE_DL_LIBS})
    # Hidden visibility leaves the standard library's own instantiations visible; the version script hides them.
    set(version_script ${PROJECT_SOURCE_DIR}/cmake/vorlund.map)
    target_link_options(vorlund PRIVATE LINKER:--version-script=${version_script})
    set_property(TARGET vorlund APPEND PROPERTY LINK_DEPENDS ${version_script})
    if(NOT (VORLUND_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang"))
        # Clang's sanitizer runtime lives in the program only, so there a shared library has open references.
        target_link_options(vorlund PRIVATE LINKER:--no-undefined)
    endif()
endif()
target_link_libraries(vorlund PRIVATE ${system_libraries})
target_link_libraries(vorlund_internal PUBLIC ${system_libraries})

# Part of the interface: whoever derives from the library's templates compiles the check too.
if(VORLUND_CHECK_THREADS)
    target_compile_definitions(vorlund_objects PRIVATE VORLUND_CHECK_THREADS)
    target_compile_definitions(vorlund PUBLIC VORLUND_CHECK_THREADS)
    target_compile_definitions(vorlund_internal PUBLIC VORLUND_CHECK_THREADS)
endif()

# vorlund_sources(<file>...): adds files of the calling folder to the library.
function(vorlund_sources)
    list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    target_sources(vorlund_objects PRIVATE ${ARGN})
endfunction()

# vorlund_platform_sources(<name>...): adds <name>_win32.cpp, or <name>_posix.cpp, which is <name>_linux.cpp where it
# needs what only Linux has.
function(vorlund_platform_sources)
    foreach(name IN LISTS ARGN)
        if(WIN32)
            set(file ${name}_win32.cpp)
        elseif(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${name}_linux.cpp)
            set(file ${name}_linux.cpp)
        else()
            set(file ${name}_posix.cpp)
        endif()
        vorlund_sources(${file})
        # What they define before the system's headers must come first.
        set_property(SOURCE ${file} TARGET_DIRECTORY vorlund_objects PROPERTY SKIP_PRECOMPILE_HEADERS ON)
    endforeach()
endfunction()

# vorlund_avx2_sources(<file>...): adds files that only processors with AVX2 and fused multiply-add may enter.
function(vorlund_avx2_sources)
    vorlund_sources(${ARGN})
    set(options -mavx2 -mfma)
    if(WIN32)
        # GCC gives 64-bit Windows stacks no more than 16-byte alignment, and yet stores whole vectors there.
        list(APPEND options -Wa,-muse-unaligned-vector-move)
    endif()
    list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    set_property(SOURCE ${ARGN} TARGET_DIRECTORY vorlund_objects PROPERTY COMPILE_OPTIONS ${options})
    set_property(SOURCE ${ARGN} TARGET_DIRECTORY vorlund_objects PROPERTY SKIP_PRECOMPILE_HEADERS ON)
endfunction()
