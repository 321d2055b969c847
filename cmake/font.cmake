# The glyph table, generated from Terminus Font's 8x16 code page 437 (Debian package xfonts-terminus-dos).
# Sets KORVANE_FONT_SOURCE to the C++ file that defines korvane::font_glyphs.
find_file(
  KORVANE_FONT_FILE ter-u16n_ibm437.pcf.gz
  PATHS /usr/share/fonts/X11/misc
  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
  DOC "Console font, 8x16, code page 437 order" REQUIRED)
find_program(KORVANE_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)

set(KORVANE_FONT_SOURCE ${CMAKE_BINARY_DIR}/font_glyphs.cpp)
add_custom_command(
  OUTPUT ${KORVANE_FONT_SOURCE}
  COMMAND ${KORVANE_PYTHON} ${CMAKE_SOURCE_DIR}/tools/pcf_font.py ${KORVANE_FONT_FILE} ${KORVANE_FONT_SOURCE}
  DEPENDS ${CMAKE_SOURCE_DIR}/tools/pcf_font.py ${KORVANE_FONT_FILE}
  COMMENT "Converting the console font"
  VERBATIM)
