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

include(cmake/native_sources.cmake)
korvane_leave_in_native(KORVANE_SOURCES)
list(REMOVE_ITEM KORVANE_SOURCES ${CMAKE_SOURCE_DIR}/src/fast/general_only.cpp)

add_executable(korvane.efi ${KORVANE_SOURCES} ${KORVANE_FONT_SOURCE})
# Whatever does not run in a program's inner loops is compiled for size: the image is copied into every program
# that is made standalone, and firmware reads it slowly. What is named here is compiled for speed; a name that
# stands for no file stops the configuration.
include(cmake/hot_sources.cmake)
set(KORVANE_STAND_INS ${CMAKE_SOURCE_DIR}/src/fast/general_only.cpp ${CMAKE_SOURCE_DIR}/src/native/without_native.cpp)
set(KORVANE_COLD_SOURCES ${KORVANE_SOURCES} ${KORVANE_STAND_INS})
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

# Between those 4 bytes are enough: 16 take 2 KiB more and gain nothing measurable.
set(KORVANE_PADDED_SOURCES ${KORVANE_HOT_SOURCES})
list(FILTER KORVANE_PADDED_SOURCES INCLUDE REGEX "/src/fast/")
set_property(
  SOURCE ${KORVANE_PADDED_SOURCES}
  APPEND
  PROPERTY COMPILE_OPTIONS -falign-functions=4)

# How an image is compiled and linked.
function(korvane_set_up_image image)
  target_include_directories(${image} PRIVATE ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${image} PRIVATE korvane_warnings)
  target_compile_definitions(${image} PRIVATE _WIN64 KORVANE_FREESTANDING)
  target_compile_options(
    ${image}
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
    ${image}
    PRIVATE -nostdlib
            -flto
            -flto-partition=none
            -s
            -Wl,--subsystem,10
            -Wl,-e,_ModuleEntryPoint
            -Wl,--dynamicbase
            -Wl,--no-insert-timestamp)
endfunction()

korvane_set_up_image(korvane.efi)
add_custom_command(
  TARGET korvane.efi
  POST_BUILD
  COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:korvane.efi> ${CMAKE_SOURCE_DIR}/build/korvane.efi)

# Variants of the image for tests and measurements, in folders of their names under build/, made when they are asked for:
# of this image's own objects but for those `WITHOUT` names. That they link proves that nothing else knows of what they
# leave out.
function(korvane_add_variant name)
  cmake_parse_arguments(VARIANT "" "WITHOUT;DEFINITION" "SOURCES" ${ARGN})
  list(TRANSFORM VARIANT_SOURCES PREPEND ${CMAKE_SOURCE_DIR}/src/)
  add_executable(${name} EXCLUDE_FROM_ALL ${VARIANT_SOURCES}
                                          "$<FILTER:$<TARGET_OBJECTS:korvane.efi>,EXCLUDE,/src/${VARIANT_WITHOUT}>")
  korvane_set_up_image(${name})
  target_compile_definitions(${name} PRIVATE ${VARIANT_DEFINITION})
  set_target_properties(${name} PROPERTIES OUTPUT_NAME korvane.efi RUNTIME_OUTPUT_DIRECTORY
                                                                   ${CMAKE_SOURCE_DIR}/build/${name})
endfunction()

# Every statement by its general handler: what the differential tests compare with.
korvane_add_variant(general WITHOUT "(fast|native)/" SOURCES fast/general_only.cpp native/without_native.cpp)
# Without native code alone: what a processor gets that it is not made for.
korvane_add_variant(without-native WITHOUT "native/" SOURCES native/without_native.cpp)
# Native code of every statement as soon as it can be made.
korvane_add_variant(native-at-once WITHOUT "native/fragments.cpp" SOURCES native/fragments.cpp
                    DEFINITION KORVANE_NATIVE_THRESHOLD=1)
# With little room for token arrays: lines run from the execution buffer, as in programs that fill the arena.
korvane_add_variant(small-cache WITHOUT "program/program_store.cpp" SOURCES program/program_store.cpp
                    DEFINITION KORVANE_TOKEN_CACHE_LIMIT=3000)
