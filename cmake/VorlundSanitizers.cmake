# VORLUND_SANITIZE is a list of what -fsanitize= takes ("address;undefined", "thread"). It applies to everything in
# the build tree, GoogleTest included: ThreadSanitizer reports false races when a part is not instrumented.
set(VORLUND_SANITIZE "" CACHE STRING "Sanitizers for the whole build tree, as a list")

if(VORLUND_SANITIZE)
    list(JOIN VORLUND_SANITIZE "," sanitizers)
    add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${sanitizers})
    if("fuzzer-no-link" IN_LIST VORLUND_SANITIZE)
        # libFuzzer counts each of these checks, which stand at every access, as a comparison of the program: more than
        # half of the time. The replay of the corpora under the other sanitizers has them.
        add_compile_options(-fno-sanitize=null,alignment,pointer-overflow)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC's flow warnings see the checks that the sanitizers insert and report paths that do not exist.
        add_compile_options(-Wno-maybe-uninitialized -Wno-stringop-overflow -Wno-array-bounds
            -Wno-null-dereference)
    endif()
endif()
