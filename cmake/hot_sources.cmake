# The sources that run in programs' inner loops, which are compiled for speed; the others are for size. Sets
# KORVANE_HOT_SOURCES.
set(KORVANE_HOT_NAMES
    dispatch
    fast/arguments fast/assignment fast/comparison_steps fast/conditions fast/data_statements fast/element_assignments
    fast/element_steps fast/function_steps fast/jumps fast/loops fast/operator_steps
    fast/places fast/run_fast fast/scalar_assignments fast/sides fast/text_assignments
    fast/text_comparisons fast/text_steps fast/truth
    files/output
    numbers/angle_reduction numbers/circular_kernels numbers/decimal numbers/exponential_kernels numbers/format
    numbers/scaled
    platform/clock platform/firmware platform/memory platform/stack
    program/tokenizer
    run/control_stacks run/run
    screen/console screen/framebuffer screen/gfx_line screen/plot screen/text_windows
    statements/graphics/circle statements/graphics/image_array statements/graphics/paint statements/graphics/plot_statements
    values/arrays values/convert values/data_items values/evaluator values/function_support values/operators
    values/store values/string_functions values/text_number values/variables)
set(KORVANE_HOT_SOURCES)
foreach(name ${KORVANE_HOT_NAMES})
  set(source ${CMAKE_SOURCE_DIR}/src/${name}.cpp)
  if(NOT EXISTS ${source})
    message(FATAL_ERROR "cmake/hot_sources.cmake: src/${name}.cpp is to be compiled for speed, but there is no such file")
  endif()
  list(APPEND KORVANE_HOT_SOURCES ${source})
endforeach()
