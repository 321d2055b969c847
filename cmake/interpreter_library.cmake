# The console font alone: the hosted firmware reads screens by it.
add_library(console_font STATIC ${KORVANE_FONT_SOURCE})
target_include_directories(console_font PUBLIC ${CMAKE_SOURCE_DIR}/src)
target_link_libraries(console_font PRIVATE korvane_warnings)

# The interpreter's own sources as a native library, entered through the same entry point as the image: unit
# tests, fuzzers and the sanitizers work on this build.
file(GLOB_RECURSE KORVANE_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/*.cpp)
list(REMOVE_ITEM KORVANE_SOURCES ${CMAKE_SOURCE_DIR}/src/fast/general_only.cpp)

add_library(interpreter STATIC ${KORVANE_SOURCES})
target_include_directories(interpreter PUBLIC ${CMAKE_SOURCE_DIR}/src)
target_link_libraries(interpreter PUBLIC console_font PRIVATE korvane_warnings)
target_compile_options(interpreter PRIVATE -fno-exceptions -fno-rtti -fno-strict-aliasing -ffp-contract=off)
