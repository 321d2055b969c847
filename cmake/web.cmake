# korvane.wasm: the interpreter on the hosted firmware, for browsers. What JavaScript supplies is in
# web/machine/imports.h.
file(GLOB_RECURSE KORVANE_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/*.cpp)
list(REMOVE_ITEM KORVANE_SOURCES ${CMAKE_SOURCE_DIR}/src/fast/general_only.cpp ${CMAKE_SOURCE_DIR}/src/platform/memory.cpp)
include(cmake/native_sources.cmake)
korvane_leave_out_native(KORVANE_SOURCES)
file(GLOB KORVANE_FIRMWARE_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/host/firmware/*.cpp)
file(GLOB KORVANE_MACHINE_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/web/machine/*.cpp)

set(KORVANE_PAGE_SOURCES ${CMAKE_SOURCE_DIR}/web/machine/machine.cpp ${CMAKE_SOURCE_DIR}/web/machine/picture.cpp
                         ${CMAKE_SOURCE_DIR}/web/machine/host_ticks.cpp)
list(REMOVE_ITEM KORVANE_MACHINE_SOURCES ${KORVANE_PAGE_SOURCES})

# What is fetched over a network is small, but for the inner loops.
include(cmake/hot_sources.cmake)
set(KORVANE_COLD_SOURCES ${KORVANE_SOURCES} ${KORVANE_FIRMWARE_SOURCES} ${KORVANE_MACHINE_SOURCES})
list(REMOVE_ITEM KORVANE_COLD_SOURCES ${KORVANE_HOT_SOURCES} ${CMAKE_SOURCE_DIR}/web/machine/library.cpp
     ${CMAKE_SOURCE_DIR}/host/firmware/keyboard.cpp)
set_source_files_properties(${KORVANE_COLD_SOURCES} PROPERTIES COMPILE_OPTIONS -Oz)

add_library(machine_parts OBJECT ${KORVANE_SOURCES} ${KORVANE_FIRMWARE_SOURCES} ${KORVANE_MACHINE_SOURCES}
                                 ${KORVANE_FONT_SOURCE})
target_include_directories(machine_parts PUBLIC ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/host/firmware
                                                ${CMAKE_SOURCE_DIR}/web/machine)
target_compile_definitions(machine_parts PUBLIC KORVANE_FREESTANDING _GLIBCXX_EXTERN_TEMPLATE=0)
add_executable(korvane.wasm ${KORVANE_PAGE_SOURCES})
# The same for the player of transcripts.
add_executable(korvane-test.wasm ${CMAKE_SOURCE_DIR}/tests/web/machine/module/test_machine.cpp)
target_include_directories(korvane-test.wasm PRIVATE ${CMAKE_SOURCE_DIR}/tests/web/machine)

# The headers' own search finds those of the native compiler; the C headers beneath them ask for a processor that they
# know. Neither is ours to warn about.
file(GLOB KORVANE_NATIVE_HEADERS /usr/include/c++/*)
list(SORT KORVANE_NATIVE_HEADERS COMPARE NATURAL ORDER DESCENDING)
list(GET KORVANE_NATIVE_HEADERS 0 KORVANE_CXX_HEADERS)
cmake_path(GET KORVANE_CXX_HEADERS FILENAME KORVANE_CXX_VERSION)
target_compile_options(
  machine_parts
  PUBLIC -O2
          -mtail-call
          -msimd128
          -mbulk-memory
          -mnontrapping-fptoint
          -msign-ext
          -mmutable-globals
          -ffreestanding
          -fno-exceptions
          -fno-rtti
          -fno-threadsafe-statics
          -fno-strict-aliasing
          -fno-math-errno
          -ffp-contract=off
          -nostdinc++
          -U_WIN64
          -D__x86_64__
          -D__LP64__
          -D_GNU_SOURCE
          "-D__builtin_ia32_pause()=static_cast<void>(0)"
          -isystem${KORVANE_CXX_HEADERS}
          -isystem/usr/include/x86_64-linux-gnu/c++/${KORVANE_CXX_VERSION}
          -isystem/usr/include/x86_64-linux-gnu
          -isystem/usr/include
          -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=
          -Wall
          -Wno-unknown-attributes
          -Wno-ignored-attributes)

# Where data and stack lie. The machines of the tests have memory in many places.
set(KORVANE_BASE_korvane.wasm 16777216)
set(KORVANE_BASE_korvane-test.wasm 100663296)
foreach(module korvane.wasm korvane-test.wasm)
  target_link_libraries(${module} PRIVATE machine_parts)
  target_link_options(
    ${module}
    PRIVATE -nostdlib
            -Wl,-m,wasm64
            -Wl,--no-entry
            -Wl,-z,stack-size=1048576
            -Wl,--global-base=${KORVANE_BASE_${module}}
            -Wl,--import-memory
            -Wl,--max-memory=4294967296
            -Wl,--export=__wasm_call_ctors
            -Wl,--compress-relocations
            -Wl,--gc-sections
            -Wl,-s)
  # A memory with addresses of 32 bits is faster, and more browsers have one.
  add_custom_command(
    TARGET ${module}
    POST_BUILD
    COMMAND python3 ${CMAKE_SOURCE_DIR}/tools/narrow_memory.py $<TARGET_FILE:${module}> $<TARGET_FILE:${module}>)
  set_property(TARGET ${module} APPEND PROPERTY LINK_DEPENDS ${CMAKE_SOURCE_DIR}/tools/narrow_memory.py)
endforeach()
