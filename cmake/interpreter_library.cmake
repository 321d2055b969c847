# The console font alone: the hosted firmware reads screens by it.
add_library(console_font STATIC ${KORVANE_FONT_SOURCE})
target_include_directories(console_font PUBLIC ${CMAKE_SOURCE_DIR}/src)
target_link_libraries(console_font PRIVATE korvane_warnings)

# The interpreter's own sources as a native library, entered through the same entry point as the image: unit
# tests, fuzzers and the sanitizers work on this build.
file(GLOB_RECURSE KORVANE_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/*.cpp)
list(REMOVE_ITEM KORVANE_SOURCES ${CMAKE_SOURCE_DIR}/src/fast/general_only.cpp)
include(cmake/native_sources.cmake)
korvane_leave_in_native(KORVANE_SOURCES)

# All but the specialised statements and native code is compiled once, for the interpreter with them and for the one
# without.
set(KORVANE_FAST_SOURCES ${KORVANE_SOURCES})
list(FILTER KORVANE_FAST_SOURCES INCLUDE REGEX "/src/(fast|native)/")
list(FILTER KORVANE_SOURCES EXCLUDE REGEX "/src/(fast|native)/")
add_library(interpreter_objects OBJECT ${KORVANE_SOURCES})
add_library(interpreter STATIC $<TARGET_OBJECTS:interpreter_objects> ${KORVANE_FAST_SOURCES})
foreach(library interpreter_objects interpreter)
  target_include_directories(${library} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${library} PUBLIC console_font PRIVATE korvane_warnings)
  target_compile_options(${library} PRIVATE -fno-exceptions -fno-rtti -fno-strict-aliasing -ffp-contract=off)
  set_target_properties(${library} PROPERTIES UNITY_BUILD OFF)  # each as in the image
endforeach()
