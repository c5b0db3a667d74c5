# The entries of ctest. ./test runs the same programs and scripts, whole programs at once, on all targets.
#
# scripts/launch.sh starts every program as its target needs: under Wine, with the options of the sanitizers, on a
# display of our own, which the fixture "display" starts and ends.
set(kind native)
if(WIN32)
    set(kind wine)
elseif(VORLUND_SANITIZE)
    set(kind sanitized)
elseif(CMAKE_CROSSCOMPILING)
    set(kind emulated)
endif()
set(VORLUND_LAUNCH ${PROJECT_SOURCE_DIR}/scripts/launch.sh)
set(VORLUND_LAUNCHER ${VORLUND_LAUNCH} run ${kind} ${PROJECT_BINARY_DIR})

add_test(NAME display-start COMMAND ${VORLUND_LAUNCH} start ${PROJECT_BINARY_DIR})
add_test(NAME display-stop COMMAND ${VORLUND_LAUNCH} stop ${PROJECT_BINARY_DIR})
set_tests_properties(display-start PROPERTIES FIXTURES_SETUP display)
set_tests_properties(display-stop PROPERTIES FIXTURES_CLEANUP display)

# vorlund_add_check(<name> <target> <argument>... [FOLDER <folder>] [NEEDS <fixture>]): an entry that runs a program of
# the build tree.
function(vorlund_add_check name target)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "FOLDER;NEEDS" "")
    if(NOT arg_FOLDER)
        set(arg_FOLDER ${PROJECT_SOURCE_DIR})
    endif()
    add_test(NAME ${name} COMMAND ${VORLUND_LAUNCHER} $<TARGET_FILE:${target}> ${arg_UNPARSED_ARGUMENTS}
        WORKING_DIRECTORY ${arg_FOLDER})
    set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED "display;${arg_NEEDS}" TIMEOUT 900)
endfunction()

# vorlund_add_script_check(<name> <script> <argument>...): an entry that runs a script of the source tree.
function(vorlund_add_script_check name script)
    add_test(NAME ${name} COMMAND ${PROJECT_SOURCE_DIR}/${script} ${ARGN} WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
    set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED display)
endfunction()

# vorlund_add_unit_tests(<target>): one entry per test natively; one for the program under Wine, where every start of a
# process takes long.
function(vorlund_add_unit_tests target)
    if(WIN32)
        vorlund_add_check(${target} ${target})
        return()
    endif()
    set_property(TARGET ${target} PROPERTY CROSSCOMPILING_EMULATOR ${VORLUND_LAUNCHER})
    # Listed when ctest runs, not at every link.
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        DISCOVERY_TIMEOUT 60 PROPERTIES FIXTURES_REQUIRED display TIMEOUT 300)
endfunction()

# The checks of structure, form and interface, for the targets that ./test runs them on.
function(vorlund_add_checks_of_scripts)
    if(VORLUND_SANITIZE OR (WIN32 AND NOT CMAKE_SIZEOF_VOID_P EQUAL 4))
        return()
    endif()
    set(target linux)
    if(WIN32)
        set(target win32)
    endif()
    vorlund_add_script_check(exports scripts/exports.sh --check ${target} ${PROJECT_BINARY_DIR})
    vorlund_add_script_check(headers scripts/headers.sh ${target} ${PROJECT_BINARY_DIR})
    if(VORLUND_INSTALL)
        vorlund_add_script_check(install tests/install/check.sh ${target} ${PROJECT_BINARY_DIR})
    endif()
    if(WIN32)
        vorlund_add_tool_check(python3 imports tests/abi/check_imports.py ${PROJECT_BINARY_DIR})
        return()
    endif()
    vorlund_add_tool_check(python3 layers tests/abi/check_layers.py)
    vorlund_add_tool_check(python3 failures tests/abi/check_failures.py)
    vorlund_add_tool_check(python3 test-names tests/check_names.py)
    vorlund_add_tool_check(python3 pages tests/docs/check_pages.py)
    if(VORLUND_INSTALL AND TARGET vorlund_program)
        vorlund_add_tool_check(python3 readme tests/docs/check_readme.py ${PROJECT_BINARY_DIR})
        vorlund_add_tool_check(python3 code-in-pages tests/docs/check_blocks.py ${PROJECT_BINARY_DIR})
    endif()
    if(TARGET vorlund_c AND TARGET vorlund_program)
        vorlund_add_tool_check(pytest-3 python tests/bindings/python/check.sh ${PROJECT_BINARY_DIR})
    endif()
    if(TARGET plain_chunks)
        vorlund_add_tool_check(python3 comfort tests/comfort/check_examples.py ${PROJECT_BINARY_DIR})
    endif()
    if(TARGET vorlund_command_texts)
        vorlund_add_tool_check(python3 program-pages tests/cli/check_program_pages.py ${PROJECT_BINARY_DIR} --with-what-is-here)
    endif()
    vorlund_add_tool_check(doxygen site scripts/site.sh)
    vorlund_add_tool_check(clang-format format scripts/format.sh)
    vorlund_add_tool_check(clang-tidy tidy scripts/tidy.sh ${PROJECT_BINARY_DIR})
    if(VORLUND_DEBUG_INFO)
        vorlund_add_tool_check(abidiff abi scripts/abi.sh --check ${PROJECT_BINARY_DIR})
    endif()
endfunction()

# vorlund_add_tool_check(<tool> <name> <script> <argument>...): the same where the script's tool is installed.
function(vorlund_add_tool_check tool name)
    find_program(VORLUND_TOOL_${tool} ${tool})
    mark_as_advanced(VORLUND_TOOL_${tool})
    if(VORLUND_TOOL_${tool})
        vorlund_add_script_check(${name} ${ARGN})
    else()
        vorlund_note_left_out("the check ${name}" "no ${tool}")
    endif()
endfunction()
