# Checks of the sources themselves, run beside the tests of the host tree. Tests labelled "full" belong to the
# complete run only.
add_test(NAME format COMMAND ${CMAKE_SOURCE_DIR}/tools/check_format.sh)

add_test(NAME rooms COMMAND /usr/bin/python3 ${CMAKE_SOURCE_DIR}/tools/check_rooms.py ${CMAKE_SOURCE_DIR}/src)
add_test(NAME tour COMMAND /usr/bin/python3 ${CMAKE_SOURCE_DIR}/tools/check_tour.py)

add_test(NAME tail_calls COMMAND ${CMAKE_SOURCE_DIR}/tools/check_tail_calls.sh)
# Native code alone may take it beyond 256 KiB.
add_test(NAME image_size COMMAND ${CMAKE_SOURCE_DIR}/tools/check_size.sh ${CMAKE_SOURCE_DIR}/build/korvane.efi 272)
add_test(NAME image_size_without_native
         COMMAND ${CMAKE_SOURCE_DIR}/tools/check_size.sh ${CMAKE_SOURCE_DIR}/build/without-native/korvane.efi 256)
set_tests_properties(image_size_without_native PROPERTIES LABELS full)
add_test(NAME clang_tidy COMMAND /usr/bin/python3 ${CMAKE_SOURCE_DIR}/tools/run_tidy.py ${CMAKE_BINARY_DIR})

# One pytest run per file: the tests of a file share a booted machine.
file(GLOB KORVANE_SYSTEM_TESTS CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/system/test_*.py)
set(KORVANE_FULL_TESTS clang_tidy)
foreach(file ${KORVANE_SYSTEM_TESTS})
  get_filename_component(name ${file} NAME_WE)
  add_test(NAME system/${name} COMMAND /usr/bin/python3 -m pytest -q -p no:cacheprovider ${file})
  list(APPEND KORVANE_FULL_TESTS system/${name})
endforeach()

set_tests_properties(${KORVANE_FULL_TESTS} PROPERTIES LABELS full TIMEOUT 600)
set_tests_properties(clang_tidy PROPERTIES PROCESSORS 2)

# The longest first, so that none is left over when the others are done. The figures only need to be in order.
set_tests_properties(clang_tidy PROPERTIES COST 100)
set_tests_properties(system/test_lost_work system/test_screen_modes PROPERTIES COST 90)
set_tests_properties(system/test_explorer PROPERTIES COST 50)
