# 32-bit Linux on a 64-bit Debian, with the 64-bit system's compiler. The kernel's headers are those of the host;
# without gcc-multilib nothing puts their folder on the search path of a 32-bit build.
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_C_FLAGS_INIT "-m32 -isystem /usr/include/x86_64-linux-gnu")
set(CMAKE_CXX_FLAGS_INIT "-m32 -isystem /usr/include/x86_64-linux-gnu")
