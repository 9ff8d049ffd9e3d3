# Warnings the project's own code is kept clean of.
function(tsruntime_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow=local -Wnon-virtual-dtor
                                           -Wno-missing-field-initializers)
endfunction()
