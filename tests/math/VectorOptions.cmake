# VectorOptions_variant.cpp under one set of options after another, by the compiler of the build and by Clang where
# it is installed, all linked into the tests.
vorlund_test_sources(VectorOptions_test.cpp)
set(variants "")

# vectors_variant(<name> <needs a processor with FMA> <attribute> <option>...)
function(vectors_variant name is_fused attribute)
    set(definitions "VORLUND_VARIANT=${name}" "VORLUND_VARIANT_ATTRIBUTE=${attribute}")
    if(name MATCHES "^Clang")
        set(object ${CMAKE_CURRENT_BINARY_DIR}/VectorOptions_${name}.o)
        list(TRANSFORM definitions PREPEND -D)
        add_custom_command(OUTPUT ${object}
            COMMAND ${VORLUND_VARIANT_CLANG} ${clang_options} -std=c++20 -I${PROJECT_SOURCE_DIR}/include
                    -I${PROJECT_SOURCE_DIR}/tests ${definitions} ${ARGN}
                    -c ${CMAKE_CURRENT_SOURCE_DIR}/VectorOptions_variant.cpp -o ${object}
            DEPENDS VectorOptions_variant.cpp VectorOptions.h ${PROJECT_SOURCE_DIR}/include/vorlund/Platform.h
                    ${PROJECT_SOURCE_DIR}/include/vorlund/InlineArithmetic.h
                    ${PROJECT_SOURCE_DIR}/include/vorlund/Vector.h ${PROJECT_SOURCE_DIR}/include/vorlund/Matrix.h
            VERBATIM)
        set(clang_objects ${clang_objects} ${object} PARENT_SCOPE)
    else()
        add_library(vector_options_${name} OBJECT VectorOptions_variant.cpp)
        target_compile_features(vector_options_${name} PRIVATE cxx_std_20)
        target_compile_definitions(vector_options_${name} PRIVATE ${definitions})
        target_compile_options(vector_options_${name} PRIVATE ${ARGN})
        target_include_directories(vector_options_${name} PRIVATE
            ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/tests)
        target_link_libraries(vorlund_tests PRIVATE vector_options_${name})
    endif()
    set(variants "${variants}VARIANT(${name}, ${is_fused})\n" PARENT_SCOPE)
endfunction()

# vectors_variants(<prefix> <option>...): what both compilers know.
function(vectors_variants prefix)
    set(fma "")
    set(fused false)
    if(VORLUND_IS_X86)
        set(fma -mavx2 -mfma)
        set(fused true)
        vectors_variant(${prefix}FmaAttribute true "[[gnu::target(\"fma\")]]" -O2 ${ARGN})
        vectors_variant(${prefix}RecipEstimates false "" -O3 -ffast-math -mrecip ${ARGN})
    endif()
    vectors_variant(${prefix}Unoptimised false "" -O0 ${ARGN})
    vectors_variant(${prefix}Plain false "" -O2 ${ARGN})
    vectors_variant(${prefix}Fused ${fused} "" -O3 -ffp-contract=fast ${fma} ${ARGN})
    vectors_variant(${prefix}Fast false "" -O3 -ffast-math ${ARGN})
    vectors_variant(${prefix}FastFused ${fused} "" -O3 -ffast-math ${fma} ${ARGN})
    vectors_variant(${prefix}Reciprocal false "" -O2 -freciprocal-math ${ARGN})
    vectors_variant(${prefix}Associative false "" -O3 -fassociative-math -fno-signed-zeros -fno-trapping-math ${ARGN})
    vectors_variant(${prefix}Unsafe false "" -O3 -funsafe-math-optimizations ${ARGN})
    vectors_variant(${prefix}Finite false "" -O3 -ffinite-math-only ${ARGN})
    set(variants "${variants}" PARENT_SCOPE)
    set(clang_objects ${clang_objects} PARENT_SCOPE)
endfunction()

# On 32-bit x86 arithmetic is in the header only with these.
set(sse "")
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND VORLUND_IS_X86)
    set(sse -msse2 -mfpmath=sse)
endif()

vectors_variants(Own ${sse})
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    if(VORLUND_IS_X86)
        vectors_variant(OwnX87 false "" -O2 -mfpmath=387)
    endif()
    vectors_variant(OwnFastAttribute false "[[gnu::optimize(\"O3,fast-math\")]]" -O2 ${sse})
    find_program(VORLUND_VARIANT_CLANG NAMES clang++ clang++-14)
    if(VORLUND_VARIANT_CLANG)
        # The standard library of the build's compiler, without that compiler's own headers.
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpmachine OUTPUT_VARIABLE machine
            OUTPUT_STRIP_TRAILING_WHITESPACE)
        set(clang_options --target=${machine})
        if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND VORLUND_IS_X86)
            list(APPEND clang_options -m32)
        endif()
        foreach(folder IN LISTS CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
            if(NOT folder MATCHES "/lib/gcc/[^/]+/[^/]+/include(-fixed)?$")
                list(APPEND clang_options -isystem ${folder})
            endif()
        endforeach()
        vectors_variants(Clang ${sse})
        add_library(vector_options_clang STATIC ${clang_objects})
        set_target_properties(vector_options_clang PROPERTIES LINKER_LANGUAGE CXX)
        target_link_libraries(vorlund_tests PRIVATE vector_options_clang)
    endif()
endif()
file(GENERATE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/VectorOptions.inc CONTENT "${variants}")
set_property(SOURCE VectorOptions_test.cpp TARGET_DIRECTORY vorlund_tests APPEND PROPERTY
    INCLUDE_DIRECTORIES ${CMAKE_CURRENT_BINARY_DIR})
