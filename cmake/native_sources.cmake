# The folder that makes machine code, in a list of sources or out of it: src/native/without_native.cpp then stands for
# everything else in it, and the linker proves that nothing else knows of it.
function(korvane_leave_out_native sources)
  list(FILTER ${sources} EXCLUDE REGEX "/src/native/")
  set(stand_in ${CMAKE_SOURCE_DIR}/src/native/without_native.cpp)
  set(${sources}
      ${${sources}} ${stand_in}
      PARENT_SCOPE)
endfunction()

function(korvane_leave_in_native sources)
  list(REMOVE_ITEM ${sources} ${CMAKE_SOURCE_DIR}/src/native/without_native.cpp)
  set(${sources}
      ${${sources}}
      PARENT_SCOPE)
endfunction()
