# The compiler that makes WebAssembly modules with 64-bit addresses: Debian packages clang-19 and lld-19. The headers of the
# standard library are those of the native compiler.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR wasm64)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_COMPILER_TARGET wasm64-unknown-unknown)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
