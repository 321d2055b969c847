# Checks of the sources themselves, run beside the tests of the host tree. Tests labelled "full" belong to the
# complete run only.
set(KORVANE_SOURCE_FOLDERS src host tests)

add_test(
  NAME format
  COMMAND sh -c "find ${KORVANE_SOURCE_FOLDERS} -name '*.cpp' -o -name '*.h' | xargs clang-format --dry-run --Werror"
  WORKING_DIRECTORY ${CMAKE_SOURCE_DIR})
