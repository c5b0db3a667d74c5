# vorlund_add_plugin(<name> <source>... [OUTPUT_DIRECTORY <folder>]): the plug-in <name> (<name>.dll, <name>.so) as a
# target of that name. Its sources define the two functions of <vorlund/Plugin.h>, which are exported under the names
# by which the library finds them; nothing else is. The file goes to OUTPUT_DIRECTORY, or where the project puts its
# modules.
#
# vorlund_add_plugin(<name> TABLE <source>...): a plug-in in C, with the two functions in C and the table of
# <vorlund/PluginTable.h>. It is not linked to the library.
#
# A plug-in is unloaded when the library is closed. Symbols of the kind "unique", which constants of headers would
# become, keep a module in the process for ever, and a visible symbol may be used by others; so there are neither.
function(vorlund_add_plugin name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "TABLE" "OUTPUT_DIRECTORY" "")
    # Also where a project that has this one inside calls it.
    set(files ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/VorlundPlugin)
    add_library(${name} MODULE ${arg_UNPARSED_ARGUMENTS})
    if(arg_TABLE)
        string(APPEND files Table)
        target_include_directories(${name} PRIVATE
            $<TARGET_PROPERTY:Vorlund::vorlund,INTERFACE_INCLUDE_DIRECTORIES>)
    else()
        target_link_libraries(${name} PRIVATE Vorlund::vorlund)
    endif()
    set_target_properties(${name} PROPERTIES
        PREFIX ""
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    if(arg_OUTPUT_DIRECTORY)
        set_target_properties(${name} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${arg_OUTPUT_DIRECTORY})
    endif()
    if(WIN32)
        target_sources(${name} PRIVATE ${files}.def)
    else()
        target_compile_options(${name} PRIVATE
            $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
        target_link_options(${name} PRIVATE
            ${files}.ld LINKER:--version-script=${files}.map)
        set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS
            ${files}.ld ${files}.map)
    endif()
endfunction()
