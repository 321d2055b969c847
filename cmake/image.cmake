# korvane.efi: a freestanding UEFI application.
#
# -mabi=sysv keeps the System V calling convention inside the image, where a two-word Value travels in
# registers; only calls into the firmware use the Microsoft convention (EFIAPI). With that option the compiler
# no longer defines _WIN64, which the C headers beneath the standard library need for their 64-bit types.
#
# -mcmodel=small lets code reach variables of other files directly; the target's own default goes through a
# pointer for each, in case they lie in another module.
#
# -mno-stackrealign: only the entry point aligns the stack. The target's own default is that every function
# does, because 32-bit Windows keeps it at multiples of 4; 64-bit UEFI firmware keeps it at multiples of 16.
file(GLOB_RECURSE KORVANE_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/*.cpp)

# Without the specialised statements: what the differential tests compare with. The linker proves that nothing else
# knows of them than what stands in for them.
option(KORVANE_GENERAL_ONLY "Run every statement by its general handler" OFF)
if(KORVANE_GENERAL_ONLY)
  list(FILTER KORVANE_SOURCES EXCLUDE REGEX "/src/fast/")
  list(APPEND KORVANE_SOURCES ${CMAKE_SOURCE_DIR}/src/fast/general_only.cpp)
else()
  list(REMOVE_ITEM KORVANE_SOURCES ${CMAKE_SOURCE_DIR}/src/fast/general_only.cpp)
endif()

# Without native code alone: what a processor gets that it is not made for. Code that nobody asks for is left out with
# the statements that would ask.
option(KORVANE_WITHOUT_NATIVE "Make no machine code while programs run" OFF)
include(cmake/native_sources.cmake)
if(KORVANE_GENERAL_ONLY OR KORVANE_WITHOUT_NATIVE)
  korvane_leave_out_native(KORVANE_SOURCES)
else()
  korvane_leave_in_native(KORVANE_SOURCES)
endif()
set(KORVANE_NATIVE_THRESHOLD "" CACHE STRING "Times a statement is executed before it becomes machine code, for tests; empty for as many as pay")

add_executable(korvane.efi ${KORVANE_SOURCES} ${KORVANE_FONT_SOURCE})
# Whatever does not run in a program's inner loops is compiled for size: the image is copied into every program
# that is made standalone, and firmware reads it slowly. What is named here is compiled for speed; a name that
# stands for no file stops the configuration.
include(cmake/hot_sources.cmake)
set(KORVANE_COLD_SOURCES ${KORVANE_SOURCES})
list(REMOVE_ITEM KORVANE_COLD_SOURCES ${KORVANE_HOT_SOURCES})
set_source_files_properties(${KORVANE_COLD_SOURCES} PROPERTIES COMPILE_OPTIONS "-Oz;-flto")
# The rest is compiled as one, which takes 5 KiB off it; the named files separately, so that the code of the inner loops
# depends on its own source alone.
#
# Padding before jump targets and functions takes 10 KiB and gains nothing measurable, except between the short
# functions of the specialised statements, which jump to one another all the time.
set_property(
  SOURCE ${KORVANE_HOT_SOURCES}
  APPEND
  PROPERTY COMPILE_OPTIONS -fno-align-jumps -fno-align-labels -fno-align-loops)
set(KORVANE_UNPADDED_SOURCES ${KORVANE_HOT_SOURCES})
list(FILTER KORVANE_UNPADDED_SOURCES EXCLUDE REGEX "/src/fast/")
set_property(
  SOURCE ${KORVANE_UNPADDED_SOURCES}
  APPEND
  PROPERTY COMPILE_OPTIONS -fno-align-functions)

# The steps of operators are shorter than a line of the processor's cache, and should lie in one.
set_property(
  SOURCE ${CMAKE_SOURCE_DIR}/src/fast/operator_steps.cpp
  APPEND
  PROPERTY COMPILE_OPTIONS -falign-functions=32)

target_include_directories(korvane.efi PRIVATE ${CMAKE_SOURCE_DIR}/src)
target_link_libraries(korvane.efi PRIVATE korvane_warnings)
target_compile_definitions(korvane.efi PRIVATE _WIN64 KORVANE_FREESTANDING)
# With little room for token arrays: lines run from the execution buffer, as in programs that fill the arena.
set(KORVANE_TOKEN_CACHE_LIMIT "" CACHE STRING "Bytes of the token cache, for tests; empty for all that is free")
if(KORVANE_TOKEN_CACHE_LIMIT)
  target_compile_definitions(korvane.efi PRIVATE KORVANE_TOKEN_CACHE_LIMIT=${KORVANE_TOKEN_CACHE_LIMIT})
endif()
if(KORVANE_NATIVE_THRESHOLD)
  target_compile_definitions(korvane.efi PRIVATE KORVANE_NATIVE_THRESHOLD=${KORVANE_NATIVE_THRESHOLD})
endif()
target_compile_options(
  korvane.efi
  PRIVATE -O2
          -fno-builtin
          -fno-exceptions
          -fno-rtti
          -fno-threadsafe-statics
          -fno-asynchronous-unwind-tables
          -fno-strict-aliasing
          -fno-ident
          -ffp-contract=off
          -mabi=sysv
          -mcmodel=small
          -mno-red-zone
          -mno-stackrealign
          -mno-stack-arg-probe
          -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
target_link_options(
  korvane.efi
  PRIVATE -nostdlib
          -flto
          -flto-partition=none
          -s
          -Wl,--subsystem,10
          -Wl,-e,_ModuleEntryPoint
          -Wl,--dynamicbase
          -Wl,--no-insert-timestamp)

if(NOT KORVANE_GENERAL_ONLY
   AND NOT KORVANE_WITHOUT_NATIVE
   AND NOT KORVANE_NATIVE_THRESHOLD
   AND NOT KORVANE_TOKEN_CACHE_LIMIT)
  add_custom_command(
    TARGET korvane.efi
    POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:korvane.efi> ${CMAKE_SOURCE_DIR}/build/korvane.efi)
endif()
