# GoogleTest from its sources in VORLUND_GOOGLETEST_DIR, and the helpers of the test folders.
# Its one source file is compiled directly: its own CMake project would ask for a C compiler and for Python.
find_package(Threads REQUIRED)
add_library(gtest STATIC EXCLUDE_FROM_ALL ${VORLUND_GOOGLETEST_DIR}/src/gtest-all.cc)
target_compile_features(gtest PUBLIC cxx_std_20)
target_compile_options(gtest PRIVATE -O0 -w)
target_include_directories(gtest PRIVATE ${VORLUND_GOOGLETEST_DIR})
target_include_directories(gtest SYSTEM PUBLIC ${VORLUND_GOOGLETEST_DIR}/include)
target_link_libraries(gtest PUBLIC Threads::Threads)

# What every test program shares. -O0 comes after the flags of the build type and wins: tests are compiled far
# more often than they run.
add_library(vorlund_test_settings INTERFACE)
target_link_libraries(vorlund_test_settings INTERFACE vorlund_build vorlund_basic_warnings)
target_compile_options(vorlund_test_settings INTERFACE -O0)
if("undefined" IN_LIST VORLUND_SANITIZE)
    # These checks are made at every call of a member, of which test macros are full, and cost a third of the time that
    # tests take to compile. The library has them, and the address sanitizer sees null pointers here.
    target_compile_options(vorlund_test_settings INTERFACE
        -fno-sanitize=null,vptr,object-size,alignment,nonnull-attribute,returns-nonnull-attribute)
endif()
target_include_directories(vorlund_test_settings INTERFACE ${PROJECT_SOURCE_DIR}/tests)

# vorlund_test_sources(<file>...): adds suites of the calling folder to vorlund_tests.
function(vorlund_test_sources)
    list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    target_sources(vorlund_tests PRIVATE ${ARGN})
endfunction()

# vorlund_internal_test_sources(<file>...): the same for vorlund_internal_tests.
function(vorlund_internal_test_sources)
    list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    target_sources(vorlund_internal_tests PRIVATE ${ARGN})
endfunction()

# vorlund_test_child(<name> <file>...): a program that the tests start, built beside them and before them.
function(vorlund_test_child name)
    add_executable(${name} ${ARGN})
    target_link_libraries(${name} PRIVATE Vorlund::vorlund vorlund_test_settings)
    add_dependencies(vorlund_tests ${name})
endfunction()

# vorlund_add_test_program(<name> <file>...): a test program beside vorlund_tests, with what those share.
function(vorlund_add_test_program name)
    add_executable(${name} ${ARGN}
        ${PROJECT_SOURCE_DIR}/tests/support/main.cpp $<TARGET_OBJECTS:vorlund_test_support>)
    target_link_libraries(${name} PRIVATE Vorlund::vorlund vorlund_test_settings gtest)
    target_precompile_headers(${name} REUSE_FROM vorlund_test_support)
    if(PROJECT_IS_TOP_LEVEL)
        vorlund_add_unit_tests(${name})
    endif()
endfunction()

# vorlund_find_test_tools(<variable> <tool>...): finds the programs VORLUND_TOOL_<tool> of the building machine; those
# that are not there are appended to the list <variable>.
function(vorlund_find_test_tools variable)
    set(missing ${${variable}})
    foreach(tool IN LISTS ARGN)
        find_program(VORLUND_TOOL_${tool} ${tool} NO_CMAKE_FIND_ROOT_PATH)
        mark_as_advanced(VORLUND_TOOL_${tool})
        if(NOT VORLUND_TOOL_${tool})
            list(APPEND missing ${tool})
        endif()
    endforeach()
    set(${variable} ${missing} PARENT_SCOPE)
endfunction()

# vorlund_make_test_files(<target> <folder>): the target <target>, which writes the files of a plug-in's tests into
# <folder> beside the test programs, by make_files.py of the calling folder.
function(vorlund_make_test_files target folder)
    set(stamp ${CMAKE_CURRENT_BINARY_DIR}/files.stamp)
    add_custom_command(OUTPUT ${stamp}
        COMMAND ${VORLUND_TOOL_python3} ${CMAKE_CURRENT_SOURCE_DIR}/make_files.py
            ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${folder}
        COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
        DEPENDS make_files.py
        VERBATIM)
    add_custom_target(${target} DEPENDS ${stamp})
endfunction()

# vorlund_part_of_tests(<name> <program>): a program with a part of the suites of <program>, for ./test on the targets of
# which it takes a part. It holds what another processor, word size or system may change: numbers, layouts, kernels and paths;
# for the address sanitizer also what reads what others wrote; for the thread sanitizer what starts threads instead.
function(vorlund_part_of_tests name program)
    set(folders abi math data/file data/filters)
    set(content "")
    if(VORLUND_SANITIZE MATCHES "address")
        list(APPEND folders data/base data/codecs data/resource data/wav serial)
    elseif(VORLUND_SANITIZE MATCHES "thread")
        set(folders system)
        set(content "std::(j?thread|async)")
    endif()
    list(JOIN folders "|" folders)
    set(part "")
    get_target_property(sources ${program} SOURCES)
    foreach(source IN LISTS sources)
        set(starts "")
        set(threads "")
        if(source MATCHES "_test\\.cpp$")
            # Beside it are no programs that the suites start, and in it is nothing that looks at windows.
            file(STRINGS ${source} starts REGEX "BesideProgram|ChildProcess\\.h|TestPlugins\\.h|WindowProbe\\.h|EventRecorder\\.h")
            if(content)
                file(STRINGS ${source} threads REGEX "${content}")
            endif()
        endif()
        # Nor objects of other compilers.
        if(source MATCHES "(^support/main|/tests/(support/[^/]*|(${folders})/[^/]*|system/ProcessResources_[^/]*))\\.cpp$" OR threads)
            if(NOT starts AND NOT source MATCHES "/VectorOptions")
                list(APPEND part ${source})
            endif()
        endif()
    endforeach()
    add_executable(${name} EXCLUDE_FROM_ALL ${part})
    get_target_property(libraries ${program} LINK_LIBRARIES)
    target_link_libraries(${name} PRIVATE ${libraries})
    target_precompile_headers(${name} PRIVATE support/Precompiled.h)
endfunction()

# vorlund_join_tests(<target>): with VORLUND_JOIN_TESTS, compiles the suites of a test program several at a time, which
# takes less than half of the time as a whole and more after a change. The anonymous namespaces of suites repeat names, and
# so their namespace vorlund::test becomes one of its own in each file; what they include is in the real one, compiled in
# advance, and known to all as vorlund::test_helpers. Suites of one platform, whose headers may define anything, and those
# in another namespace are compiled one by one.
function(vorlund_join_tests target)
    # Always compiled in advance, joined or not: CMake does not compile anew when another list of headers is given.
    set(prelude ${CMAKE_CURRENT_BINARY_DIR}/${target}_helpers.h)
    target_precompile_headers(${target} PRIVATE ${prelude})
    if(NOT VORLUND_JOIN_TESTS)
        file(CONFIGURE OUTPUT ${prelude} CONTENT "// Empty: suites are compiled one by one.\n")
        return()
    endif()
    set(headers "")
    get_target_property(sources ${target} SOURCES)
    foreach(source IN LISTS sources)
        set(suites "")
        if(source MATCHES "_test\\.cpp$" AND NOT source MATCHES "_(win32|posix|linux)_test")
            file(STRINGS ${source} suites REGEX "^namespace vorlund::test {$")
        endif()
        if(NOT suites)
            set_property(SOURCE ${source} TARGET_DIRECTORY ${target} PROPERTY SKIP_UNITY_BUILD_INCLUSION ON)
            continue()
        endif()
        file(STRINGS ${source} includes REGEX "^#include \".*\\.h\"$")
        foreach(line IN LISTS includes)
            string(REGEX REPLACE "^#include \"(.*)\"" "\\1" header "${line}")
            get_filename_component(folder ${source} DIRECTORY)
            if(EXISTS ${folder}/${header})
                set(header ${folder}/${header})
            endif()
            list(APPEND headers ${header})
        endforeach()
    endforeach()
    list(REMOVE_DUPLICATES headers)
    list(SORT headers)
    list(TRANSFORM headers PREPEND "#include \"")
    list(TRANSFORM headers APPEND "\"\n")
    list(JOIN headers "" includes)
    file(CONFIGURE OUTPUT ${prelude} @ONLY CONTENT
        "${includes}\nnamespace vorlund::test {}\nnamespace vorlund {\nnamespace test_helpers = test;\n}\n")
    set_target_properties(${target} PROPERTIES
        UNITY_BUILD ON
        UNITY_BUILD_BATCH_SIZE 10
        UNITY_BUILD_UNIQUE_ID test
        UNITY_BUILD_CODE_BEFORE_INCLUDE "namespace vorlund::test {\nusing namespace test_helpers;\n}"
        UNITY_BUILD_CODE_AFTER_INCLUDE "#undef FILE_TEXT\n#undef STREAM_TEXT\n#undef X")
endfunction()
